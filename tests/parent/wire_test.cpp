// Frames, bare values and the connection, without anything above them.

#include "parent/wire/bare_values.h"
#include "parent/wire/connection.h"
#include "parent/wire/frame.h"

#include "fakes/fake_last_error.h"
#include "fakes/fake_pipe_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

namespace kessil::parent {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using platform::Deadline;
using platform::PipeStatus;
using testing::ElementsAre;

std::string Text(std::span<const unsigned char> bytes)
{
    return {bytes.begin(), bytes.end()};
}

std::span<const unsigned char> BytesOf(const std::string &text)
{
    return {reinterpret_cast<const unsigned char *>(text.data()), text.size()};
}

TEST(FrameWriterTest, WritesTheLengthInFrontOfTheFields)
{
    FrameWriter writer;
    writer.Begin('R').U32(0x01020304).U64(0x05060708090A0B0C).Wide(u"a\u20AC").Narrow("b").Raw("cd");
    EXPECT_EQ(Text(writer.Finish()), "R\0\0\0\x16"
                                     "\1\2\3\4"
                                     "\5\6\7\x08\x09\x0A\x0B\x0C"
                                     "a\0\xAC\x20\0\0"
                                     "b\0"
                                     "cd"s);
    EXPECT_EQ(Text(writer.Begin('S').Finish()), "S\0\0\0\0"s);
}

TEST(FrameWriterTest, ReportsATextWithAZeroInsideUntilTheNextFrame)
{
    FrameWriter writer;
    EXPECT_FALSE(writer.Begin('L').Wide(u"a").Narrow("b").HasZeroInText());
    EXPECT_TRUE(writer.Begin('L').Wide({u"a\0b", 3}).Narrow("b").HasZeroInText());
    EXPECT_TRUE(writer.Begin('L').Narrow({"\0", 1}).Wide(u"a").HasZeroInText());
    EXPECT_FALSE(writer.Begin('L').HasZeroInText());
}

TEST(PayloadReaderTest, AFieldThatIsCutIsEmpty)
{
    const std::string payload = "\1\2\3\4\5\6\7\x08\x09\x0A\x0B\x0C"
                                "a\0\0\0"s;
    for (std::size_t size = 0; size <= payload.size(); ++size) {
        const std::string cut = payload.substr(0, size);
        PayloadReader reader(BytesOf(cut));
        EXPECT_EQ(reader.U32(), size < 4 ? std::nullopt : std::optional(0x01020304U));
        EXPECT_EQ(reader.U64(), size < 12 ? std::nullopt : std::optional(0x05060708090A0B0CU));
        if (size >= 12) {
            EXPECT_EQ(reader.Wide(), size < 16 ? std::nullopt : std::optional<WideString>(u"a"));
        }
    }
}

TEST(BareWriterTest, WritesTheCommandAndItsArguments)
{
    BareWriter writer;
    writer.Begin(56);
    EXPECT_FALSE(writer.HasArguments());
    EXPECT_EQ(Text(writer.Bytes()), "\x66\x38");
    writer.Begin(5).Text("a\0b"s).U32(0x01020304).U64(5).Raw(BytesOf("X"));
    EXPECT_TRUE(writer.HasArguments());
    EXPECT_EQ(Text(writer.Bytes()), "\x66\5"
                                    "\0\0\0\3a\0b"
                                    "\1\2\3\4"
                                    "\0\0\0\0\0\0\0\5"
                                    "X"s);
}

/// An answer that ends where its bytes do.
struct BytesSource
{
    std::string left;
    std::string broken{};

    bool Receive(std::span<unsigned char> place)
    {
        if (left.size() < place.size())
            return false;
        std::memcpy(place.data(), left.data(), place.size());
        left.erase(0, place.size());
        return true;
    }

    void EndBroken(const std::string &reason) { broken = reason; }
};

TEST(BareReaderTest, ReadsALogLine)
{
    const std::string line = "\0\0\0\2ab\0\0\0\xFF"s;
    for (std::size_t size = 0; size <= line.size(); ++size) {
        BytesSource source{line.substr(0, size)};
        std::uint8_t level = 0;
        std::string text;
        EXPECT_EQ(BareReader(source).LogLine(level, text), size == line.size());
        EXPECT_EQ(level, size == line.size() ? 0xFF : 0);
        EXPECT_EQ(source.broken, "");
    }
    BytesSource source{"\0\0\0\0\0\0\1\0"s};
    std::uint8_t level = 0;
    std::string text;
    EXPECT_FALSE(BareReader(source).LogLine(level, text));
    EXPECT_EQ(source.broken, "a log line of level 256");
}

TEST(BareReaderTest, ReadsItemsInBothForms)
{
    const std::string item = "\0\0\0\1n\0\0\0\0\0\0\0\7\xFF\xFF\xFF\xFE"s;
    std::vector<AdapterItem> items;
    BytesSource source{item + item};
    EXPECT_TRUE(BareReader(source).Items(2, items, ItemForm::Short));
    const AdapterItem expected{.name = "n", .number = -2, .value = 7};
    EXPECT_THAT(items, ElementsAre(expected, expected));

    const std::string long_item = item + "\0\0\0\3"s;
    for (std::size_t size = 0; size <= long_item.size(); ++size) {
        source = {long_item.substr(0, size)};
        EXPECT_EQ(BareReader(source).Items(1, items, ItemForm::WithExtra), size == long_item.size());
        EXPECT_EQ(source.broken, "");
    }
    EXPECT_THAT(items, ElementsAre(AdapterItem{.name = "n", .number = -2, .value = 7, .extra = 3}));
}

TEST(BareReaderTest, RefusesImpossibleLengthsBeforeItAllocates)
{
    std::string text = "before";
    BytesSource source{"\0\x10\0\1"s};
    EXPECT_FALSE(BareReader(source).Text(text));
    EXPECT_EQ(source.broken, "a text of 1048577 bytes");
    std::vector<AdapterItem> items;
    EXPECT_FALSE(BareReader(source).Items(0x80000000, items, ItemForm::Short));
    EXPECT_EQ(source.broken, "a listing of 2147483648 items");
}

class ConnectionTest : public testing::Test
{
protected:
    void SetUp() override
    {
        test::fake_last_error = {};
        test::fake_pipe_server = {};
        ASSERT_TRUE(connection.Create());
        ASSERT_TRUE(test::fake_pipe_server.Connect(connection.Name(), client));
        ASSERT_EQ(connection.Accept(7, Deadline::max()), PipeStatus::Done);
    }

