#include "platform/private_section.h"

#include "platform/last_error.h"
#include "section_name.h"
#include "surroundings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace kessil::test {

using platform::SectionHandle;

TEST(PrivateSection, IsSharedWithAnyoneWhoOpensItByName)
{
    const SectionName name;
    const SectionHandle section = platform::CreatePrivateSection(name, 5000);
    ASSERT_NE(section, nullptr);
    unsigned char *const view = platform::MapCreatedSection(section, 5000);
    ASSERT_NE(view, nullptr);
    EXPECT_TRUE(std::all_of(view, view + 5000, [](unsigned char byte) { return byte == 0; }));

    const SectionHandle opened = platform::OpenSection(name, 5000);
    ASSERT_NE(opened, nullptr);
    unsigned char *const other = platform::MapOpenedSection(opened, 5000);
    ASSERT_NE(other, nullptr);
    std::memcpy(other + 4990, "kessil", 6);
    EXPECT_EQ(std::memcmp(view + 4990, "kessil", 6), 0);

    platform::UnmapSection(other, 5000);
    platform::CloseSection(opened);
    platform::UnmapSection(view, 5000);
    platform::CloseSection(section);
}

TEST(PrivateSection, IsRefusedForANameInUse)
{
    const SectionName name;
    const SectionHandle section = platform::CreatePrivateSection(name, 100);
    ASSERT_NE(section, nullptr);
    EXPECT_EQ(platform::CreatePrivateSection(name, 100), nullptr);
    EXPECT_EQ(platform::LastError(), on_windows ? 183u : 17u);
    platform::CloseSection(section);
}

TEST(PrivateSection, CanNotBeCreatedEmpty)
{
    const SectionName name;
    EXPECT_EQ(platform::CreatePrivateSection(name, 0), nullptr);
    EXPECT_EQ(platform::LastError(), on_windows ? 87u : 22u);
}

TEST(PrivateSection, FreesANameThatWasRemoved)
{
    const SectionName name;
    for (int round = 0; round < 2; ++round) {
        const SectionHandle section = platform::CreatePrivateSection(name, 100);
        ASSERT_NE(section, nullptr);
        platform::CloseSection(section);
        platform::RemoveSectionName(name);
    }
    EXPECT_EQ(platform::OpenSection(name, 100), nullptr);
}

} // namespace kessil::test
