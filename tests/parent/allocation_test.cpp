#include <kessil/adapter.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<int> g_allocations{0};

} // namespace

// Every allocation of the program passes here.
void *operator new(std::size_t size)
{
    ++g_allocations;
    if (void *block = std::malloc(size))
        return block;
    throw std::bad_alloc();
}

void operator delete(void *block) noexcept
{
    std::free(block);
}

void operator delete(void *block, std::size_t) noexcept
{
    std::free(block);
}

namespace kessil::parent {
namespace {

TEST(AllocationTest, ASteadyCallAllocatesNothing)
{
    Options options;
    options.program = KESSIL;
    Helper helper(options);
    ASSERT_TRUE(helper.Start());
    const WideString library = std::filesystem::path(KESSIL_TEST_LIBRARIES "/plain" LIBRARY_SUFFIX).u16string();
    ASSERT_TRUE(helper.Load(library));
    std::uint32_t type = 0;
    int allocations = 0;
    for (int i = 0; i < 100; ++i) {
        const int before = g_allocations;
        helper.Begin();
        ASSERT_TRUE(helper.Call(library, "GetBackupType", "SIGNATURE_GetBackupType", {}));
        ASSERT_TRUE(helper.Results().U32(type).Complete());
        if (i > 0)
            allocations += g_allocations - before;
    }
    EXPECT_EQ(allocations, 0);
    EXPECT_GT(g_allocations, 0) << "nothing was counted at all";
    EXPECT_TRUE(helper.Stop());
}

TEST(AllocationTest, ASteadyAdaptersCallAllocatesNothing)
{
    Options options;
    options.program = KESSIL;
    Helper helper(options);
    Adapter adapter(helper);
    ASSERT_TRUE(helper.Start());
    ASSERT_TRUE(adapter.Load(
        std::filesystem::path(KESSIL_TEST_LIBRARIES "/recorder_tarnlink_windows_x64.dll" LIBRARY_SUFFIX).u16string()));
    // Three that the adapter can't say no to: without a block, with one, and by section.
    const std::vector<std::byte> acl(1000);
    std::uint32_t use = 0;
    int allocations = 0;
    for (int i = 0; i < 100; ++i) {
        const int before = g_allocations;
        const bool good = adapter.ExitVixDiskLib() && adapter.WriteFileACL(RestoreFile{0}, acl) &&
                          adapter.GetReadBufferUse(BackupFile{0}, use);
        if (i > 0)
            allocations += g_allocations - before;
        ASSERT_TRUE(good);
    }
    EXPECT_EQ(allocations, 0);
    EXPECT_TRUE(helper.Stop());
}

} // namespace
} // namespace kessil::parent
