#include "marshal/command_row.h"
#include "marshal/signature_row.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace kessil::test {
namespace {

void One(CIPCCommunication & /*channel*/, void * /*function*/) {}

void Two(CIPCCommunication & /*channel*/, void * /*function*/) {}

TEST(HandlerSearch, FindsTheHandlerOfExactlyThatSignatureInTheColumn)
{
    constexpr std::array table = {SignatureRow{"A", One, Two}, SignatureRow{"B", One, nullptr},
                                  SignatureRow{"C", nullptr, Two}};
    EXPECT_EQ(FindHandler(table, "A", &SignatureRow::first), One);
    EXPECT_EQ(FindHandler(table, "A", &SignatureRow::second), Two);
    EXPECT_EQ(FindHandler(table, "B", &SignatureRow::first), One);
    EXPECT_EQ(FindHandler(table, "B", &SignatureRow::second), nullptr);
    EXPECT_EQ(FindHandler(table, "C", &SignatureRow::first), nullptr);
    EXPECT_EQ(FindHandler(table, "C", &SignatureRow::second), Two);
    EXPECT_EQ(FindHandler(table, "a", &SignatureRow::first), nullptr);
    EXPECT_EQ(FindHandler(table, "AB", &SignatureRow::first), nullptr);
    EXPECT_EQ(FindHandler(table, "", &SignatureRow::first), nullptr);
    EXPECT_EQ(FindHandler({}, "A", &SignatureRow::first), nullptr);
}

TEST(CommandSearch, FindsBothNamesInTheTableThatItIsGiven)
{
    constexpr std::array table = {CommandRow{200, "SIG", "one"}, CommandRow{7, "GIS", "two"}};
    std::string name;
    EXPECT_TRUE(FunctionNameOf(table, 7, name));
    EXPECT_EQ(name, "two");
    EXPECT_TRUE(SignatureNameOf(table, 200, name));
    EXPECT_EQ(name, "SIG");
    EXPECT_FALSE(FunctionNameOf(table, 3, name));
    EXPECT_FALSE(FunctionNameOf({}, 7, name));
}

} // namespace
} // namespace kessil::test
