#include "platform/section.h"

#include "platform/last_error.h"
#include "section_name.h"
#include "surroundings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace kessil::test {

using platform::SectionHandle;

namespace {

constexpr std::uint32_t page = 4096;

/// A section and its view, from creation to removal.
struct Created
{
    Created(const WideString &name, std::uint32_t bytes, bool admit_users = false)
        : size(bytes), section(platform::CreateSection(name, bytes, admit_users))
    {
        if (section)
            view = platform::MapCreatedSection(section, bytes);
    }
    ~Created()
    {
        if (view)
            platform::UnmapSection(view, size);
        if (section)
            platform::CloseSection(section);
    }
    Created(const Created &) = delete;
    Created &operator=(const Created &) = delete;

    std::uint32_t size;
    SectionHandle section;
    unsigned char *view = nullptr;
};

/// What a second process would do with the name.
struct Opened
{
    Opened(const WideString &name, std::uint32_t bytes) : size(bytes), section(platform::OpenSection(name, bytes))
    {
        if (section)
            view = platform::MapOpenedSection(section, bytes);
    }
    ~Opened()
    {
        if (view)
            platform::UnmapSection(view, size);
        if (section)
            platform::CloseSection(section);
    }
    Opened(const Opened &) = delete;
    Opened &operator=(const Opened &) = delete;

    std::uint32_t size;
    SectionHandle section;
    unsigned char *view = nullptr;
};

} // namespace

TEST(Section, StartsWithZeros)
{
    const SectionName name;
    const Created created(name, 3 * page);
    ASSERT_NE(created.view, nullptr);
    EXPECT_TRUE(std::all_of(created.view, created.view + 3 * page, [](unsigned char byte) { return byte == 0; }));
}

TEST(Section, BeginsOnAPageInEveryView)
{
    const SectionName name;
    const Created created(name, 100);
    const Opened opened(name, 100);
    ASSERT_NE(created.view, nullptr);
    ASSERT_NE(opened.view, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(created.view) % page, 0u);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(opened.view) % page, 0u);
}

TEST(Section, IsTheSameMemoryOnBothSides)
{
    const SectionName name;
    const Created created(name, 2 * page);
    const Opened opened(name, 2 * page);
    ASSERT_NE(created.view, nullptr);
    ASSERT_NE(opened.view, nullptr);

    created.view[0] = 1;
    created.view[2 * page - 1] = 2;
    EXPECT_EQ(opened.view[0], 1);
    EXPECT_EQ(opened.view[2 * page - 1], 2);
    opened.view[page] = 3;
    EXPECT_EQ(created.view[page], 3);
}

TEST(Section, AcceptsSizesThatAreNoMultipleOfAPage)
{
    const SectionName name;
    const Created created(name, page + 1);
    const Opened opened(name, page + 1);
    ASSERT_NE(created.view, nullptr);
    ASSERT_NE(opened.view, nullptr);
    created.view[page] = 9;
    EXPECT_EQ(opened.view[page], 9);
}

TEST(Section, AdmitsTheOwnerAlsoWhenItAdmitsUsers)
{
    const SectionName name;
    const Created created(name, page, true);
    const Opened opened(name, page);
    ASSERT_NE(created.view, nullptr);
    ASSERT_NE(opened.view, nullptr);
    created.view[5] = 55;
    EXPECT_EQ(opened.view[5], 55);
}

TEST(Section, AcceptsNamesWithSeparators)
{
    const SectionName name("Local\\kessil-section-");
    const Created created(name, page);
    const Opened opened(name, page);
    ASSERT_NE(created.view, nullptr);
    ASSERT_NE(opened.view, nullptr);
}

TEST(Section, AcceptsNamesOutsideAscii)
{
    const SectionName name("kessil-s\xC3\xA9gment-\xF0\x9F\x8C\xBE-");
    const Created created(name, page);
    const Opened opened(name, page);
    ASSERT_NE(created.view, nullptr);
    ASSERT_NE(opened.view, nullptr);
}

TEST(Section, CanNotBeCreatedEmpty)
{
    const SectionName name;
    const Created created(name, 0);
    EXPECT_EQ(created.section, nullptr);
    EXPECT_EQ(platform::LastError(), on_windows ? 87u : 22u);
    // Nothing of it remains.
    EXPECT_EQ(platform::OpenSection(name, 0), nullptr);
}

TEST(Section, CanBeOpenedWithASizeOfZero)
{
    const SectionName name;
    const Created created(name, page);
    const Opened opened(name, 0);
    ASSERT_NE(created.view, nullptr);
    EXPECT_NE(opened.view, nullptr);
}

