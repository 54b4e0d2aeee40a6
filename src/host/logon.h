#pragma once

#include "platform/logon.h"
#include "platform/text.h"

#include <cstdint>

namespace kessil {

/// Logs the user on, lets the calling thread act as that user for the rest of the process's life, and turns the backup,
/// restore and security privileges on, as far as they are to be had. A `logon_flag` of 0 asks for a logon whose name
/// and password serve for outgoing connections alone. False with the system's text in `error` when the logon or the
/// impersonation is refused; privileges that can't be had are no failure.
bool Logon(const WideString &user, const WideString &domain, const WideString &password, const WideString &system_name,
           std::uint32_t logon_flag, WideString &error);

/// Turns a privilege on in the process's token, its name looked up on `system_name`, empty for this system. A process
/// that may not have the privilege counts as success.
bool ModifyPrivilege(platform::ProcessHandle process, const WideString &system_name, const WideString &privilege);

} // namespace kessil
