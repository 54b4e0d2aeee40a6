#include "platform/thread.h"

#include <gtest/gtest.h>

#include <thread>

namespace kessil::test {

using platform::CurrentThreadId;

TEST(Thread, KeepsItsNumber)
{
    EXPECT_EQ(CurrentThreadId(), CurrentThreadId());
    EXPECT_NE(CurrentThreadId(), 0u);
}

TEST(Thread, HasANumberOfItsOwn)
{
    std::uint32_t other = 0;
    std::thread([&other] { other = CurrentThreadId(); }).join();
    EXPECT_NE(other, 0u);
    EXPECT_NE(other, CurrentThreadId());
}

} // namespace kessil::test
