#include "platform/posix/identity.h"

#include "platform/posix/handles.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <set>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace kessil::platform::posix {
namespace {

constexpr auto unchanged = static_cast<unsigned>(-1);

Identity CurrentIdentity()
{
    Identity identity;
    identity.user = geteuid();
    identity.group = getegid();
    const int count = getgroups(0, nullptr);
    identity.groups.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    if (count > 0 && getgroups(count, identity.groups.data()) != count)
        identity.groups.clear();
    return identity;
}

Capabilities CurrentCapabilities()
{
    Capabilities capabilities;
    ReadCapabilities(capabilities);
    return capabilities;
}

// Whether both have the same rights. It makes no difference whether the group is also one of the supplementary groups.
bool Equal(const Identity &left, const Identity &right)
{
    const auto groups = [](const Identity &identity) {
        std::set<gid_t> all(identity.groups.begin(), identity.groups.end());
        all.insert(identity.group);
        return all;
    };
    return left.user == right.user && left.group == right.group && groups(left) == groups(right);
}

// The identity that the process started with, read before anything can change it.
const Identity g_start = CurrentIdentity();
const Capabilities g_start_capabilities = CurrentCapabilities();

thread_local bool t_acts_as_another = false;

// The C library's functions would change every thread of the process; the system calls change only the calling one.
// From here to the last of these functions nothing allocates: an exception would leave the thread between two
// identities.
bool SetUser(uid_t user)
{
    return syscall(SYS_setresuid, unchanged, user, unchanged) == 0;
}
bool SetGroup(gid_t group)
{
    return syscall(SYS_setresgid, unchanged, group, unchanged) == 0;
}
bool SetGroups(const std::vector<gid_t> &groups)
{
    return syscall(SYS_setgroups, groups.size(), groups.data()) == 0;
}

// Changes the user last, because the new user may have no right to change the groups.
bool Become(const Identity &identity)
{
    return SetGroups(identity.groups) && SetGroup(identity.group) && SetUser(identity.user);
}

// Changes from another identity back to the process's own, beginning with the rights to change the rest.
bool BecomeProcess()
{
    return SetCapabilities(g_start_capabilities) && SetUser(g_start.user) && SetGroups(g_start.groups) &&
           SetGroup(g_start.group) && SetCapabilities(g_start_capabilities);
}

void Require(bool changed)
{
    if (!changed)
        std::abort();
}

// For a user other than root, the change alone drops no capabilities.
bool DropCapabilities()
{
    Capabilities capabilities;
    if (!ReadCapabilities(capabilities))
        return false;
    for (auto &word : capabilities.data)
        word.effective = 0;
    return SetCapabilities(capabilities);
}

// Changes from the process's own identity to another or, if that fails, back to the process's own.
bool BecomeAnother(const Identity &identity)
{
    const bool changed_groups = SetGroups(identity.groups);
    if (changed_groups && SetGroup(identity.group) && SetUser(identity.user) && DropCapabilities())
        return true;
    const KeepErrno keep;
    Require(!changed_groups || BecomeProcess());
    return false;
}

// Every change of identity clears the signal that ends this process with its parent. Sets the signal again at the end
// of the scope, and raises it if the parent has ended in between.
class EndsWithParent
{
public:
    EndsWithParent() { prctl(PR_GET_PDEATHSIG, &m_signal); }
    ~EndsWithParent()
    {
        const KeepErrno keep;
        prctl(PR_SET_PDEATHSIG, m_signal);
        if (m_signal != 0 && getppid() != m_parent)
            raise(m_signal);
    }
    EndsWithParent(const EndsWithParent &) = delete;
    EndsWithParent &operator=(const EndsWithParent &) = delete;

private:
    pid_t m_parent = getppid();
    int m_signal = 0;
};

} // namespace

bool ReadCapabilities(Capabilities &capabilities)
{
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    return syscall(SYS_capget, &header, capabilities.data) == 0;
}

bool SetCapabilities(const Capabilities &capabilities)
{
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    return syscall(SYS_capset, &header, capabilities.data) == 0;
}

bool ActAs(const Identity &identity)
{
    // For the system calls these numbers mean no change.
    if (identity.user == unchanged || identity.group == unchanged) {
        errno = EINVAL;
        return false;
    }
    const Identity before = CurrentIdentity();
    if (Equal(before, identity))
        return true;
    const Capabilities capabilities = CurrentCapabilities();
    const bool is_process = Equal(identity, g_start);
    const EndsWithParent ends_with_parent;
    if (t_acts_as_another)
        Require(BecomeProcess());
    if (is_process || BecomeAnother(identity)) {
        t_acts_as_another = !is_process;
        return true;
    }
    const KeepErrno keep;
    if (t_acts_as_another)
        Require(Become(before) && SetCapabilities(capabilities));
    return false;
}

ActAsProcess::ActAsProcess() : m_active(t_acts_as_another)
{
    if (!m_active)
        return;
    m_before = CurrentIdentity();
    m_capabilities = CurrentCapabilities();
    const EndsWithParent ends_with_parent;
    Require(BecomeProcess());
}

ActAsProcess::~ActAsProcess()
{
    if (!m_active)
        return;
    const KeepErrno keep;
    const EndsWithParent ends_with_parent;
    Require(Become(m_before) && SetCapabilities(m_capabilities));
}

} // namespace kessil::platform::posix
