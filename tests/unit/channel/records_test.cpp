#include "channel/records.h"

#include "unit/channel_fixture.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <new>

namespace kessil::test {
namespace {

// A copy at the end of a heap block of its own, so that an address sanitizer sees a byte read behind it.
class Exact
{
public:
    explicit Exact(const Bytes &bytes)
        : m_bytes(std::make_unique<unsigned char[]>(bytes.size())), m_size(static_cast<std::uint32_t>(bytes.size()))
    {
        std::copy(bytes.begin(), bytes.end(), m_bytes.get());
    }
    const unsigned char *Data() const { return m_bytes.get(); }
    std::uint32_t Size() const { return m_size; }

private:
    std::unique_ptr<unsigned char[]> m_bytes;
    std::uint32_t m_size;
};

std::uint32_t ReadWide(WideString &target, const Bytes &bytes)
{
    const Exact exact(bytes);
    return DeserialiseWideString(target, exact.Data(), exact.Size());
}

std::uint32_t ReadNarrow(std::string &target, const Bytes &bytes)
{
    const Exact exact(bytes);
    return DeserialiseString(target, exact.Data(), exact.Size());
}

TEST(WideStringField, TakesTheTerminatorToo)
{
    WideString text = u"old";
    EXPECT_EQ(ReadWide(text, Hex("43 00 AC 20 00 00 58 00")), 6u);
    EXPECT_EQ(text, u"C\u20AC");
}

TEST(WideStringField, EmptyStringIsValid)
{
    WideString text = u"old";
    EXPECT_EQ(ReadWide(text, Hex("00 00")), 2u);
    EXPECT_EQ(text, u"");
}

TEST(WideStringField, TooFewBytesForAnything)
{
    WideString text = u"old";
    EXPECT_EQ(ReadWide(text, {}), 0u);
    EXPECT_EQ(text, u"");
    EXPECT_EQ(ReadWide(text, Hex("00")), 0u);
}

TEST(WideStringField, NoTerminator)
{
    WideString text;
    EXPECT_EQ(ReadWide(text, Hex("41 00 42 00")), 0u);
    EXPECT_EQ(text, u"AB");
}

TEST(WideStringField, OddLastByteIsNeverLookedAt)
{
    WideString text;
    EXPECT_EQ(ReadWide(text, Hex("41 00 00")), 0u);
    EXPECT_EQ(ReadWide(text, Hex("41 00 00 00 00")), 4u);
}

TEST(WideStringField, ZeroBytesOfTwoUnitsAreNoTerminator)
{
    WideString text;
    EXPECT_EQ(ReadWide(text, Hex("41 00 00 42 00 00")), 6u);
    EXPECT_EQ(text, u"A\u4200");
}

TEST(WideStringField, UnitsThatFormNoCharacterAreKept)
{
    WideString text;
    EXPECT_EQ(ReadWide(text, Hex("00 D8 41 00 00 00")), 6u);
    EXPECT_EQ(text, WideString({char16_t{0xD800}, u'A'}));
}

TEST(NarrowStringField, TakesTheTerminatorToo)
{
    std::string text = "old";
    EXPECT_EQ(ReadNarrow(text, Hex("61 FF 00 62")), 3u);
    EXPECT_EQ(text, "a\xFF");
}

TEST(NarrowStringField, EmptyStringIsValid)
{
    std::string text = "old";
    EXPECT_EQ(ReadNarrow(text, Hex("00")), 1u);
    EXPECT_EQ(text, "");
}

TEST(NarrowStringField, NoTerminator)
{
    std::string text = "old";
    EXPECT_EQ(ReadNarrow(text, {}), 0u);
    EXPECT_EQ(text, "");
    EXPECT_EQ(ReadNarrow(text, Hex("61 62")), 0u);
    EXPECT_EQ(text, "ab");
}

// Each record by what all parsers have in common.

struct RecordCase
{
    const char *name;
    Bytes payload;
    std::function<bool(const unsigned char *payload, std::uint32_t size, WideString &error)> parse;
};

const Bytes auth_payload =
    Hex("75 00 00 00") + Hex("64 00 00 00") + Hex("70 00 00 00") + Hex("73 00 00 00") + Hex("00 00 00 01");
const Bytes err_dll_payload = Hex("00 00 04 D2") + Hex("6D 00 00 00");
const Bytes call_payload = Hex("6C 00 00 00") + Hex("66 6E 00") + Hex("73 00");
const Bytes error_payload = Hex("FF FF FF FF 00 00 00 7E") + Hex("78 00 00 00");
const Bytes resize_payload = Hex("61 00 30 00 00 00") + Hex("00 00 00 00 00 01 00 00");

template <class Record>
bool ParseAs(const unsigned char *payload, std::uint32_t size, WideString &error)
{
    return Record().Parse(payload, size, error);
}

class RecordTest : public ::testing::TestWithParam<RecordCase>
{
protected:
    bool Parse(const Bytes &payload)
    {
        const Exact exact(payload);
        error.clear();
        return GetParam().parse(exact.Data(), exact.Size(), error);
    }

