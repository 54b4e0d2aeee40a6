#include "platform/thread.h"

#include <gtest/gtest.h>

#include <thread>

namespace kessil::test {

using platform::CurrentThreadId;

TEST(ThreadSystem, HasANumberOfItsOwn)
{
    std::uint32_t other = 0;
    std::thread([&other] { other = CurrentThreadId(); }).join();
    EXPECT_NE(other, 0u);
    EXPECT_NE(other, CurrentThreadId());
}

} // namespace kessil::test
