#include "platform/private_section.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

namespace kessil::platform {
namespace {

WideString FreshName()
{
    std::random_device source;
    return FromUtf8("kessil-test-" + std::to_string(source()) + "-" + std::to_string(source()));
}

TEST(PrivateSectionTest, IsSharedWithWhoeverOpensItByName)
{
    const WideString name = FreshName();
    const SectionHandle section = CreatePrivateSection(name, 5000);
    ASSERT_NE(section, nullptr);
    unsigned char *view = MapCreatedSection(section, 5000);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view[0], 0);
    EXPECT_EQ(view[4999], 0);

    const SectionHandle opened = OpenSection(name, 5000);
    ASSERT_NE(opened, nullptr);
    unsigned char *other = MapOpenedSection(opened, 5000);
    ASSERT_NE(other, nullptr);
    std::memcpy(other + 4990, "kessil", 6);
    EXPECT_EQ(std::memcmp(view + 4990, "kessil", 6), 0);

    UnmapSection(other, 5000);
    CloseSection(opened);
    UnmapSection(view, 5000);
    CloseSection(section);
    RemoveSectionName(name);
}

TEST(PrivateSectionTest, ATakenNameIsRefused)
{
    const WideString name = FreshName();
    const SectionHandle section = CreatePrivateSection(name, 100);
    ASSERT_NE(section, nullptr);
    EXPECT_EQ(CreatePrivateSection(name, 100), nullptr);
    CloseSection(section);
    RemoveSectionName(name);
}

TEST(PrivateSectionTest, ANameThatWasGivenUpIsFree)
{
    const WideString name = FreshName();
    for (int round = 0; round < 2; ++round) {
        const SectionHandle section = CreatePrivateSection(name, 100);
        EXPECT_NE(section, nullptr);
        CloseSection(section);
        RemoveSectionName(name);
    }
    EXPECT_EQ(OpenSection(name, 100), nullptr);
}

} // namespace
} // namespace kessil::platform
