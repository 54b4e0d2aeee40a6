#include "platform/logon.h"

#include "platform/posix/handles.h"
#include "platform/posix/identity.h"
#include "platform/posix/pam.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <grp.h>
#include <list>
#include <optional>
#include <pwd.h>
#include <string>
#include <sys/utsname.h>
#include <unistd.h>
#include <vector>

namespace kessil::platform {
namespace {

using posix::Identity;

// A logged-on user; without an identity, the user that the thread acts as already.
struct User
{
    std::optional<Identity> identity;
};

// All of them, because no user ever logs off.
std::list<User> g_users;

// A domain user's account name begins with the domain, as directory services write it.
std::string AccountName(const WideString &user, const WideString &domain)
{
    return domain.empty() || domain == u"." ? ToUtf8(user) : ToUtf8(domain + u"\\" + user);
}

bool FindAccount(const std::string &account, passwd &entry, std::vector<char> &strings)
{
    passwd *found = nullptr;
    int failure = 0;
    do {
        strings.resize(strings.empty() ? 4096 : 2 * strings.size());
        failure = getpwnam_r(account.c_str(), &entry, strings.data(), strings.size(), &found);
    } while (failure == ERANGE);
    if (found == nullptr)
        errno = failure == 0 ? ENOENT : failure;
    return found != nullptr;
}

std::vector<gid_t> GroupsOf(const std::string &account, gid_t group)
{
    std::vector<gid_t> groups(32);
    auto count = static_cast<int>(groups.size());
    while (getgrouplist(account.c_str(), group, groups.data(), &count) < 0) {
        groups.resize(std::max(2 * groups.size(), static_cast<std::size_t>(count)));
        count = static_cast<int>(groups.size());
    }
    groups.resize(static_cast<std::size_t>(count));
    return groups;
}

std::optional<Identity> FindIdentity(const std::string &account)
{
    passwd entry = {};
    std::vector<char> strings;
    if (!FindAccount(account, entry, strings))
        return std::nullopt;
    return Identity{entry.pw_uid, entry.pw_gid, GroupsOf(account, entry.pw_gid)};
}

struct Privilege
{
    const char16_t *name;
    std::uint64_t capabilities;
};

constexpr std::uint64_t Bit(unsigned capability)
{
    return std::uint64_t{1} << capability;
}

// What each privilege allows its holder on Windows: read any file; write any file, its owner, mode and times; see and
// change what the system audits.
constexpr std::array privileges = {
    Privilege{u"SeBackupPrivilege", Bit(CAP_DAC_READ_SEARCH)},
    Privilege{u"SeRestorePrivilege", Bit(CAP_DAC_OVERRIDE) | Bit(CAP_CHOWN) | Bit(CAP_FOWNER) | Bit(CAP_FSETID)},
    Privilege{u"SeSecurityPrivilege", Bit(CAP_AUDIT_CONTROL) | Bit(CAP_AUDIT_READ)},
};

bool IsThisSystem(const WideString &name)
{
    utsname system = {};
    return name.empty() || (uname(&system) == 0 && name == FromUtf8(system.nodename));
}

} // namespace

UserToken LogOnUser(const WideString &user, const WideString &domain, const WideString &password, LogonKind kind)
{
    if (kind == LogonKind::CredentialsOnly)
        return &g_users.emplace_back();
    // Checking passwords and finding accounts may need the rights of the process.
    const posix::ActAsProcess as_process;
    std::string account = AccountName(user, domain);
    if (!posix::Authenticate(account, password))
        return nullptr;
    const std::optional<Identity> identity = FindIdentity(account);
    return identity ? &g_users.emplace_back(User{identity}) : nullptr;
}

bool Impersonate(UserToken user)
{
    const auto &identity = static_cast<const User *>(user)->identity;
    return !identity || posix::ActAs(*identity);
}

ProcessHandle CurrentProcess()
{
    return posix::ToHandle(getpid());
}

// Capabilities belong to threads, so nothing has to be opened; the token only has to be non-null.
ProcessToken OpenToken(ProcessHandle process)
{
    return process;
}

bool LookUpPrivilege(const WideString &system_name, const WideString &privilege, std::uint64_t &id)
{
    if (!IsThisSystem(system_name)) {
        errno = EHOSTUNREACH;
        return false;
    }
    const auto *const known =
        std::find_if(privileges.begin(), privileges.end(), [&](const Privilege &p) { return p.name == privilege; });
    if (known == privileges.end()) {
        errno = EINVAL;
        return false;
    }
    id = known->capabilities;
    return true;
}

bool EnablePrivilege(ProcessToken /*token*/, std::uint64_t id)
{
    posix::Capabilities capabilities;
    if (!posix::ReadCapabilities(capabilities))
        return false;
    for (auto &word : capabilities.data) {
        word.effective |= static_cast<std::uint32_t>(id) & word.permitted;
        id >>= 32;
    }
    return posix::SetCapabilities(capabilities);
}

void CloseToken(ProcessToken /*token*/) {}

} // namespace kessil::platform
