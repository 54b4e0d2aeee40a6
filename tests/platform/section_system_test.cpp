#include "platform/section.h"
#include "section_name.h"

#include <gtest/gtest.h>

namespace kessil::test {

using platform::SectionHandle;

TEST(SectionSystem, IsTheSameMemoryAtTwoAddresses)
{
    constexpr std::uint32_t size = 8192;
    const SectionName name;
    const SectionHandle created = platform::CreateSection(name, size, false);
    const SectionHandle opened = platform::OpenSection(name, size);
    ASSERT_NE(created, nullptr);
    ASSERT_NE(opened, nullptr);
    unsigned char *const here = platform::MapCreatedSection(created, size);
    unsigned char *const there = platform::MapOpenedSection(opened, size);
    ASSERT_NE(here, nullptr);
    ASSERT_NE(there, nullptr);
    EXPECT_NE(here, there);
    here[size - 1] = 5;
    EXPECT_EQ(there[size - 1], 5);
    platform::UnmapSection(there, size);
    platform::UnmapSection(here, size);
    platform::CloseSection(opened);
    platform::CloseSection(created);
}

} // namespace kessil::test
