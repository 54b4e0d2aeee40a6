#include "host/logon.h"

#include "callers/library_caller.h"
#include "channel/format_system_error.h"
#include "logging/log_manager.h"
#include "platform/last_error.h"

namespace kessil {

std::uint32_t os_major_version = 0;

namespace {

// The first major version that has the network logon.
constexpr std::uint32_t network_logon_version = 6;

platform::LogonKind KindOf(std::uint32_t logon_flag)
{
    if (logon_flag == 0)
        return platform::LogonKind::CredentialsOnly;
    return os_major_version < network_logon_version ? platform::LogonKind::Interactive : platform::LogonKind::Network;
}

void CloseToken(platform::ProcessToken hToken, std::int32_t level)
{
    KESSIL_LOG(level, library_caller_component, "Closing handle hToken " << hToken);
    platform::CloseToken(hToken);
}

} // namespace

bool Logon(const WideString &user, const WideString &domain, const WideString &password, const WideString &system_name,
           std::uint32_t logon_flag, WideString &error)
{
    // Never closed: the impersonation needs it until the process ends.
    platform::UserToken const token = platform::LogOnUser(user, domain, password, KindOf(logon_flag));
    if (token == nullptr)
        return Refused(platform::LastError(), u"LogonUser", error);
    if (!platform::Impersonate(token))
        return Refused(platform::LastError(), u"ImpersonateLoggedOnUser", error);
    for (const char16_t *const privilege : {u"SeBackupPrivilege", u"SeRestorePrivilege", u"SeSecurityPrivilege"})
        static_cast<void>(ModifyPrivilege(platform::CurrentProcess(), system_name, privilege));
    return true;
}

bool ModifyPrivilege(platform::ProcessHandle process, const WideString &system_name, const WideString &privilege)
{
    platform::ProcessToken const hToken = platform::OpenToken(process);
    if (hToken == nullptr)
        return false;
    std::uint64_t id = 0;
    const bool enabled = platform::LookUpPrivilege(system_name, privilege, id) && platform::EnablePrivilege(hToken, id);
    CloseToken(hToken, enabled ? log_debug : log_error);
    return enabled;
}

} // namespace kessil
