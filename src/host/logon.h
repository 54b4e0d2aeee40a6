#pragma once

#include "platform/logon.h"
#include "platform/text.h"

#include <cstdint>

namespace kessil {

/// The operating system's major version, which decides the kind of logon. Start-up sets it; 0 before that, and when the
/// system doesn't report one.
extern std::uint32_t os_major_version;

/// Logs the user on, makes the calling thread impersonate that user until the process ends, and enables the backup,
/// restore and security privileges. With a `logon_flag` of 0, name and password are used only for outgoing
/// connections. False with the system's text in `error` when the logon or the impersonation is refused. A privilege
/// that can't be enabled is not a failure.
bool Logon(const WideString &user, const WideString &domain, const WideString &password, const WideString &system_name,
           std::uint32_t logon_flag, WideString &error);

/// Enables a privilege in the process's token. Its name is looked up on `system_name`; empty means this system. A
/// process that isn't entitled to the privilege counts as success.
bool ModifyPrivilege(platform::ProcessHandle process, const WideString &system_name, const WideString &privilege);

} // namespace kessil
