#include "protocol/conversation.h"
#include "protocol/recorder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace kessil::test {
namespace {

namespace fs = std::filesystem;

const Bytes line = Hex("4D 0000000E 00000005 6C0069006E0065000000");
const Bytes no_text = FailureFrame(u"Failed to get error message (Process_VADPListHosts)");

// Asks for the hosts of nowhere, which fails.
void ExpectFailure(Conversation &talk, const WideString &library, const Bytes &frames, const Bytes &text)
{
    Section section = Announce(talk, 64);
    section.Put(0, Repeat(0, 64));
    talk.Send(CallFrame(library, "ListHosts", "SIGNATURE_VADPListHosts"));
    talk.Expect(frames + SuccessFrame());
    section.Expect(0, Hex("FFFFFFFF") + text);
}

TEST(AdapterBinding, KnowsTheNameInCapitalsAndWithAFurtherExtension)
{
    const TestDirectory directory;
    const fs::path file = directory.Path() / "TARNLINK_Windows_X64.DLL.backup";
    fs::copy_file(fs::path(TargetLibrary("unbound_recorder")), file);
    const Recorder recorder("ListHosts error=0x99 log=line level=5\nGetErrorMessage text=boom\n");
    Conversation talk(0);
    talk.Load(file.u16string());
    ExpectFailure(talk, file.u16string(), line, Narrow("boom"));
    talk.Send(OrderlyStop());
    talk.End();
}

TEST(AdapterBinding, LeavesALibraryOfAnotherNameAlone)
{
    const Recorder recorder("ListHosts error=0x99 log=line level=5\nGetErrorMessage text=boom\n");
    Conversation talk(0);
    talk.Load(TargetLibrary("unbound_recorder"));
    ExpectFailure(talk, u"", no_text, Hex("00"));
    EXPECT_EQ(recorder.Lines(), "ListHosts path=\"\" credentials=null listing=null\n");
    talk.Send(OrderlyStop());
    talk.End();
}

// One adapter is bound, by either way to load it, and serves whoever fails.
TEST(AdapterBinding, ServesTheOtherGenerationToo)
{
    const Recorder recorder("ListHosts error=0x99 log=line level=5\nGetErrorMessage text=boom\n");
    Conversation talk(0);
    talk.Send(LoadAltFrame(platform::ToUtf8(TargetLibrary("recorder_tarnlink_windows_x64.dll"))));
    talk.Expect(Hex("00000001"));
    talk.Load(TargetLibrary("unbound_recorder"));
    ExpectFailure(talk, u"", {}, Narrow("boom"));
    talk.Send(Hex("66 25 00000000"));
    talk.Expect(Hex("FFFFFF9D 00000004 6C696E65 00000005 FFFFFC19 FFFFFFFF 00000004 626F6F6D"));
    talk.Send(OrderlyStop());
    talk.End();
}

} // namespace
} // namespace kessil::test
