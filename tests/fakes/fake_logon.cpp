#include "fakes/fake_logon.h"

#include "fakes/call_log.h"
#include "platform/last_error.h"

#include <cstdlib>
#include <string>

namespace kessil {
namespace test {

FakeLogon fake_logon;

namespace {

bool Succeeds(std::uint32_t code)
{
    if (code != 0)
        platform::SetLastError(code);
    return code == 0;
}

void Expect(const void *given, const void *expected)
{
    if (given != expected)
        std::abort();
}

const char *NameOf(platform::LogonKind kind)
{
    switch (kind) {
    case platform::LogonKind::Interactive:
        return "interactive";
    case platform::LogonKind::Network:
        return "network";
    case platform::LogonKind::CredentialsOnly:
        break;
    }
    return "credentials-only";
}

} // namespace
} // namespace test

namespace platform {

using test::fake_logon;

UserToken LogOnUser(const WideString &user, const WideString &domain, const WideString &password, LogonKind kind)
{
    test::call_log.Add("LogOnUser " + ToUtf8(user) + " " + ToUtf8(domain) + " " + ToUtf8(password) + " " +
                       test::NameOf(kind));
    if (fake_logon.on_log_on)
        fake_logon.on_log_on();
    return test::Succeeds(fake_logon.logon_code) ? test::fake_user : nullptr;
}

bool Impersonate(UserToken user)
{
    test::call_log.Add("Impersonate");
    test::Expect(user, test::fake_user);
    if (!test::Succeeds(fake_logon.impersonate_code))
        return false;
    fake_logon.impersonated = user;
    return true;
}

ProcessHandle CurrentProcess()
{
    return test::fake_own_process;
}

ProcessToken OpenToken(ProcessHandle process)
{
    test::call_log.Add("OpenToken");
    test::Expect(process, test::fake_own_process);
    if (!test::Succeeds(fake_logon.open_code))
        return nullptr;
    ++fake_logon.open_tokens;
    return test::fake_process_token;
}

bool LookUpPrivilege(const WideString &system_name, const WideString &privilege, std::uint64_t &id)
{
    test::call_log.Add("LookUpPrivilege '" + ToUtf8(system_name) + "' " + ToUtf8(privilege));
    const auto found = fake_logon.privileges.find(privilege);
    if (found == fake_logon.privileges.end() || system_name == fake_logon.other_system)
        return test::Succeeds(fake_logon.unknown_code);
    id = found->second;
    return true;
}

bool EnablePrivilege(ProcessToken token, std::uint64_t id)
{
    test::call_log.Add("EnablePrivilege " + std::to_string(id));
    test::Expect(token, test::fake_process_token);
    return test::Succeeds(fake_logon.enable_code);
}

void CloseToken(ProcessToken token)
{
    test::call_log.Add("CloseToken");
    test::Expect(token, test::fake_process_token);
    if (fake_logon.open_tokens-- == 0)
        std::abort();
}

} // namespace platform
} // namespace kessil
