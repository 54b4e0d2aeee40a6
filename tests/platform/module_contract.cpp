#include "platform/module.h"

#include "platform/last_error.h"
#include "surroundings.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <fstream>

namespace kessil::test {

using platform::ModuleHandle;

namespace {

using Answer = std::uint32_t();

} // namespace

TEST(Module, CallsWhatALibraryExports)
{
    const ModuleHandle module = platform::LoadModule(TargetLibrary("plain"));
    ASSERT_NE(module, nullptr);
    void *const found = platform::FindExport(module, "Answer");
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(reinterpret_cast<Answer *>(found)(), 42u);
    platform::FreeModule(module);
}

TEST(Module, FindsNoExportThatDoesNotExist)
{
    const ModuleHandle module = platform::LoadModule(TargetLibrary("plain"));
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(platform::FindExport(module, "answer"), nullptr);
    EXPECT_EQ(platform::FindExport(module, "NoSuchExport"), nullptr);
    platform::FreeModule(module);
}

TEST(Module, FindsNoExportOfALibraryThatThisOneNeeds)
{
    const ModuleHandle module = platform::LoadModule(TargetLibrary("plain"));
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(platform::FindExport(module, "strlen"), nullptr);
    EXPECT_EQ(platform::FindExport(module, "abort"), nullptr);
    platform::FreeModule(module);
}

TEST(Module, KeepsTwoLibrariesApart)
{
    const ModuleHandle first = platform::LoadModule(TargetLibrary("first_answer"));
    const ModuleHandle second = platform::LoadModule(TargetLibrary("second_answer"));
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    void *const first_export = platform::FindExport(first, "GetBackupType");
    void *const second_export = platform::FindExport(second, "GetBackupType");
    ASSERT_NE(first_export, nullptr);
    ASSERT_NE(second_export, nullptr);
    EXPECT_EQ(reinterpret_cast<Answer *>(first_export)(), 1u);
    EXPECT_EQ(reinterpret_cast<Answer *>(second_export)(), 2u);
    platform::FreeModule(first);
    platform::FreeModule(second);
}

TEST(Module, StaysLoadedUntilEveryLoadIsReleased)
{
    const ModuleHandle first = platform::LoadModule(TargetLibrary("plain"));
    const ModuleHandle second = platform::LoadModule(TargetLibrary("plain"));
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    platform::FreeModule(first);
    void *const found = platform::FindExport(second, "Answer");
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(reinterpret_cast<Answer *>(found)(), 42u);
    platform::FreeModule(second);
}

TEST(Module, ReportsWhyALoadFailed)
{
    platform::SetLastError(0);
    EXPECT_EQ(platform::LoadModule(TargetLibrary("there_is_no_such_library")), nullptr);
    const std::uint32_t code = platform::LastError();
    EXPECT_EQ(code, on_windows ? 126u : 2u);
    EXPECT_FALSE(platform::LoadErrorText(code).empty());
}

TEST(Module, LoadsNothingUnderAnEmptyName)
{
    const ModuleHandle module = platform::LoadModule(u"");
    EXPECT_EQ(module, nullptr);
    EXPECT_NE(platform::LastError(), 0u);
}

TEST(Module, RefusesAFileThatIsNoLibrary)
{
    const TemporaryDirectory directory;
    const std::string file = (directory.Path() / "text.dll").string();
    std::ofstream(file) << "not a library";
    platform::SetLastError(0);
    EXPECT_EQ(platform::LoadModule(platform::FromUtf8(file)), nullptr);
    const std::uint32_t code = platform::LastError();
    EXPECT_NE(code, 0u);
    EXPECT_FALSE(platform::LoadErrorText(code).empty());
}

TEST(Module, KeepsTheLastErrorWhenItIsFreed)
{
    const ModuleHandle module = platform::LoadModule(TargetLibrary("plain"));
    ASSERT_NE(module, nullptr);
    platform::SetLastError(1234);
    platform::FreeModule(module);
    EXPECT_EQ(platform::LastError(), 1234u);
}

} // namespace kessil::test
