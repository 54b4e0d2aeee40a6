#include "platform/last_error.h"
#include "platform/module.h"
#include "surroundings.h"

#include <gtest/gtest.h>

namespace kessil::test {

using platform::ModuleHandle;

TEST(ModuleSystem, LoadsALibraryOnce)
{
    const ModuleHandle first = platform::LoadModule(TargetLibrary("plain"));
    const ModuleHandle second = platform::LoadModule(TargetLibrary("plain"));
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first, second);
    platform::FreeModule(first);
    platform::FreeModule(second);
}

TEST(ModuleSystem, NamesTheMissingLibraryWhereTheLoaderDoes)
{
    ASSERT_EQ(platform::LoadModule(TargetLibrary("there_is_no_such_library")), nullptr);
    const std::string text = platform::ToUtf8(platform::LoadErrorText(platform::LastError()));
    EXPECT_EQ(text.find("there_is_no_such_library") != std::string::npos, !on_windows) << text;
}

} // namespace kessil::test
