#include "parent/scripted.h"
#include "support/set_variable.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>

namespace kessil::parent {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

/// The parent library with the helper that it is made for.
class KessilTest : public testing::Test
{
protected:
    KessilTest()
    {
        options.program = KESSIL;
        options.log_file = directory.Path() / "log";
        options.request_limit = {0ms, 30s};
    }

    /// Starts the helper and loads one of the libraries made for tests.
    void Host(const std::string &name)
    {
        helper = std::make_unique<Helper>(options);
        const Result started = helper->Start();
        ASSERT_TRUE(started) << started.message;
        library = std::filesystem::path(KESSIL_TEST_LIBRARIES "/" + name + LIBRARY_SUFFIX).u16string();
        const Result loaded = helper->Load(library);
        ASSERT_TRUE(loaded) << loaded.message;
    }

    Result Call(const std::string &function, const TimeLimit &limit = {0ms, 30s})
    {
        return helper->Call(library, function, "SIGNATURE_" + function, limit);
    }

    void ExpectGoodEnd()
    {
        const Result result = helper->Stop();
        EXPECT_TRUE(result) << result.message;
        EXPECT_EQ(result.exit_code, 0U);
    }

    TemporaryDirectory directory;
    Options options;
    std::unique_ptr<Helper> helper;
    WideString library;
};

TEST_F(KessilTest, AnswersTheSmallestCall)
{
    Host("plain");
    std::uint32_t type = 0;
    for (int i = 0; i < 100; ++i) {
        helper->Begin();
        const Result result = Call("GetBackupType");
        ASSERT_TRUE(result) << result.message;
        ASSERT_TRUE(helper->Results().U32(type).Complete());
        EXPECT_EQ(type, 7U);
    }
    EXPECT_EQ(helper->Figures().calls, 100U);
    EXPECT_EQ(helper->Figures().result_bytes, 400U);
    ExpectGoodEnd();
}

TEST_F(KessilTest, AnEmptyNameIsTheFirstLibrary)
{
    Host("plain");
    library.clear();
    helper->Begin();
    EXPECT_TRUE(Call("GetBackupType"));
    ExpectGoodEnd();
}

TEST_F(KessilTest, RefusesWhatItDoesNotHave)
{
    Host("plain");
    const Result missing = helper->Load(u"no_such_library");
    EXPECT_EQ(missing.outcome, Outcome::Refused);
    EXPECT_EQ(missing.return_code, 0);
    EXPECT_NE(missing.text, u"");

    helper->Begin();
    Result result = Call("NoSuchFunction");
    EXPECT_EQ(result.outcome, Outcome::Refused);
    EXPECT_EQ(result.return_code, 0);
    EXPECT_EQ(result.text, u"Failed to get function address...");

    helper->Begin();
    result = helper->Call(library, "GetBackupType", "SIGNATURE_NoSuch", {});
    EXPECT_EQ(result.outcome, Outcome::Refused);
    EXPECT_EQ(result.return_code, -1);
    EXPECT_EQ(result.system_error, -1);
    EXPECT_EQ(result.text, u"Invalid signature");

    helper->Begin();
    result = helper->Call(u"not loaded", "GetBackupType", "SIGNATURE_GetBackupType", {});
    EXPECT_EQ(result.outcome, Outcome::Refused);
    EXPECT_EQ(result.text, u"Failed to find library...");
    ExpectGoodEnd();
}

TEST_F(KessilTest, ReadsABlockInASectionThatGrowsUnderIt)
{
    directory.WriteFile("calls", "VornReadFile result=5 out=16 count_up=16\n");
    test::SetVariable("KESSIL_SCRIPT", (directory.Path() / "calls").string());
    // Exactly what the arguments take: the results need more.
    options.section_size = 44;
    Host("vorn_recorder");
    helper->Begin().U64(1).U64(2).Room(16).U32(16);
    const Result result = Call("VornReadFile");
    ASSERT_TRUE(result) << result.message;
    EXPECT_EQ(helper->Figures().sections_grown_by_helper, 1U);
    EXPECT_EQ(helper->Figures().section_size, 56U);

    std::uint64_t session = 0;
    std::uint64_t file = 0;
    std::span<const std::byte> block;
    std::uint32_t size = 0;
    std::uint32_t count = 0;
    std::uint32_t code = 0;
    ASSERT_TRUE(helper->Results().U64(session).U64(file).Buffer(block).U32(size).U32(count).U32(code).Complete());
    EXPECT_EQ(session, 1U);
    EXPECT_EQ(file, 2U);
    EXPECT_EQ(size, 16U);
    EXPECT_EQ(count, 16U);
    EXPECT_EQ(code, 5U);
    ASSERT_EQ(block.size(), 16U);
    for (std::size_t i = 0; i < block.size(); ++i)
        EXPECT_EQ(block[i], static_cast<std::byte>(i));
    ExpectGoodEnd();
}

TEST_F(KessilTest, WritesABlock)
{
    directory.WriteFile("calls", "VornWriteFile result=0 out=3 peek=3\n");
    test::SetVariable("KESSIL_SCRIPT", (directory.Path() / "calls").string());
    test::SetVariable("KESSIL_RECORD", (directory.Path() / "record").string());
    Host("vorn_recorder");
    InList &in = helper->Begin().U64(0xA).U64(0xB);
    const std::span<std::byte> block = in.Block(3);
    ASSERT_EQ(block.size(), 3U);
    std::memcpy(block.data(), "xyz", 3);
    in.U32(3);
    const Result result = Call("VornWriteFile");
    ASSERT_TRUE(result) << result.message;
    std::uint32_t count = 0;
    std::uint32_t code = 1;
    EXPECT_TRUE(helper->Results().U32(count).U32(code).Complete());
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(code, 0U);
    ExpectGoodEnd();
    EXPECT_THAT(directory.ReadFile("record"), HasSubstr("VornWriteFile session=0xa file=0xb size=3 data=78797a"));
}

TEST_F(KessilTest, AHungLibraryIsKilled)
{
    int warnings = 0;
    options.on_slow = [&](const SlowRequest &) { ++warnings; };
    Host("hangs");
    helper->Begin();
    const Result result = Call("GetBackupType", {50ms, 300ms});
    EXPECT_EQ(result.outcome, Outcome::Hung);
    EXPECT_EQ(warnings, 1);
    EXPECT_FALSE(helper->Running());
}

TEST_F(KessilTest, TwentyHelpersAtOnce)
{
    std::vector<std::unique_ptr<Helper>> helpers;
    Host("plain");
    for (int i = 0; i < 20; ++i) {
        helpers.push_back(std::make_unique<Helper>(options));
        ASSERT_TRUE(helpers.back()->Start());
        ASSERT_TRUE(helpers.back()->Load(library));
    }
    for (const auto &each : helpers) {
        each->Begin();
        EXPECT_TRUE(each->Call(library, "GetBackupType", "SIGNATURE_GetBackupType", {}));
    }
    for (const auto &each : helpers)
        EXPECT_TRUE(each->Stop());
    ExpectGoodEnd();
}

/// Libraries that end the helper, each by its own name.
class FatalLibraryTest : public KessilTest, public testing::WithParamInterface<const char *>
{
protected:
    Result CallIt()
    {
        Host(GetParam());
        helper->Begin();
        return Call("GetBackupType");
    }

