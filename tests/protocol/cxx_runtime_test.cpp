#include "protocol/conversation.h"
#include "protocol/recorder.h"

#include <gtest/gtest.h>

namespace kessil::test {
namespace {

namespace fs = std::filesystem;

bool HasCxxRuntime(Conversation &talk)
{
    const std::uint32_t process = platform::ProcessId(talk.Helper().Process());
    return ReadText("/proc/" + std::to_string(process) + "/maps").find("/libstdc++.so.6") != std::string::npos;
}

class NeededLibrary : public ::testing::TestWithParam<const char *>
{};

TEST_P(NeededLibrary, IsReleasedWithTheOneThatNeedsIt)
{
    const Recorder recorder;
    const TestDirectory directory;
    const fs::path library = directory.Path() / "library.so";
    const fs::path needed = directory.Path() / "inline_code_old.so";
    fs::copy_file(fs::path(TargetLibrary(GetParam())), library);
    fs::copy_file(fs::path(TargetLibrary("inline_code_old")), needed);
    Conversation talk(0);
    const Section section = Announce(talk, 16);
    talk.Load(library.u16string());
    talk.Call("GetBackupType");
    section.Expect(0, Hex("00000001"));
    fs::rename(needed, directory.Path() / "aside.so");
    fs::copy_file(fs::path(TargetLibrary("inline_code_new")), needed);
    talk.Load(library.u16string());
    talk.Call("GetBackupType");
    section.Expect(0, Hex("00000002"));
    talk.Send(OrderlyStop());
    talk.ExpectClosed();
    EXPECT_EQ(recorder.Lines(), "old attach\nold call\nold detach\nnew attach\nnew call\nnew detach\n");
}

INSTANTIATE_TEST_SUITE_P(Ways, NeededLibrary,
                         ::testing::Values("leans_on_inline_code_runpath", "leans_on_inline_code_rpath"),
                         [](const auto &way) { return std::string(way.param); });

// With a sanitizer the helper itself needs the run-time library.
TEST(CxxRuntime, IsLoadedForALibraryThatNeedsItAndNoOther)
{
    Conversation talk(0);
    EXPECT_EQ(HasCxxRuntime(talk), !sanitizers.empty());
    talk.Load(TargetLibrary("plain"));
    talk.Load(TargetLibrary("aborts"));
    EXPECT_EQ(HasCxxRuntime(talk), !sanitizers.empty());
    talk.Load(TargetLibrary("inline_code_new"));
    EXPECT_TRUE(HasCxxRuntime(talk));
    talk.Send(OrderlyStop());
}

} // namespace
} // namespace kessil::test
