#include "platform/thread.h"

#include <gtest/gtest.h>

namespace kessil::test {

using platform::CurrentThreadId;

TEST(Thread, KeepsItsNumber)
{
    EXPECT_EQ(CurrentThreadId(), CurrentThreadId());
    EXPECT_NE(CurrentThreadId(), 0u);
}

} // namespace kessil::test
