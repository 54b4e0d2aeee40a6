#include "channel/byte_buffer.h"

#include "support/heap_probe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace kessil::test {
namespace {

TEST(ByteBuffer, StartsEmpty)
{
    CByteBuffer buffer(1024);
    EXPECT_EQ(buffer.Size(), 0u);
    EXPECT_EQ(buffer.Capacity(), 0u);
}

TEST(ByteBuffer, FirstByteOfAnEmptyBufferIsTheSpareOne)
{
    CByteBuffer buffer(1024);
    *buffer.Data() = 7;
    EXPECT_EQ(*buffer.Data(), 7);
    ASSERT_EQ(buffer.SetSize(16), 0);
    unsigned char *const block = buffer.Data();
    block[0] = 1;
    ASSERT_EQ(buffer.SetSize(0), 0);
    EXPECT_NE(buffer.Data(), block);
    *buffer.Data() = 9;
    ASSERT_EQ(buffer.SetSize(16), 0);
    EXPECT_EQ(buffer.Data(), block);
    EXPECT_EQ(buffer.Data()[0], 1);
}

TEST(ByteBuffer, SetSizeKeepsABlockThatIsLargeEnough)
{
    CByteBuffer buffer(1024);
    ASSERT_EQ(buffer.SetSize(16384), 0);
    EXPECT_EQ(buffer.Capacity(), 16384u);
    unsigned char *const block = buffer.Data();
    block[4] = 0x5A;
    ASSERT_EQ(buffer.SetSize(5), 0);
    EXPECT_EQ(buffer.Size(), 5u);
    EXPECT_EQ(buffer.Capacity(), 16384u);
    EXPECT_EQ(buffer.Data(), block);
    EXPECT_EQ(buffer.Data()[4], 0x5A);
}

TEST(ByteBuffer, SetSizeGrowsToTheNextStep)
{
    CByteBuffer buffer(1024);
    ASSERT_EQ(buffer.SetSize(16384), 0);
    ASSERT_EQ(buffer.SetSize(20000), 0);
    EXPECT_EQ(buffer.Size(), 20000u);
    EXPECT_EQ(buffer.Capacity(), 20480u);
    std::memset(buffer.Data(), 1, 20480);
}

TEST(ByteBuffer, SetSizeToAWholeStepTakesExactlyThat)
{
    CByteBuffer buffer(1024);
    ASSERT_EQ(buffer.SetSize(2048), 0);
    EXPECT_EQ(buffer.Capacity(), 2048u);
    ASSERT_EQ(buffer.SetSize(2049), 0);
    EXPECT_EQ(buffer.Capacity(), 3072u);
}

TEST(ByteBuffer, GranularityOfZeroTakesExactSizes)
{
    CByteBuffer buffer(0);
    ASSERT_EQ(buffer.SetSize(5), 0);
    EXPECT_EQ(buffer.Capacity(), 5u);
    ASSERT_EQ(buffer.Resize(7), 0);
    EXPECT_EQ(buffer.Capacity(), 7u);
}

TEST(ByteBuffer, ResizeKeepsTheContent)
{
    CByteBuffer buffer(1024);
    ASSERT_EQ(buffer.SetSize(16384), 0);
    for (std::uint32_t i = 0; i < 16384; ++i)
        buffer.Data()[i] = static_cast<unsigned char>(i * 7);
    ASSERT_EQ(buffer.Resize(16385), 0);
    EXPECT_EQ(buffer.Size(), 16385u);
    EXPECT_EQ(buffer.Capacity(), 17408u);
    for (std::uint32_t i = 0; i < 16384; ++i)
        ASSERT_EQ(buffer.Data()[i], static_cast<unsigned char>(i * 7)) << i;
}

TEST(ByteBuffer, ResizeWithinTheBlockKeepsIt)
{
    CByteBuffer buffer(1024);
    ASSERT_EQ(buffer.SetSize(5), 0);
    unsigned char *const block = buffer.Data();
    ASSERT_EQ(buffer.Resize(1024), 0);
    EXPECT_EQ(buffer.Data(), block);
    EXPECT_EQ(buffer.Size(), 1024u);
}

TEST(ByteBuffer, ResizeOfAnEmptyBufferAllocates)
{
    CByteBuffer buffer(1024);
    ASSERT_EQ(buffer.Resize(1), 0);
    EXPECT_EQ(buffer.Capacity(), 1024u);
    buffer.Data()[0] = 3;
}

TEST(ByteBuffer, SetSizeThatCantBeRoundedUpFails)
{
    CByteBuffer buffer(1024);
    ASSERT_EQ(buffer.SetSize(10), 0);
    EXPECT_EQ(buffer.SetSize(0xFFFFFFFF), 1);
    EXPECT_EQ(buffer.Size(), 0u);
    EXPECT_EQ(buffer.Capacity(), 0u);
    *buffer.Data() = 1;
    ASSERT_EQ(buffer.SetSize(10), 0);
    EXPECT_EQ(buffer.Capacity(), 1024u);
}

TEST(ByteBuffer, LastSizeThatCanBeRoundedUpIsAskedFor)
{
    CByteBuffer buffer(1024);
    const NoMemoryFrom limit(0xFFFFFC00);
    const std::size_t before = HeapProbe::Requests();
    EXPECT_EQ(buffer.SetSize(0xFFFFFC00), 1);
    EXPECT_EQ(HeapProbe::Requests(), before + 1);
    EXPECT_EQ(buffer.SetSize(0xFFFFFC01), 1);
    EXPECT_EQ(HeapProbe::Requests(), before + 1);
}

TEST(ByteBuffer, SetSizeWithoutMemoryLeavesItEmpty)
{
    CByteBuffer buffer(1024);
    ASSERT_EQ(buffer.SetSize(1024), 0);
    {
        const NoMemoryFrom limit(2048);
        EXPECT_EQ(buffer.SetSize(1025), 1);
    }
    EXPECT_EQ(buffer.Size(), 0u);
    EXPECT_EQ(buffer.Capacity(), 0u);
    ASSERT_EQ(buffer.SetSize(1025), 0);
    std::memset(buffer.Data(), 0, 2048);
}

TEST(ByteBuffer, ResizeWithoutMemoryLeavesItAsItWas)
{
    CByteBuffer buffer(1024);
    ASSERT_EQ(buffer.SetSize(3), 0);
    std::memcpy(buffer.Data(), "abc", 3);
    {
        const NoMemoryFrom limit(2048);
        EXPECT_EQ(buffer.Resize(1025), 1);
    }
    EXPECT_EQ(buffer.Size(), 3u);
    EXPECT_EQ(buffer.Capacity(), 1024u);
    EXPECT_EQ(std::memcmp(buffer.Data(), "abc", 3), 0);
    EXPECT_EQ(buffer.Resize(0xFFFFFFFF), 1);
    EXPECT_EQ(buffer.Size(), 3u);
    EXPECT_EQ(std::memcmp(buffer.Data(), "abc", 3), 0);
}

} // namespace
} // namespace kessil::test