    WideString error;
};

INSTANTIATE_TEST_SUITE_P(All, RecordTest,
                         ::testing::Values(RecordCase{"Auth", auth_payload, ParseAs<IPCStruct_Auth>},
                                           RecordCase{"ErrDLL", err_dll_payload, ParseAs<IPCStruct_ErrDLL>},
                                           RecordCase{"FunctionCall", call_payload, ParseAs<IPCStruct_FunctionCall>},
                                           RecordCase{"Error", error_payload, ParseAs<IPCStruct_Error>},
                                           RecordCase{"Resize", resize_payload, ParseAs<IPCStruct_Resize>}),
                         [](const auto &record) { return record.param.name; });

TEST_P(RecordTest, WholePayloadParses)
{
    EXPECT_TRUE(Parse(GetParam().payload));
    EXPECT_EQ(error, u"");
}

TEST_P(RecordTest, PayloadCutAtAnyByteFails)
{
    for (std::size_t size = 0; size < GetParam().payload.size(); ++size) {
        EXPECT_FALSE(Parse(First(size, GetParam().payload))) << size;
        EXPECT_EQ(error, u"Failed to serialise data") << size;
    }
}

TEST_P(RecordTest, ExtraBytesAreIgnored)
{
    EXPECT_TRUE(Parse(GetParam().payload + Hex("FF")));
    EXPECT_TRUE(Parse(GetParam().payload + Repeat(0x41, 100)));
}

// Whatever a flipped bit makes of the payload, the parser stays within it and either succeeds or says why not.
TEST_P(RecordTest, PayloadWithAnyBitFlipped)
{
    const Bytes &payload = GetParam().payload;
    for (std::size_t bit = 0; bit < payload.size() * 8; ++bit) {
        const bool parsed = Parse(FlipBit(payload, bit));
        EXPECT_EQ(error, parsed ? u"" : u"Failed to serialise data") << bit;
    }
}

// The last terminator decides: with any of its bits set no record that ends in a string is complete.
TEST_P(RecordTest, TerminatorWithAnyBitFlippedFailsARecordThatEndsInAString)
{
    const Bytes &payload = GetParam().payload;
    if (payload.back() != 0 || std::string(GetParam().name) == "Resize") {
        EXPECT_TRUE(Parse(FlipBit(payload, payload.size() * 8 - 1)));
        return;
    }
    for (std::size_t bit = payload.size() * 8 - 8; bit < payload.size() * 8; ++bit)
        EXPECT_FALSE(Parse(FlipBit(payload, bit))) << bit;
}

TEST(AuthRecord, FieldsInTheirOrder)
{
    IPCStruct_Auth auth;
    WideString error;
    const Bytes payload = Wide(u"ada") + Wide(u"corp") + Wide(u"s\u00E9same") + Wide(u"host") + Hex("80 00 00 07");
    ASSERT_TRUE(auth.Parse(payload.data(), static_cast<std::uint32_t>(payload.size()), error));
    EXPECT_EQ(auth.user, u"ada");
    EXPECT_EQ(auth.domain, u"corp");
    EXPECT_EQ(auth.password, u"s\u00E9same");
    EXPECT_EQ(auth.system_name, u"host");
    EXPECT_EQ(auth.logon_flag, 0x80000007u);
}

TEST(AuthRecord, FourEmptyStringsAndAFlagAreTwelveBytes)
{
    IPCStruct_Auth auth;
    WideString error;
    const Bytes payload = Repeat(0, 8) + Hex("00 00 00 05");
    ASSERT_EQ(payload.size(), 12u);
    ASSERT_TRUE(auth.Parse(payload.data(), 12, error));
    EXPECT_EQ(auth.user + auth.domain + auth.password + auth.system_name, u"");
    EXPECT_EQ(auth.logon_flag, 5u);
}

TEST(AuthRecord, FlagOfThreeBytesFails)
{
    IPCStruct_Auth auth;
    WideString error;
    const Exact payload(Repeat(0, 8) + Hex("00 00 00"));
    EXPECT_FALSE(auth.Parse(payload.Data(), payload.Size(), error));
    EXPECT_EQ(error, u"Failed to serialise data");
}

// A short text lies within its string, so that what is left of it can be looked at afterwards.
TEST(AuthRecord, PasswordIsWipedAtTheEnd)
{
    alignas(IPCStruct_Auth) unsigned char place[sizeof(IPCStruct_Auth)] = {};
    auto *const auth = new (place) IPCStruct_Auth();
    WideString error;
    const Bytes payload = Wide(u"") + Wide(u"") + Wide(u"hunter2") + Wide(u"") + Hex("00 00 00 00");
    ASSERT_TRUE(auth->Parse(payload.data(), static_cast<std::uint32_t>(payload.size()), error));
    const Bytes password = Plain({"h\0u\0n\0t\0e\0r\0", 12});
    const auto holds_password = [&] {
        return std::search(place, place + sizeof place, password.begin(), password.end()) != place + sizeof place;
    };
    ASSERT_TRUE(holds_password());
    auth->~IPCStruct_Auth();
    EXPECT_FALSE(holds_password());
}

TEST(ErrDLLRecord, FieldsInTheirOrder)
{
    IPCStruct_ErrDLL request;
    WideString error;
    const Bytes payload = Hex("C0 00 00 05") + Wide(u"messages.dll");
    ASSERT_TRUE(request.Parse(payload.data(), static_cast<std::uint32_t>(payload.size()), error));
    EXPECT_EQ(request.message_number, 0xC0000005u);
    EXPECT_EQ(request.dll_name, u"messages.dll");
}

TEST(ErrDLLRecord, FourBytesHaveNoName)
{
    IPCStruct_ErrDLL request;
    WideString error;
    const Exact payload(Hex("00 00 00 01"));
    EXPECT_FALSE(request.Parse(payload.Data(), payload.Size(), error));
    EXPECT_EQ(error, u"Failed to serialise data");
}

TEST(FunctionCallRecord, FieldsInTheirOrder)
{
    IPCStruct_FunctionCall call;
    WideString error;
    const Exact exact(call_payload);
    ASSERT_TRUE(call.Parse(exact.Data(), exact.Size(), error));
    EXPECT_EQ(call.library, u"l");
    EXPECT_EQ(call.function, "fn");
    EXPECT_EQ(call.signature, "s");
}

TEST(FunctionCallRecord, EmptyFields)
{
    IPCStruct_FunctionCall call{u"old", "old", "old"};
    WideString error;
    const Exact exact(Hex("00 00 00 00"));
    ASSERT_TRUE(call.Parse(exact.Data(), exact.Size(), error));
    EXPECT_EQ(call.library, u"");
    EXPECT_EQ(call.function, "");
    EXPECT_EQ(call.signature, "");
}

TEST(FunctionCallRecord, FieldsFollowAtAnyAddress)
{
    // Two narrow strings of odd length: nothing is aligned.
    IPCStruct_FunctionCall call;
    WideString error;
    const Exact exact(Wide(u"lib") + Narrow("ab") + Narrow(""));
    ASSERT_TRUE(call.Parse(exact.Data(), exact.Size(), error));
    EXPECT_EQ(call.function, "ab");
    EXPECT_EQ(call.signature, "");
}

TEST(ErrorRecord, CodesAreSigned)
{
    IPCStruct_Error record;
    WideString error;
    const Exact exact(error_payload);
    ASSERT_TRUE(record.Parse(exact.Data(), exact.Size(), error));
    EXPECT_EQ(record.return_code, -1);
    EXPECT_EQ(record.system_error, 126);
    EXPECT_EQ(record.text, u"x");
}

TEST(ErrorRecord, EightBytesHaveNoText)
{
    IPCStruct_Error record;
    WideString error;
    const Exact exact(Repeat(0, 8));
    EXPECT_FALSE(record.Parse(exact.Data(), exact.Size(), error));
    EXPECT_EQ(error, u"Failed to serialise data");
}

TEST_F(ChannelTest, ErrorRecordIsSentAsAFrame)
{
    EXPECT_TRUE((IPCStruct_Error{-1, -1, u"x"}.Send(channel, error)));
    EXPECT_EQ(fake_pipe.written, Hex("45 00 00 00 0C FF FF FF FF FF FF FF FF 78 00 00 00"));
}

TEST_F(ChannelTest, ErrorRecordThatCantBeWrittenIsReported)
{
    fake_pipe.FailWrite(232);
    EXPECT_FALSE((IPCStruct_Error{0, 126, u"x"}.Send(channel, error)));
    EXPECT_EQ(error, u"text of 232\r\n");
}

TEST(ResizeRecord, Fields)
{
    IPCStruct_Resize record;
    WideString error;
    const Exact exact(Wide(u"a0") + Hex("01 02 03 04 05 06 07 08"));
    ASSERT_TRUE(record.Parse(exact.Data(), exact.Size(), error));
    EXPECT_EQ(record.name, u"a0");
    EXPECT_EQ(record.size, 0x0102030405060708u);
}

TEST_F(ChannelTest, ResizeRecordIsSentAsAFrame)
{
    EXPECT_TRUE((IPCStruct_Resize{u"a0", 0x01020304}.Send(channel, error)));
    EXPECT_EQ(fake_pipe.written, Hex("52 00 00 00 0E 61 00 30 00 00 00 00 00 00 00 01 02 03 04"));
}

// The command behind 'f'.

TEST_F(ChannelTest, CommandIsOneByte)
{
    fake_pipe.Deliver(Hex("FE 01"));
    IPCStruct_FunctionCallAlt call;
    EXPECT_TRUE(call.ReadCommand(channel, error));
    EXPECT_TRUE(call.has_command);
    EXPECT_EQ(call.command, 0xFEu);
    EXPECT_EQ(call.library, u"");
    EXPECT_EQ(call.function, "");
}

TEST_F(ChannelTest, CommandIsReadOnlyOnce)
{
    fake_pipe.Deliver(Hex("02 03"));
    IPCStruct_FunctionCallAlt call;
    ASSERT_TRUE(call.ReadCommand(channel, error));
    EXPECT_FALSE(call.ReadCommand(channel, error));
    EXPECT_EQ(call.command, 2u);
    unsigned char next = 0;
    bool eof = false;
    ASSERT_TRUE(channel.ReadDataFromPipe(&next, 1, eof, error));
    EXPECT_EQ(next, 3);
}

TEST_F(ChannelTest, CommandAtTheEndOfTheStreamFails)
{
    fake_pipe.DeliverNothing();
    IPCStruct_FunctionCallAlt call;
    EXPECT_FALSE(call.ReadCommand(channel, error));
    EXPECT_FALSE(call.has_command);
    EXPECT_EQ(error, u"");
}

TEST_F(ChannelTest, CommandWhoseReadFails)
{
    fake_pipe.FailRead(109);
    IPCStruct_FunctionCallAlt call;
    EXPECT_FALSE(call.ReadCommand(channel, error));
    EXPECT_FALSE(call.has_command);
    EXPECT_EQ(error, u"text of 109\r\n");
}

} // namespace
} // namespace kessil::test
