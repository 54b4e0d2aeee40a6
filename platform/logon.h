#pragma once

#include "platform/text.h"

#include <cstdint>

namespace kessil::platform {

/// What a logon is for. On Linux the first two authenticate through the PAM service `kessil`. The third keeps the local
/// identity on every platform, and on Linux checks no password.
enum class LogonKind
{
    Interactive,     ///< a user at this machine
    Network,         ///< a user whose password is also used for outgoing connections
    CredentialsOnly, ///< the name and password are used for outgoing connections only
};

/// A logged-on user; null means none. Valid until the process ends.
using UserToken = void *;

/// Checks the user's password. Null on failure. Wipes every copy of the password that it makes.
UserToken LogOnUser(const WideString &user, const WideString &domain, const WideString &password, LogonKind kind);

/// From now on the calling thread, and no other, acts as this user instead of any user before. On Linux that means the
/// effective user, the group and the supplementary groups. On failure the thread stays as it was.
bool Impersonate(UserToken user);

/// A process, and an open token of a process; a null token means none.
using ProcessHandle = void *;
using ProcessToken = void *;

ProcessHandle CurrentProcess();

/// Opens the process's token to query and change its privileges. Null on failure.
ProcessToken OpenToken(ProcessHandle process);

/// Finds a privilege by name on a system, empty for this one. On Linux a privilege is the set of capabilities that give
/// the same power, and other systems can't be asked.
bool LookUpPrivilege(const WideString &system_name, const WideString &privilege, std::uint64_t &id);

/// Enables the privilege as far as the process may have it at all; a process that may have none of it is not a failure.
bool EnablePrivilege(ProcessToken token, std::uint64_t id);

/// Closes a token that OpenToken returned. Keeps the last error.
void CloseToken(ProcessToken token);

} // namespace kessil::platform
