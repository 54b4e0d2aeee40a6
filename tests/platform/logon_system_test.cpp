#include "platform/logon.h"

#include "support/under_wine.h"

#include <gtest/gtest.h>

#include <thread>

namespace kessil::test {

// Wine returns an invalid token.
TEST(LogonSystem, CredentialsForOutgoingConnectionsCanBeImpersonated)
{
    platform::UserToken const user =
        platform::LogOnUser(u"eve", u"nowhere", u"secret", platform::LogonKind::CredentialsOnly);
    bool impersonated = false;
    std::thread([&] { impersonated = platform::Impersonate(user); }).join();
    EXPECT_EQ(impersonated, !UnderWine());
}

} // namespace kessil::test
