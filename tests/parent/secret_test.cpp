#include "support/under_wine.h"

#include <kessil/adapter.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

constexpr char16_t secret[] = u"a secret of some length";
constexpr char narrow_secret[] = "another secret of some length";

// In front of each block stands its size.
constexpr std::size_t front = alignof(std::max_align_t);
static_assert(front >= sizeof(std::size_t));

std::atomic<int> g_found{0};

template <class Unit, std::size_t N>
bool Holds(const unsigned char *block, std::size_t size, const Unit (&text)[N])
{
    unsigned char needle[sizeof text - sizeof(Unit)];
    std::memcpy(needle, text, sizeof needle);
    return std::search(block, block + size, needle, needle + sizeof needle) != block + size;
}

bool HoldsSecret(const unsigned char *block, std::size_t size)
{
    return Holds(block, size, secret) || Holds(block, size, narrow_secret);
}

void Release(void *block) noexcept
{
    if (block == nullptr)
        return;
    auto *const whole = static_cast<unsigned char *>(block) - front;
    std::size_t size = 0;
    std::memcpy(&size, whole, sizeof size);
    g_found += HoldsSecret(whole + front, size) ? 1 : 0;
    std::free(whole);
}

} // namespace

// Every block of this program is searched for the secret when it is released.
void *operator new(std::size_t size)
{
    auto *const whole = static_cast<unsigned char *>(std::malloc(front + size));
    if (whole == nullptr)
        throw std::bad_alloc();
    std::memcpy(whole, &size, sizeof size);
    std::memset(whole + front, 0, size);
    return whole + front;
}

void operator delete(void *block) noexcept
{
    Release(block);
}

void operator delete(void *block, std::size_t) noexcept
{
    Release(block);
}

namespace kessil::parent {
namespace {

/// How many released blocks held the secret, once a helper to which it was sent in this way is gone.
template <class Send>
int FoundAfter(Send send)
{
    g_found = 0;
    {
        Options options;
        options.program = KESSIL;
        Helper helper(options);
        EXPECT_TRUE(helper.Start());
        send(helper);
    }
    return g_found;
}

TEST(SecretTest, APasswordLeavesNoCopyBehind)
{
    EXPECT_EQ(FoundAfter([](Helper &helper) {
                  // Long, so that the frame would have to grow behind the password.
                  const WideString system(300, u's');
                  // Wine can't impersonate a user.
                  EXPECT_EQ(helper.Logon(u"ada", u"", secret, system, false).outcome,
                            test::UnderWine() ? Outcome::Refused : Outcome::Answered);
              }),
              0);
}

TEST(SecretTest, APasswordThatIsNotSentLeavesNoCopyBehind)
{
    EXPECT_EQ(FoundAfter([](Helper &helper) {
                  const std::u16string_view with_zero(u"\0", 1);
                  EXPECT_EQ(helper.Logon(with_zero, u"", secret, u"", true).outcome, Outcome::NotSent);
              }),
              0);
}

/// The same for an adapter's calls, by way of a library that has no such functions.
template <class Send>
int FoundAfterCalls(Send send)
{
    return FoundAfter([&](Helper &helper) {
        Adapter adapter(helper);
        const auto plain = std::filesystem::path(KESSIL_TEST_LIBRARIES "/plain" LIBRARY_SUFFIX).u16string();
        EXPECT_TRUE(adapter.Load(plain));
        send(adapter);
    });
}

TEST(SecretTest, CredentialsLeaveNoCopyBehind)
{
    EXPECT_EQ(FoundAfterCalls([](Adapter &adapter) {
                  const std::string first(900, 'f');
                  EXPECT_EQ(adapter.CreateCredentials(first, narrow_secret).result.outcome, Outcome::Refused);
              }),
              0);
    EXPECT_EQ(FoundAfterCalls([](Adapter &adapter) {
                  const std::string too_long(1025, 's');
                  EXPECT_EQ(adapter.CreateCredentials(narrow_secret, too_long).result.outcome, Outcome::NotSent);
              }),
              0);
}

TEST(SecretTest, CopiesThatAreLeftAreFound)
{
    EXPECT_GT(FoundAfterCalls([](Adapter &adapter) { EXPECT_FALSE(adapter.AddFolder(narrow_secret)); }), 0);
    EXPECT_GT(FoundAfter([](Helper &helper) { EXPECT_FALSE(helper.Load(secret)); }), 0);
}

} // namespace
} // namespace kessil::parent