TEST(Section, CanBeOpenedInPart)
{
    const SectionName name;
    const Created created(name, 4 * page);
    const Opened opened(name, page);
    ASSERT_NE(created.view, nullptr);
    ASSERT_NE(opened.view, nullptr);
    created.view[page - 1] = 4;
    EXPECT_EQ(opened.view[page - 1], 4);
}

TEST(Section, IsNotOpenedBeyondItsSize)
{
    const SectionName name;
    const Created created(name, page);
    ASSERT_NE(created.section, nullptr);
    platform::SetLastError(0);
    const Opened opened(name, 16 * page);
    EXPECT_EQ(opened.view, nullptr);
    EXPECT_EQ(opened.section != nullptr, on_windows);
    EXPECT_EQ(platform::LastError(), on_windows ? 5u : 22u);
}

TEST(Section, IsNotFoundUnderAnotherName)
{
    const SectionName name;
    const SectionName other;
    const Created created(name, page);
    ASSERT_NE(created.section, nullptr);
    EXPECT_EQ(platform::OpenSection(other, page), nullptr);
    EXPECT_EQ(platform::LastError(), 2u);
}

TEST(Section, DoesNotCreateASecondSectionForANameInUse)
{
    const SectionName name;
    const Created first(name, page);
    ASSERT_NE(first.view, nullptr);
    first.view[0] = 77;
    const Created second(name, page);
    if (on_windows) {
        ASSERT_NE(second.view, nullptr);
        EXPECT_EQ(second.view[0], 77);
    } else {
        EXPECT_EQ(second.section, nullptr);
        EXPECT_EQ(platform::LastError(), 17u);
    }
    EXPECT_EQ(first.view[0], 77);
}

TEST(Section, StaysAliveThroughAnOpenHandleWhenItsNameIsRemoved)
{
    const SectionName name;
    const Created created(name, page);
    const Opened opened(name, page);
    platform::RemoveSectionName(name);
    ASSERT_NE(created.view, nullptr);
    ASSERT_NE(opened.view, nullptr);
    created.view[1] = 11;
    EXPECT_EQ(opened.view[1], 11);
}

TEST(Section, LeavesNothingUnderItsNameWhenRemoved)
{
    const SectionName name;
    {
        const Created created(name, page);
        ASSERT_NE(created.section, nullptr);
        platform::RemoveSectionName(name);
    }
    EXPECT_EQ(platform::OpenSection(name, page), nullptr);
    const Created again(name, page);
    ASSERT_NE(again.view, nullptr);
    EXPECT_EQ(again.view[0], 0);
}

TEST(Section, OutlivesItsHandleInAView)
{
    const SectionName name;
    const SectionHandle section = platform::CreateSection(name, page, false);
    ASSERT_NE(section, nullptr);
    unsigned char *const view = platform::MapCreatedSection(section, page);
    platform::CloseSection(section);
    ASSERT_NE(view, nullptr);
    view[0] = 8;
    EXPECT_EQ(view[0], 8);
    platform::UnmapSection(view, page);
}

TEST(Section, KeepsItsContentWhileItIsNotMapped)
{
    const SectionName name;
    const SectionHandle section = platform::CreateSection(name, page, false);
    ASSERT_NE(section, nullptr);
    for (unsigned char round = 0; round < 3; ++round) {
        unsigned char *const view = platform::MapCreatedSection(section, page);
        ASSERT_NE(view, nullptr);
        EXPECT_EQ(view[page - 1], round);
        view[page - 1] = static_cast<unsigned char>(round + 1);
        platform::UnmapSection(view, page);
    }
    platform::CloseSection(section);
}

TEST(Section, KeepsTheLastErrorWhenItIsRemoved)
{
    const SectionName name;
    const SectionHandle section = platform::CreateSection(name, page, false);
    ASSERT_NE(section, nullptr);
    unsigned char *const view = platform::MapCreatedSection(section, page);
    ASSERT_NE(view, nullptr);
    platform::SetLastError(1234);
    platform::UnmapSection(view, page);
    EXPECT_EQ(platform::LastError(), 1234u);
    platform::CloseSection(section);
    EXPECT_EQ(platform::LastError(), 1234u);
    platform::RemoveSectionName(name);
    EXPECT_EQ(platform::LastError(), 1234u);
    platform::RemoveSectionName(name);
    EXPECT_EQ(platform::LastError(), 1234u);
}

} // namespace kessil::test
