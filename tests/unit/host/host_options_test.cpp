#include "host/host_options.h"

#include <gtest/gtest.h>

namespace kessil::test {
namespace {

class OptionsTest : public ::testing::Test
{
protected:
    // The words behind the program's name.
    bool Parse(std::vector<WideString> words)
    {
        words.insert(words.begin(), u"C:\\dir\\kessil.exe");
        return ParseOptions(words, options);
    }

    CHostOptions options;
};

TEST_F(OptionsTest, NoArgumentsNeedTheUsageText)
{
    EXPECT_FALSE(ParseOptions({}, options));
    EXPECT_FALSE(ParseOptions({u"kessil"}, options));
}

TEST_F(OptionsTest, OneArgumentTakesAllDefaults)
{
    ASSERT_TRUE(Parse({u"\\\\.\\pipe\\x"}));
    EXPECT_EQ(options.exe_path, u"C:\\dir\\kessil.exe");
    EXPECT_EQ(options.pipe_name, u"\\\\.\\pipe\\x");
    EXPECT_EQ(options.out_file, "kessil_log.out");
    EXPECT_EQ(options.log_level, 1);
}

TEST_F(OptionsTest, FirstWordIsThePipeWhateverItSays)
{
    ASSERT_TRUE(Parse({u"--log_level"}));
    EXPECT_EQ(options.pipe_name, u"--log_level");
    ASSERT_TRUE(Parse({u""}));
    EXPECT_EQ(options.pipe_name, u"");
}

TEST_F(OptionsTest, EarlierContentIsCleared)
{
    options = {u"old", u"old", "old", 2};
    EXPECT_FALSE(ParseOptions({u"kessil"}, options));
    EXPECT_EQ(options.exe_path, u"");
    EXPECT_EQ(options.pipe_name, u"");
    EXPECT_EQ(options.out_file, "");
    EXPECT_EQ(options.log_level, -1);
}

TEST_F(OptionsTest, DebugIsLevelTwoAndAnyOtherWordLevelOne)
{
    ASSERT_TRUE(Parse({u"p", u"--log_level", u"debug"}));
    EXPECT_EQ(options.log_level, 2);
    for (const char16_t *word : {u"error", u"ERROR", u"DEBUG", u"trace", u"debugg", u"2", u""}) {
        ASSERT_TRUE(Parse({u"p", u"--log_level", word}));
        EXPECT_EQ(options.log_level, 1);
    }
}

TEST_F(OptionsTest, OutFileIsTakenAsItStands)
{
    ASSERT_TRUE(Parse({u"p", u"--out_file", u"dir/log file.txt"}));
    EXPECT_EQ(options.out_file, "dir/log file.txt");
}

TEST_F(OptionsTest, OutFileIsCutToTheLowByteOfEachUnit)
{
    ASSERT_TRUE(Parse({u"p", u"--out_file", u"a\u0141\u00E4"}));
    EXPECT_EQ(options.out_file, "aA\xE4");
}

TEST_F(OptionsTest, EmptyOutFileIsTheDefault)
{
    ASSERT_TRUE(Parse({u"p", u"--out_file", u""}));
    EXPECT_EQ(options.out_file, "kessil_log.out");
}

TEST_F(OptionsTest, OptionsInAnyOrder)
{
    ASSERT_TRUE(Parse({u"p", u"--log_level", u"debug", u"--out_file", u"f"}));
    EXPECT_EQ(options.out_file, "f");
    EXPECT_EQ(options.log_level, 2);
    ASSERT_TRUE(Parse({u"p", u"--out_file", u"g", u"--log_level", u"debug"}));
    EXPECT_EQ(options.out_file, "g");
    EXPECT_EQ(options.log_level, 2);
}

TEST_F(OptionsTest, LastValueOfAnOptionCounts)
{
    ASSERT_TRUE(
        Parse({u"p", u"--out_file", u"f", u"--log_level", u"debug", u"--out_file", u"g", u"--log_level", u"x"}));
    EXPECT_EQ(options.out_file, "g");
    EXPECT_EQ(options.log_level, 1);
}

TEST_F(OptionsTest, ValueIsNeverTakenForAnOption)
{
    ASSERT_TRUE(Parse({u"p", u"--out_file", u"--log_level", u"debug"}));
    EXPECT_EQ(options.out_file, "--log_level");
    EXPECT_EQ(options.log_level, 1);
    EXPECT_FALSE(Parse({u"p", u"--out_file", u"--log_level", u"debug", u"x"}));
}

TEST_F(OptionsTest, LoneLastWordIsIgnored)
{
    for (const char16_t *word : {u"--log_level", u"--out_file", u"--verbose", u""}) {
        ASSERT_TRUE(Parse({u"p", word}));
        EXPECT_EQ(options.out_file, "kessil_log.out");
        EXPECT_EQ(options.log_level, 1);
    }
    ASSERT_TRUE(Parse({u"p", u"--log_level", u"debug", u"--verbose"}));
    EXPECT_EQ(options.log_level, 2);
}

TEST_F(OptionsTest, UnknownWordWithAValueNeedsTheUsageText)
{
    EXPECT_FALSE(Parse({u"p", u"--verbose", u"1"}));
    EXPECT_FALSE(Parse({u"p", u"--LOG_LEVEL", u"debug"}));
    EXPECT_FALSE(Parse({u"p", u"--log_level=debug", u"x"}));
    EXPECT_FALSE(Parse({u"p", u"--out", u"x"}));
    EXPECT_FALSE(Parse({u"p", u"--log_level", u"debug", u"--verbose", u"1"}));
}

TEST(UsageText, FiveLines)
{
    EXPECT_STREQ(usage_text, "Usage: kessil.exe <pipe_name> [<option>...>\n"
                             "  Where <option> can be\n"
                             "    --log_level <log level>\n"
                             "    --out_file <file name>\n"
                             "  And <log level> can be debug or error\n");
}

} // namespace
} // namespace kessil::test