    void ExpectANewHelperToServe()
    {
        Host("plain");
        helper->Begin();
        EXPECT_TRUE(Call("GetBackupType"));
        ExpectGoodEnd();
    }
};

using FaultTest = FatalLibraryTest;

TEST_P(FaultTest, IsADeathWithExitCodeZero)
{
    const Result result = CallIt();
    EXPECT_EQ(result.outcome, Outcome::Died) << result.message;
    EXPECT_EQ(result.exit_code, 0U) << result.message;
    EXPECT_THAT(result.message, HasSubstr("the helper died in GetBackupType (SIGNATURE_GetBackupType) of library "));
    EXPECT_THAT(result.message, HasSubstr(GetParam()));
    EXPECT_THAT(result.message, HasSubstr(" after the request, exit code 0"));
    ExpectANewHelperToServe();
}

INSTANTIATE_TEST_SUITE_P(Libraries, FaultTest,
                         testing::Values("throws_own", "throws_own_static", "throws_bad_alloc", "throws_foreign",
                                         "null_write", "null_call", "divides_by_zero", "illegal_instruction",
                                         "overflows_stack"),
                         [](const auto &tested) { return std::string(tested.param); });

// The thread sanitizer holds back the alarm that ends a helper which waits for a lost lock.
#ifndef THREAD_SANITIZER
INSTANTIATE_TEST_SUITE_P(LockedLibraries, FaultTest, testing::Values("faults_holding_lock"),
                         [](const auto &tested) { return std::string(tested.param); });
#endif

using SuddenEndTest = FatalLibraryTest;

TEST_P(SuddenEndTest, IsADeathWithItsOwnExitCode)
{
    const Result result = CallIt();
    EXPECT_EQ(result.outcome, Outcome::Died) << result.message;
    ASSERT_TRUE(result.exit_code);
    EXPECT_NE(*result.exit_code, 0U) << result.message;
    EXPECT_THAT(result.message, HasSubstr(", exit code " + std::to_string(*result.exit_code)));
    ExpectANewHelperToServe();
}

INSTANTIATE_TEST_SUITE_P(Libraries, SuddenEndTest, testing::Values("aborts", "exits", "faults_on_thread"),
                         [](const auto &tested) { return std::string(tested.param); });

} // namespace
} // namespace kessil::parent
