#include "host/logon.h"

#include "fakes/fake_logon.h"
#include "unit/channel_fixture.h"

namespace kessil::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class LogonTest : public FakesTest
{
protected:
    LogonTest() { os_major_version = 10; }

    // Logs ada of corp on; whether that succeeded.
    bool Run(std::uint32_t flag = 1, const WideString &system_name = u"")
    {
        return Logon(u"ada", u"corp", u"secret", system_name, flag, error);
    }

    // How the user was logged on.
    std::string First() const { return call_log.calls.empty() ? "" : call_log.calls.front(); }

    WideString error = u"untouched";
};

TEST_F(LogonTest, UserIsLoggedOnImpersonatedAndGivenThreePrivileges)
{
    EXPECT_TRUE(Run(1, u"host"));
    EXPECT_THAT(call_log.calls,
                ElementsAre("LogOnUser ada corp secret network", "Impersonate", //
                            "OpenToken", "LookUpPrivilege 'host' SeBackupPrivilege", "EnablePrivilege 17",
                            "CloseToken", //
                            "OpenToken", "LookUpPrivilege 'host' SeRestorePrivilege", "EnablePrivilege 18",
                            "CloseToken", //
                            "OpenToken", "LookUpPrivilege 'host' SeSecurityPrivilege", "EnablePrivilege 8",
                            "CloseToken"));
    EXPECT_EQ(fake_logon.impersonated, fake_user);
    EXPECT_EQ(fake_logon.open_tokens, 0);
    EXPECT_EQ(error, u"untouched");
    EXPECT_THAT(Logged(), ElementsAre("debug LibraryCaller: Closing handle hToken 0xa3",
                                      "debug LibraryCaller: Closing handle hToken 0xa3",
                                      "debug LibraryCaller: Closing handle hToken 0xa3"));
}

TEST_F(LogonTest, FlagIsAnInteractiveLogonBelowVersionSix)
{
    for (const std::uint32_t version : {0u, 4u, 5u}) {
        os_major_version = version;
        call_log.calls.clear();
        EXPECT_TRUE(Run());
        EXPECT_EQ(First(), "LogOnUser ada corp secret interactive") << version;
    }
}

TEST_F(LogonTest, FlagIsANetworkLogonFromVersionSixOn)
{
    for (const std::uint32_t version : {6u, 7u, 10u, 0xFFFFFFFFu}) {
        os_major_version = version;
        call_log.calls.clear();
        EXPECT_TRUE(Run());
        EXPECT_EQ(First(), "LogOnUser ada corp secret network") << version;
    }
}

TEST_F(LogonTest, AnyFlagButZeroCounts)
{
    EXPECT_TRUE(Run(0x80000000));
    EXPECT_EQ(First(), "LogOnUser ada corp secret network");
}

TEST_F(LogonTest, NoFlagIsACredentialsOnlyLogonWithPrivilegesOnEveryVersion)
{
    for (const std::uint32_t version : {0u, 5u, 6u, 10u}) {
        os_major_version = version;
        call_log.calls.clear();
        EXPECT_TRUE(Run(0));
        EXPECT_EQ(First(), "LogOnUser ada corp secret credentials-only") << version;
        EXPECT_EQ(call_log.calls.size(), 14u) << version;
    }
}

TEST_F(LogonTest, RefusedLogonDoesNothingMore)
{
    fake_logon.logon_code = 1326;
    EXPECT_FALSE(Run());
    EXPECT_EQ(error, u"text of 1326\r\n (LogonUser)");
    EXPECT_THAT(call_log.calls, ElementsAre("LogOnUser ada corp secret network"));
    EXPECT_THAT(Logged(), IsEmpty());
}

TEST_F(LogonTest, RefusedImpersonationLeavesTheTokenOpen)
{
    fake_logon.impersonate_code = 1314;
    EXPECT_FALSE(Run());
    EXPECT_EQ(error, u"text of 1314\r\n (ImpersonateLoggedOnUser)");
    EXPECT_THAT(call_log.calls, ElementsAre("LogOnUser ada corp secret network", "Impersonate"));
    EXPECT_THAT(Logged(), IsEmpty());
}

TEST_F(LogonTest, PrivilegeThatIsUnknownIsNoFailure)
{
    fake_logon.privileges.erase(u"SeRestorePrivilege");
    EXPECT_TRUE(Run(1, u"wrong"));
    EXPECT_EQ(error, u"untouched");
    EXPECT_THAT(Logged(), ElementsAre("debug LibraryCaller: Closing handle hToken 0xa3",
                                      "error LibraryCaller: Closing handle hToken 0xa3",
                                      "debug LibraryCaller: Closing handle hToken 0xa3"));
}

TEST_F(LogonTest, PrivilegesThatCanNotBeHadAreNoFailure)
{
    fake_logon.enable_code = 5;
    EXPECT_TRUE(Run());
    EXPECT_EQ(call_log.calls.size(), 14u);
    EXPECT_THAT(Logged(), ElementsAre("error LibraryCaller: Closing handle hToken 0xa3",
                                      "error LibraryCaller: Closing handle hToken 0xa3",
                                      "error LibraryCaller: Closing handle hToken 0xa3"));
}

TEST_F(LogonTest, TokenThatCanNotBeOpenedIsNoFailureAndSilent)
{
    fake_logon.open_code = 5;
    EXPECT_TRUE(Run());
    EXPECT_THAT(call_log.calls,
                ElementsAre("LogOnUser ada corp secret network", "Impersonate", "OpenToken", "OpenToken", "OpenToken"));
    EXPECT_THAT(Logged(), IsEmpty());
}

TEST_F(LogonTest, SecondLogonComesOnTopOfTheFirst)
{
    EXPECT_TRUE(Run());
    call_log.calls.clear();
    EXPECT_TRUE(Run());
    EXPECT_EQ(call_log.calls.size(), 14u);
}

class ModifyPrivilegeTest : public FakesTest
{};

TEST_F(ModifyPrivilegeTest, LogsItsOutcome)
{
    EXPECT_TRUE(ModifyPrivilege(fake_own_process, u"", u"SeBackupPrivilege"));
    EXPECT_FALSE(ModifyPrivilege(fake_own_process, u"", u"SeNoSuchPrivilege"));
    fake_logon.enable_code = 5;
    EXPECT_FALSE(ModifyPrivilege(fake_own_process, u"", u"SeBackupPrivilege"));
    fake_logon.open_code = 5;
    EXPECT_FALSE(ModifyPrivilege(fake_own_process, u"", u"SeBackupPrivilege"));
    EXPECT_EQ(fake_logon.open_tokens, 0);
}

TEST_F(ModifyPrivilegeTest, UnknownPrivilegeIsNotEnabled)
{
    ModifyPrivilege(fake_own_process, u"wrong", u"SeNoSuchPrivilege");
    EXPECT_THAT(call_log.calls, ElementsAre("OpenToken", "LookUpPrivilege 'wrong' SeNoSuchPrivilege", "CloseToken"));
    EXPECT_THAT(Logged(), ElementsAre("error LibraryCaller: Closing handle hToken 0xa3"));
}

} // namespace
} // namespace kessil::test
