#include "protocol/conversation.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace kessil::test {
namespace {

constexpr std::uint64_t megabyte = 1 << 20;

void ExpectNoGrowth(const Holdings &before, const Holdings &after)
{
    EXPECT_EQ(after.handles, before.handles);
    // A sanitizer keeps what was freed for a while, and notes of its own for each call.
    const std::uint64_t allowance = sanitizers.empty() ? megabyte : 64 * megabyte;
    EXPECT_GT(before.private_bytes, 0u);
    EXPECT_LE(after.private_bytes, before.private_bytes + allowance);
}

TEST(TenThousand, CallsOfAPlainRow)
{
    Conversation talk(0, {});
    const Section section = Announce(talk, 64);
    talk.Load(TargetLibrary("plain"));
    const Bytes call = CallFrame(u"", "Answer", "SIGNATURE_GetBackupType");
    const auto repeat = [&](int count) {
        for (int i = 0; i < count; ++i) {
            talk.Send(call);
            talk.Expect(SuccessFrame());
        }
    };
    repeat(500);
    const Holdings before = HoldingsOf(talk.Helper().Process());
    repeat(10000);
    ExpectNoGrowth(before, HoldingsOf(talk.Helper().Process()));
    section.Expect(0, Hex("0000002A"));
    talk.Send(OrderlyStop());
}

// Blocks through the section, refused calls and failed in-lists: what a parent may repeat without end.
TEST(TenThousand, CallsOfEveryKind)
{
    Conversation talk(0, {});
    Section section = Announce(talk, 20000);
    talk.Load(TargetLibrary("vorn_recorder"));
    const auto round = [&] {
        section.Put(0, Be64(1) + Be64(2) + Be32(4096));
        section.Put(24 + 4096, Be32(4096));
        for (const char *function : {"VornWriteFile", "GetBackupType"})
            talk.Call(function);
        section.Put(0, Be64(1) + Be64(2) + Narrow("a path that is longer than any string holds in itself") + Be32(0));
        talk.Call("VornOpenFile");
        talk.Send(CallFrame(u"", "GetBackupType", "nothing"));
        talk.Expect(FailureFrame(u"Invalid signature"));
        section.Put(16, Hex("FFFFFFFF"));
        talk.Send(CallFrame(u"", "VornReadFile", "SIGNATURE_VornReadFile"));
        talk.Expect(FailureFrame(u"Failed to serialise input (Process_VornReadFile)"));
    };
    for (int i = 0; i < 100; ++i)
        round();
    const Holdings before = HoldingsOf(talk.Helper().Process());
    for (int i = 0; i < 2000; ++i)
        round();
    ExpectNoGrowth(before, HoldingsOf(talk.Helper().Process()));
    talk.Send(OrderlyStop());
}

// Sections come and go in both directions, and modules too.
TEST(Hundreds, OfSectionsAndLoads)
{
    Conversation talk(0, {});
    const WideString library = TargetLibrary("plain");
    const auto round = [&] {
        const Section small = Announce(talk, 3);
        talk.Load(library);
        talk.Send(CallFrame(u"", "Answer", "SIGNATURE_GetBackupType"));
        talk.Expect(ResizeFrame(talk.SectionName(u'0'), 4));
        const Section grown = Section::Open(talk.SectionName(u'0'), 4);
        talk.Send(SuccessFrame());
        talk.Expect(SuccessFrame());
        grown.Expect(0, Hex("0000002A"));
        const Section next = Announce(talk, 4, u'6');
        talk.Send(CallFrame(u"", "Answer", "SIGNATURE_GetBackupType"));
        talk.Expect(SuccessFrame());
        next.Expect(0, Hex("0000002A"));
    };
    for (int i = 0; i < 20; ++i)
        round();
    const Holdings before = HoldingsOf(talk.Helper().Process());
    for (int i = 0; i < 300; ++i)
        round();
    ExpectNoGrowth(before, HoldingsOf(talk.Helper().Process()));
    talk.Send(OrderlyStop());
}

TEST(Hundred, HelpersAtOnce)
{
    std::vector<std::unique_ptr<Conversation>> talks;
    std::vector<Section> sections;
    talks.reserve(100);
    sections.reserve(100);
    for (int i = 0; i < 100; ++i)
        talks.push_back(std::make_unique<Conversation>(0, std::vector<WideString>()));
    for (const auto &talk : talks) {
        sections.push_back(Section::Create(talk->SectionName(u'7'), 16));
        talk->Send(ResizeFrame(sections.back().Name(), 16));
        talk->Send(LoadFrame(TargetLibrary("plain")));
        talk->Send(CallFrame(u"", "Answer", "SIGNATURE_GetBackupType"));
    }
    for (const auto &talk : talks) {
        talk->Expect(SuccessFrame());
        talk->Expect(SuccessFrame());
        talk->Expect(SuccessFrame());
    }
    for (const Section &section : sections)
        section.Expect(0, Hex("0000002A"));
    sections.clear();
    for (const auto &talk : talks)
        talk->Send(OrderlyStop());
    for (const auto &talk : talks)
        talk->End();
}

} // namespace
} // namespace kessil::test
