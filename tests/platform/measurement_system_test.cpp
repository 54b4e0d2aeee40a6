#include "child.h"
#include "platform/measurement.h"
#include "support/under_wine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace kessil::test {

TEST(MeasurementSystem, ReportsMoreMemoryWhenMoreIsUsed)
{
    // So much that memory which earlier tests returned to the allocator can't be enough.
    constexpr std::size_t size = 64 << 20;
    std::uint64_t before = 0;
    std::uint64_t after = 0;
    // Wine doesn't report it.
    EXPECT_EQ(platform::ReadPrivateMemory(OwnProcessId(), before), !UnderWine());
    std::vector<unsigned char> used(size, 1);
    EXPECT_EQ(platform::ReadPrivateMemory(OwnProcessId(), after), !UnderWine());
    EXPECT_EQ(std::ranges::count(used, 1), static_cast<std::ptrdiff_t>(size));
    EXPECT_EQ(after > before + size / 2, !UnderWine());
}

TEST(MeasurementSystem, ReportsTheMemoryOfAnotherProcess)
{
    ServedPipe pipe;
    Child child({u"hang", pipe.Name()});
    ASSERT_EQ(pipe.Accept(child.Id()), platform::PipeStatus::Done);
    std::uint64_t bytes = 0;
    // Wine doesn't report it.
    EXPECT_EQ(platform::ReadPrivateMemory(child.Id(), bytes), !UnderWine());
    EXPECT_EQ(bytes > 0, !UnderWine());
}

TEST(MeasurementSystem, PlacesAnotherProcess)
{
    ServedPipe pipe;
    Child child({u"hang", pipe.Name()});
    ASSERT_EQ(pipe.Accept(child.Id()), platform::PipeStatus::Done);
    EXPECT_TRUE(platform::PlaceProcess(child.Id(), platform::UsableCores().front()));
}

} // namespace kessil::test
