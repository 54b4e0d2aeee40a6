#pragma once

#include <linux/capability.h>
#include <sys/types.h>
#include <vector>

namespace kessil::platform::posix {

/// The user and groups that a thread acts as.
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

/// Makes the calling thread, and no other, act as `identity`, using the process's own rights for the change. The thread
/// then has no effective capabilities, unless `identity` is the process's own. On failure returns false, with the
/// reason in errno, and the thread stays as it was. If it can't be restored, the process is ended, because it would go
/// on with another user's rights.
bool ActAs(const Identity &identity);

/// Makes the calling thread act as the process did when it started, for a scope. The end of the scope restores what was
/// before, capabilities included, or ends the process. Does nothing on a thread that acts as nobody else. Keeps errno
/// on destruction.
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
