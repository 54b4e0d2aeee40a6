#include "platform/logon.h"

#include "platform/windows/native.h"

#include <cstring>

namespace kessil::platform {
namespace {

struct LogonParameters
{
    DWORD type;
    DWORD provider;
};

LogonParameters ParametersOf(LogonKind kind)
{
    switch (kind) {
    case LogonKind::CredentialsOnly:
        return {LOGON32_LOGON_NEW_CREDENTIALS, LOGON32_PROVIDER_WINNT50};
    case LogonKind::Network:
        return {LOGON32_LOGON_NETWORK_CLEARTEXT, LOGON32_PROVIDER_DEFAULT};
    case LogonKind::Interactive:
        break;
    }
    return {LOGON32_LOGON_INTERACTIVE, LOGON32_PROVIDER_DEFAULT};
}

static_assert(sizeof(LUID) == sizeof(std::uint64_t));

} // namespace

UserToken LogOnUser(const WideString &user, const WideString &domain, const WideString &password, LogonKind kind)
{
    const LogonParameters parameters = ParametersOf(kind);
    HANDLE token = nullptr;
    if (!LogonUserW(Wide(user), Wide(domain), Wide(password), parameters.type, parameters.provider, &token))
        return nullptr;
    return token;
}

bool Impersonate(UserToken user)
{
    return ImpersonateLoggedOnUser(user) != 0;
}

ProcessHandle CurrentProcess()
{
    return GetCurrentProcess();
}

ProcessToken OpenToken(ProcessHandle process)
{
    HANDLE token = nullptr;
    return OpenProcessToken(process, TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, &token) ? token : nullptr;
}

bool LookUpPrivilege(const WideString &system_name, const WideString &privilege, std::uint64_t &id)
{
    LUID luid = {};
    if (!LookupPrivilegeValueW(Wide(system_name), Wide(privilege), &luid))
        return false;
    std::memcpy(&id, &luid, sizeof id);
    return true;
}

bool EnablePrivilege(ProcessToken token, std::uint64_t id)
{
    TOKEN_PRIVILEGES privileges = {};
    privileges.PrivilegeCount = 1;
    std::memcpy(&privileges.Privileges[0].Luid, &id, sizeof id);
    privileges.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
    return AdjustTokenPrivileges(token, FALSE, &privileges, 0, nullptr, nullptr) != 0;
}

void CloseToken(ProcessToken token)
{
    CloseKeepingLastError(token);
}

} // namespace kessil::platform
