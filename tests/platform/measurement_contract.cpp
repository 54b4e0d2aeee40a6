#include "platform/measurement.h"

#include "support/under_wine.h"
#include "surroundings.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace kessil::test {

namespace {

/// The id of no process: systems use lower ids, and Windows uses multiples of four.
constexpr std::uint32_t no_process = 0x7FFFFFFD;

} // namespace

TEST(Measurement, ListsTheUsableCores)
{
    const std::vector<std::uint32_t> cores = platform::UsableCores();
    ASSERT_FALSE(cores.empty());
    EXPECT_TRUE(std::ranges::is_sorted(cores));
    EXPECT_EQ(std::ranges::adjacent_find(cores), cores.end());
}

TEST(Measurement, BindsThisProgramToOneCore)
{
    const std::uint32_t last = platform::UsableCores().back();
    EXPECT_TRUE(platform::PlaceSelf(last));
    EXPECT_EQ(platform::UsableCores(), std::vector{last});
}

TEST(Measurement, UsesOnlyUsableCores)
{
    constexpr std::uint32_t highest = on_windows ? 63 : 1000;
    const std::vector<std::uint32_t> before = platform::UsableCores();
    const bool usable = std::ranges::find(before, highest) != before.end();
    EXPECT_EQ(platform::PlaceSelf(highest), usable);
    EXPECT_EQ(platform::UsableCores(), usable ? std::vector{highest} : before);
}

TEST(Measurement, PlacesNoProcessThatDoesNotExist)
{
    EXPECT_FALSE(platform::PlaceProcess(no_process, platform::UsableCores().front()));
}

TEST(Measurement, ReportsTheMemoryOfAProcess)
{
    std::uint64_t bytes = 0;
    // Wine doesn't report it.
    EXPECT_EQ(platform::ReadPrivateMemory(OwnProcessId(), bytes), !UnderWine());
    EXPECT_EQ(bytes > 0, !UnderWine());
}

TEST(Measurement, ReportsNothingForAProcessThatDoesNotExist)
{
    std::uint64_t bytes = 0;
    EXPECT_FALSE(platform::ReadPrivateMemory(no_process, bytes));
}

} // namespace kessil::test
