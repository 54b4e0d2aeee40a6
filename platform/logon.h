#pragma once

#include "platform/text.h"

#include <cstdint>

namespace kessil::platform {

/// What a logon is for. On Linux the first two authenticate through the PAM service `kessil`; the third keeps the local
/// identity on every platform and looks at no password here.
enum class LogonKind
{
    Interactive,     ///< a user at this machine
    Network,         ///< a user whose password serves for outgoing connections too
    CredentialsOnly, ///< the name and password serve for outgoing connections alone
};

/// A logged-on user; null when none. It lasts until the process ends.
using UserToken = void *;

/// Checks the user's password. Null on failure. Every copy of the password that this function makes is wiped.
UserToken LogOnUser(const WideString &user, const WideString &domain, const WideString &password, LogonKind kind);

/// Lets the calling thread, and no other, act as that user from now on, in the place of whomever it acted as before.
/// On Linux: the effective user, group and supplementary groups. A failure leaves the thread as it was.
bool Impersonate(UserToken user);

/// This process, and an open token of a process; a token is null when none.
using ProcessHandle = void *;
using ProcessToken = void *;

ProcessHandle CurrentProcess();

/// Opens the token whose privileges can be looked at and changed. Null on failure.
ProcessToken OpenToken(ProcessHandle process);

/// Finds a privilege by name on a system, empty for this one. On Linux a privilege is the set of capabilities that give
/// the same power, and other systems can't be asked.
bool LookUpPrivilege(const WideString &system_name, const WideString &privilege, std::uint64_t &id);

/// Turns the privilege on, as far as the process may have it at all; having no part of it is no failure.
bool EnablePrivilege(ProcessToken token, std::uint64_t id);

/// Closes a token that OpenToken returned. Keeps the last error.
void CloseToken(ProcessToken token);

} // namespace kessil::platform
