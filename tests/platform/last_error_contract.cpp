#include "platform/last_error.h"

#include "surroundings.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace kessil::test {

using platform::ErrorText;
using platform::LastError;
using platform::SetLastError;

namespace {

// The same number on both systems: no such file.
constexpr std::uint32_t not_found = 2;

/// Waits without a call that could touch the last error.
void SpinUntil(const std::atomic<bool> &flag)
{
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!flag && std::chrono::steady_clock::now() < limit) {
    }
}

} // namespace

TEST(LastError, ReturnsWhatWasSet)
{
    SetLastError(1234);
    EXPECT_EQ(LastError(), 1234u);
    SetLastError(0);
    EXPECT_EQ(LastError(), 0u);
}

TEST(LastError, BelongsToTheThread)
{
    // Each thread sets its own before the other reads.
    std::atomic<bool> other_set = false;
    std::atomic<bool> own_read = false;
    std::uint32_t seen_by_other = 0;
    std::thread other([&] {
        SetLastError(22);
        other_set = true;
        SpinUntil(own_read);
        seen_by_other = LastError();
    });
    SetLastError(11);
    SpinUntil(other_set);
    const std::uint32_t seen = LastError();
    own_read = true;
    other.join();

    EXPECT_EQ(seen, 11u);
    EXPECT_EQ(seen_by_other, 22u);
}

TEST(ErrorText, EndsAsTheSystemEndsIt)
{
    const std::string text = platform::ToUtf8(ErrorText(not_found));
    ASSERT_GT(text.size(), 2u);
    EXPECT_EQ(text.substr(text.size() - 2) == "\r\n", on_windows) << text;
    EXPECT_NE(text[0], '\r');
}

TEST(ErrorText, DiffersByCode)
{
    EXPECT_NE(ErrorText(not_found), ErrorText(5));
}

TEST(ErrorText, OfAnUnknownCode)
{
    EXPECT_EQ(ErrorText(0x20001234), on_windows ? u"" : u"Unknown error 536875572");
}

} // namespace kessil::test
