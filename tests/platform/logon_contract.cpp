#include "platform/logon.h"

#include "platform/last_error.h"

#include <gtest/gtest.h>

namespace kessil::test {

using platform::LogonKind;
using platform::ProcessToken;

// Their receiver checks whether they are valid.
TEST(Logon, AcceptsCredentialsForOutgoingConnectionsUnchecked)
{
    EXPECT_NE(platform::LogOnUser(u"eve", u"nowhere", u"secret", LogonKind::CredentialsOnly), nullptr);
}

TEST(Privilege, IsFoundByItsName)
{
    for (const char16_t *const name : {u"SeBackupPrivilege", u"SeRestorePrivilege", u"SeSecurityPrivilege"}) {
        std::uint64_t id = 0;
        EXPECT_TRUE(platform::LookUpPrivilege(u"", name, id));
        EXPECT_NE(id, 0u);
    }
}

TEST(Privilege, IsNotFoundUnderAnotherName)
{
    std::uint64_t id = 99;
    platform::SetLastError(0);
    EXPECT_FALSE(platform::LookUpPrivilege(u"", u"SeNoSuchPrivilege", id));
    EXPECT_NE(platform::LastError(), 0u);
    EXPECT_EQ(id, 99u);
}

TEST(Privilege, IsNotFoundOnASystemThatDoesNotExist)
{
    std::uint64_t id = 99;
    platform::SetLastError(0);
    EXPECT_FALSE(platform::LookUpPrivilege(u"kessil-no-such-system", u"SeBackupPrivilege", id));
    EXPECT_NE(platform::LastError(), 0u);
    EXPECT_EQ(id, 99u);
}

// A process that may not have it loses nothing.
TEST(Privilege, CanBeEnabledAsFarAsItIsAvailable)
{
    ProcessToken const token = platform::OpenToken(platform::CurrentProcess());
    ASSERT_NE(token, nullptr);
    for (const char16_t *const name : {u"SeBackupPrivilege", u"SeRestorePrivilege", u"SeSecurityPrivilege"}) {
        std::uint64_t id = 0;
        EXPECT_TRUE(platform::LookUpPrivilege(u"", name, id));
        EXPECT_TRUE(platform::EnablePrivilege(token, id));
    }
    platform::SetLastError(1234);
    platform::CloseToken(token);
    EXPECT_EQ(platform::LastError(), 1234u);
}

} // namespace kessil::test
