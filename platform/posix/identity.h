#pragma once

#include <linux/capability.h>
#include <sys/types.h>
#include <vector>

namespace kessil::platform::posix {

/// Whom a thread acts as.
struct Identity
{
    uid_t user = 0;
    gid_t group = 0;
    std::vector<gid_t> groups; ///< supplementary groups, in any order
};

/// The capabilities of the calling thread.
struct Capabilities
{
    __user_cap_data_struct data[_LINUX_CAPABILITY_U32S_3] = {};
};

bool ReadCapabilities(Capabilities &capabilities);
bool SetCapabilities(const Capabilities &capabilities);

/// Lets the calling thread, and no other, act as `identity`, with the process's own rights to become so. It has no
/// effective capabilities then, unless `identity` is the process's own. False, with the reason in errno, leaves it as
/// it was. A way back that fails ends the process: it would go on with the rights of somebody else.
bool ActAs(const Identity &identity);

/// Lets the calling thread act as the process did when it started, for a scope; then as before, capabilities included,
/// or the process ends. Does nothing on a thread that acts as nobody else. Keeps errno on the way out.
class ActAsProcess
{
public:
    ActAsProcess();
    ~ActAsProcess();
    ActAsProcess(const ActAsProcess &) = delete;
    ActAsProcess &operator=(const ActAsProcess &) = delete;

private:
    bool m_active;
    Identity m_before;
    Capabilities m_capabilities;
};

} // namespace kessil::platform::posix
