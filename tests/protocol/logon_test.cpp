#include "protocol/conversation.h"
#include "support/under_wine.h"

#include <gtest/gtest.h>

namespace kessil::test {
// Credentials that serve for outgoing connections alone are checked by whoever is connected to.
TEST(Logon, OfCredentialsAlone)
{
    Conversation talk(0);
    talk.Send(LogonFrame(u"eve", u"nowhere", u"open sesame", 0));
    // Wine logs everybody on, and the token is not a valid one.
    talk.Expect(UnderWine() ? FailureFrame(SystemText({}, 6) + u" (ImpersonateLoggedOnUser)") : SuccessFrame());
    talk.Load(TargetLibrary("plain"));
    talk.Send(OrderlyStop());
    talk.End();
    const std::string log = talk.Helper().Log();
    EXPECT_NE(log.find("Working with Auth"), std::string::npos);
    EXPECT_EQ(log.find("sesame"), std::string::npos);
}

TEST(Logon, WithAWrongPasswordIsRefusedAndTheRunGoesOn)
{
    Conversation talk(0);
    talk.Send(LogonFrame(u"kessil-no-such-user", u"", u"open sesame", 1));
    talk.Expect(FailureFrame(UnderWine() ? SystemText({}, 6) + u" (ImpersonateLoggedOnUser)"
                                         : SystemText(u"Permission denied", 1326) + u" (LogonUser)"));
    talk.Load(TargetLibrary("plain"));
    talk.Send(OrderlyStop());
    talk.End();
    EXPECT_EQ(talk.Helper().Log().find("sesame"), std::string::npos);
}

TEST(Logon, RecordWithoutItsFlagEndsTheRun)
{
    Conversation talk(1);
    talk.Send(Frame('A', Wide(u"") + Wide(u"") + Wide(u"") + Wide(u"") + Hex("000000")));
    talk.ExpectClosed();
    talk.End();
    EXPECT_NE(talk.Helper().PlainLog().find(Printed(u"Failed to serialise data")), std::string::npos);
}

} // namespace kessil::test