    static Deadline Now() { return std::chrono::steady_clock::now(); }

    std::shared_ptr<test::FakePipeClient> client = std::make_shared<test::FakePipeClient>(7);
    Connection connection;
};

TEST_F(ConnectionTest, AFrameIsReadOnceItIsWhole)
{
    const std::string sent = "M\0\0\0\2ab"s;
    Frame frame;
    for (const char byte : sent) {
        EXPECT_EQ(connection.ReadFrame(frame, Now()), PipeStatus::TimedOut);
        client->Send({&byte, 1});
        // Past its deadline a read leaves bytes in the pipe.
        std::span<const unsigned char> peeked;
        EXPECT_EQ(connection.Peek(1, peeked, Now() + 20s), PipeStatus::Done);
    }
    EXPECT_EQ(connection.ReadFrame(frame, Now() + 20s), PipeStatus::Done);
    EXPECT_TRUE(frame.allowed);
    EXPECT_EQ(frame.type, 'M');
    EXPECT_EQ(Text(frame.payload), "ab");
    EXPECT_FALSE(connection.HasMore());
    EXPECT_EQ(connection.BytesReceived(), sent.size());
}

TEST_F(ConnectionTest, FramesThatNoHelperSendsAreNotAllowed)
{
    for (const std::string &sent : {"Z"s, "S\0\0\0\1"s, "E\0\x10\0\1"s, "R\0\1\0\1"s}) {
        Connection other;
        ASSERT_TRUE(other.Create());
        auto peer = std::make_shared<test::FakePipeClient>(7);
        ASSERT_TRUE(test::fake_pipe_server.Connect(other.Name(), peer));
        ASSERT_EQ(other.Accept(7, Deadline::max()), PipeStatus::Done);
        peer->Send(sent);
        Frame frame;
        EXPECT_EQ(other.ReadFrame(frame, Now() + 20s), PipeStatus::Done);
        EXPECT_FALSE(frame.allowed);
        EXPECT_EQ(frame.type, sent[0]);
    }
}

TEST_F(ConnectionTest, AFrameMayHaveTheLongestPayloadOfItsType)
{
    const std::string longest_text(0x100000, 't');
    const std::string longest_announcement(0x10000, 'a');
    const std::pair<std::string, std::string> sent[] = {
        {"E\0\x10\0\0"s, longest_text}, {"M\0\x10\0\0"s, longest_text}, {"R\0\1\0\0"s, longest_announcement}};
    for (const auto &[header, payload] : sent) {
        client->Send(header + payload);
        Frame frame;
        EXPECT_EQ(connection.ReadFrame(frame, Now() + 20s), PipeStatus::Done);
        ASSERT_TRUE(frame.allowed) << header[0];
        EXPECT_EQ(frame.type, header[0]);
        EXPECT_TRUE(Text(frame.payload) == payload) << header[0];
        EXPECT_FALSE(connection.HasMore());
    }
}

TEST_F(ConnectionTest, ATimedOutReadOfBytesContinuesWhereItStopped)
{
    std::vector<unsigned char> place(10000);
    std::size_t done = 0;
    client->Send("abc");
    std::span<const unsigned char> peeked;
    EXPECT_EQ(connection.Peek(2, peeked, Now() + 20s), PipeStatus::Done);
    EXPECT_EQ(Text(peeked), "ab");
    EXPECT_TRUE(connection.HasMore());
    EXPECT_EQ(connection.ReadBytes(place, done, Now()), PipeStatus::TimedOut);
    EXPECT_EQ(done, 3U);
    client->Send(std::string(9997, 'd') + "e");
    EXPECT_EQ(connection.ReadBytes(place, done, Now() + 20s), PipeStatus::Done);
    EXPECT_EQ(Text(place), "abc" + std::string(9997, 'd'));
    // The byte behind them is still in the pipe.
    EXPECT_FALSE(connection.HasMore());
    client->Leave();
    done = 0;
    EXPECT_EQ(connection.ReadBytes(std::span(place).first(2), done, Now() + 20s), PipeStatus::Closed);
}

TEST_F(ConnectionTest, AnInterruptEndsTheNextRead)
{
    connection.Interrupt();
    Frame frame;
    EXPECT_EQ(connection.ReadFrame(frame, Now() + 20s), PipeStatus::Interrupted);
    connection.Close();
    EXPECT_TRUE(client->IsAlone());
}

} // namespace
} // namespace kessil::parent
