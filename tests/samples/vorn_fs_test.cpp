#include "vorn_fs_library.h"

#include "support/set_variable.h"

#include <array>
#include <set>
#include <thread>

namespace {

using Strings = std::vector<std::string>;

/// 2001-02-03 04:05:06 UTC and 700 nanoseconds.
const std::array<unsigned char, 16> time_block = {0x72, 0x83, 0x7B, 0x3A, 0, 0, 0, 0, 0xBC, 0x02, 0, 0, 0, 0, 0, 0};
constexpr std::int64_t time_seconds = 981173106;
constexpr std::uint32_t time_nanoseconds = 700;

} // namespace

TEST_F(VornFs, ReturnsItsVersionAndType)
{
    EXPECT_EQ(vorn.GetLibApiVersion(), 2u);
    EXPECT_EQ(vorn.GetBackupType(), 1u);
}

TEST_F(VornFs, ListsFilesAndDirectoriesInTheOrderOfTheirBytes)
{
    WriteBelow("b.txt", "12345");
    WriteBelow("B.txt2", "");
    WriteBelow("a/inner", "x");
    std::filesystem::create_directory(root / "empty");
    const auto items = ListAll("");
    ASSERT_EQ(items.size(), 4u);
    EXPECT_EQ(Names(""), (Strings{"B.txt2", "a", "b.txt", "empty"}));
    EXPECT_EQ(items[0].kind, 1u);
    EXPECT_EQ(items[0].bytes, 0u);
    EXPECT_EQ(items[1].kind, 2u);
    EXPECT_EQ(items[1].bytes, 0u);
    EXPECT_EQ(items[2].kind, 1u);
    EXPECT_EQ(items[2].bytes, 5u);
    EXPECT_EQ(Names("a"), Strings{"inner"});
    EXPECT_EQ(Names("empty"), Strings{});
}

TEST_F(VornFs, ReadsAFileInBlocksOfAnySize)
{
    std::string content;
    for (int at = 0; at < 300000; ++at)
        content += static_cast<char>(at * 7 + at / 256);
    WriteBelow("deep/er/file", content);
    EXPECT_EQ(ReadAll("deep/er/file", 1), content);
    EXPECT_EQ(ReadAll("deep/er/file", 65536), content);
    EXPECT_EQ(ReadAll("deep/er/file", 300000), content);
    EXPECT_EQ(ReadAll("deep/er/file", 300001), content);
    WriteBelow("nothing", "");
    EXPECT_EQ(ReadAll("nothing"), "");
}

TEST_F(VornFs, WritesUnderATemporaryNameUntilItIsCommitted)
{
    WriteBelow("file", "old");
    std::uint32_t code = 0;
    std::uint32_t count = 0;
    const std::uint64_t file = Open("file", 2, code);
    ASSERT_EQ(code, 0u);
    EXPECT_EQ(vorn.WriteFile(session, file, "new content", 11, &count), 0u);
    EXPECT_EQ(count, 11u);
    EXPECT_EQ(ReadBelow("file"), "old");
    EXPECT_EQ(Names("").size(), 2u);
    EXPECT_EQ(vorn.RestoreFile(session, file), 0u);
    EXPECT_EQ(ReadBelow("file"), "new content");
    EXPECT_EQ(Names(""), Strings{"file"});
    EXPECT_EQ(vorn.WriteFile(session, file, "more", 4, &count), 8u);
    EXPECT_EQ(vorn.RestoreFile(session, file), 8u);
    EXPECT_EQ(vorn.CloseFile(session, file), 0u);
    EXPECT_EQ(ReadBelow("file"), "new content");
}

TEST_F(VornFs, DropsWhatWasNotCommitted)
{
    WriteBelow("file", "old");
    std::uint32_t code = 0;
    std::uint32_t count = 0;
    const std::uint64_t closed = Open("file", 2, code);
    vorn.WriteFile(session, closed, "half", 4, &count);
    EXPECT_EQ(vorn.CloseFile(session, closed), 0u);
    EXPECT_EQ(Names(""), Strings{"file"});
    EXPECT_EQ(ReadBelow("file"), "old");

    const std::uint64_t left_open = Open("other", 2, code);
    vorn.WriteFile(session, left_open, "half", 4, &count);
    EXPECT_EQ(vorn.CloseSession(session), 0u);
    session = OpenSession();
    EXPECT_EQ(Names(""), Strings{"file"});
}

TEST_F(VornFs, MakesTheDirectoriesOnTheWay)
{
    Restore("x/y/z", "deep");
    EXPECT_EQ(ReadBelow("x/y/z"), "deep");
    EXPECT_EQ(OpenCode("x/empty/below", 4), 0u);
    EXPECT_TRUE(std::filesystem::is_directory(root / "x" / "empty" / "below"));
    EXPECT_EQ(OpenCode("x/empty/below", 4), 0u);
}

TEST_F(VornFs, CarriesTheTimeOfAFileAndOfADirectory)
{
    for (const std::uint32_t mode : {10u, 12u}) {
        const std::string name = mode == 10 ? "file" : "directory";
        std::uint32_t code = 0;
        std::uint32_t count = 0;
        const std::uint64_t object = Open(name, mode, code);
        ASSERT_EQ(code, 0u);
        EXPECT_EQ(vorn.WriteFile(session, object, time_block.data(), 16, &count), 0u);
        EXPECT_EQ(count, 16u);
        if (mode == 10) {
            EXPECT_EQ(vorn.WriteFile(session, object, "abc", 3, &count), 0u);
        }
        EXPECT_EQ(vorn.RestoreFile(session, object), 0u);
        EXPECT_EQ(vorn.CloseFile(session, object), 0u);
    }
    const auto items = ListAll("");
    ASSERT_EQ(items.size(), 2u);
    for (const ListedItem &item : items) {
        EXPECT_EQ(item.seconds, time_seconds);
        EXPECT_EQ(item.nanoseconds, time_nanoseconds);
    }
    EXPECT_EQ(ReadBelow("file"), "abc");
}

TEST_F(VornFs, RequiresTheTimeFirstAndWhole)
{
    std::uint32_t code = 0;
    std::uint32_t count = 77;
    const std::uint64_t file = Open("file", 10, code);
    EXPECT_EQ(vorn.RestoreFile(session, file), 9u);
    EXPECT_EQ(vorn.WriteFile(session, file, time_block.data(), 15, &count), 9u);
    EXPECT_EQ(count, 0u);
    auto wrong = time_block;
    wrong[11] = 0x3C; // more than 999999999 nanoseconds
    EXPECT_EQ(vorn.WriteFile(session, file, wrong.data(), 16, &count), 9u);
    EXPECT_EQ(vorn.WriteFile(session, file, time_block.data(), 16, &count), 0u);
    EXPECT_EQ(vorn.RestoreFile(session, file), 0u);
    vorn.CloseFile(session, file);
    EXPECT_EQ(ListAll("")[0].seconds, time_seconds);
}

TEST_F(VornFs, NeverLeavesTheDirectoryByAPath)
{
    WriteBelow("dir/file", "inside");
    std::filesystem::create_directory(root / "plain");
    const std::string absolute = (outside / "file").string();
    const Strings paths = {"..",     "../outside/file", "dir/../file", "dir/..",     "/",
                           absolute, "/etc/passwd",     "./dir/file",  "dir/./file", ".",
                           "dir//",  "dir//file",       "dir/",        "/dir/file",  "dir/file/"};
    for (const std::string &path : paths) {
        std::uint64_t dir = 0;
        ASSERT_EQ(vorn.CreateDir(session, &dir), 0u);
        EXPECT_EQ(vorn.OpenDir(session, dir, path.c_str()), 3u) << path;
        vorn.CloseDir(session, dir);
        for (const std::uint32_t mode : {1u, 2u, 4u, 10u, 12u})
            EXPECT_EQ(OpenCode(path, mode), 3u) << path;
    }
    EXPECT_TRUE(std::filesystem::is_empty(outside));
    EXPECT_EQ(Names(""), (Strings{"dir", "plain"}));
}

TEST_F(VornFs, ReportsWhatIsInTheWay)
{
    WriteBelow("dir/file", "inside");
    EXPECT_EQ(OpenCode("dir/file/below", 1), 5u);
    EXPECT_EQ(OpenCode("dir/file/below", 2), 5u);
    EXPECT_EQ(OpenCode("dir", 1), 6u);
    EXPECT_EQ(OpenCode("dir", 2), 6u);
    EXPECT_EQ(OpenCode("", 1), 6u);
    EXPECT_EQ(OpenCode("", 2), 6u);
    EXPECT_EQ(OpenCode("missing", 1), 0x10002u);
    std::uint64_t dir = 0;
    ASSERT_EQ(vorn.CreateDir(session, &dir), 0u);
    EXPECT_EQ(vorn.OpenDir(session, dir, "dir/file"), 5u);
    EXPECT_EQ(vorn.OpenDir(session, dir, "missing"), 0x10002u);
    EXPECT_EQ(vorn.OpenDir(session, dir, "dir"), 0u);
    EXPECT_EQ(vorn.OpenDir(session, dir, "dir"), 8u);
}

TEST_F(VornFs, RefusesOtherModes)
{
    WriteBelow("file", "x");
    for (const std::uint32_t mode : {0u, 3u, 5u, 6u, 7u, 8u, 9u, 14u, 16u, 18u, 0x80000001u})
        EXPECT_EQ(OpenCode("file", mode), 7u) << mode;
}

TEST_F(VornFs, RefusesCallsInAnotherState)
{
    WriteBelow("file", "x");
    char byte = 0;
    std::uint32_t code = 0;
    std::uint32_t count = 77;
    std::array<unsigned char, 800> item;

    std::uint64_t dir = 0;
    ASSERT_EQ(vorn.CreateDir(session, &dir), 0u);
    EXPECT_EQ(vorn.GetNextDirItem(session, dir, item.data()), 8u);

    std::uint64_t file = 0;
    ASSERT_EQ(vorn.CreateFile(session, &file), 0u);
    EXPECT_EQ(vorn.ReadFile(session, file, &byte, 1, &count), 8u);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(vorn.WriteFile(session, file, &byte, 1, &count), 8u);
    EXPECT_EQ(vorn.RestoreFile(session, file), 8u);

    const std::uint64_t reading = Open("file", 1, code);
    EXPECT_EQ(vorn.WriteFile(session, reading, &byte, 1, &count), 8u);
    EXPECT_EQ(vorn.RestoreFile(session, reading), 8u);
    EXPECT_EQ(vorn.OpenFile(session, reading, "file", 1), 8u);

    const std::uint64_t writing = Open("other", 2, code);
    EXPECT_EQ(vorn.ReadFile(session, writing, &byte, 1, &count), 8u);
}

TEST_F(VornFs, RecognisesHandlesThatAreNotOpen)
{
    char byte = 0;
    std::uint32_t count = 0;
    std::uint64_t handle = 0;
    std::uint64_t dir = 0;
    std::uint64_t file = 0;
    const std::uint64_t other = OpenSession();
    ASSERT_EQ(vorn.CreateDir(session, &dir), 0u);
    ASSERT_EQ(vorn.CreateFile(session, &file), 0u);
    for (const std::uint64_t made_up : {std::uint64_t{0}, file, other + 1000, ~std::uint64_t{0}}) {
        EXPECT_EQ(vorn.CloseSession(made_up), 2u);
        EXPECT_EQ(vorn.CreateDir(made_up, &handle), 2u);
        EXPECT_EQ(vorn.CreateFile(made_up, &handle), 2u);
    }
    EXPECT_EQ(vorn.OpenDir(session, file, ""), 2u);
    EXPECT_EQ(vorn.OpenDir(other, dir, ""), 2u);
    EXPECT_EQ(vorn.OpenFile(session, dir, "x", 2), 2u);
    EXPECT_EQ(vorn.OpenFile(other, file, "x", 2), 2u);
    EXPECT_EQ(vorn.ReadFile(session, dir, &byte, 1, &count), 2u);
    EXPECT_EQ(vorn.WriteFile(session, dir, &byte, 1, &count), 2u);
    EXPECT_EQ(vorn.RestoreFile(session, dir), 2u);
    EXPECT_EQ(vorn.GetNextDirItem(session, file, &byte), 2u);
    EXPECT_EQ(vorn.CloseDir(session, file), 2u);
    EXPECT_EQ(vorn.CloseFile(other, file), 2u);
    EXPECT_EQ(vorn.CloseFile(session, file), 0u);
    EXPECT_EQ(vorn.CloseFile(session, file), 2u);
    EXPECT_EQ(vorn.CloseSession(other), 0u);
    EXPECT_EQ(vorn.CloseSession(other), 2u);
}

TEST_F(VornFs, ServesNothingWithoutARoot)
{
    WriteBelow("file", "x");
    for (const std::string &place : {std::string(), (root / "missing").string(), (root / "file").string()}) {
        kessil::test::SetVariable("VORN_FS_ROOT", place);
        const std::uint64_t rootless = OpenSession();
        std::uint64_t handle = 0;
        EXPECT_EQ(vorn.CreateDir(rootless, &handle), 10u) << place;
        EXPECT_EQ(vorn.CreateFile(rootless, &handle), 10u) << place;
        EXPECT_EQ(vorn.CloseSession(rootless), 0u);
    }
}

TEST_F(VornFs, HasATextForEveryCode)
{
    std::set<std::string> texts;
    for (std::uint32_t code = 0; code <= 11; ++code)
        texts.insert(vorn.GetErrorText(session, 0, code));
    EXPECT_EQ(texts.size(), 12u);
    for (const std::uint32_t code : {12u, 0xFFFFu, 0x10000u, 0x10002u, 0x1FFFFu, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        const char *text = vorn.GetErrorText(0, 0, code);
        ASSERT_NE(text, nullptr);
        EXPECT_STRNE(text, "") << code;
    }
    EXPECT_STREQ(vorn.GetErrorText(session, 0, 4), "the path leads to or through a link, and links are not followed");
}

TEST_F(VornFs, KeepsATextForEachThread)
{
    const char *const mine = vorn.GetErrorText(session, 0, 6);
    std::thread([this] { EXPECT_STREQ(vorn.GetErrorText(session, 0, 7), "the mode is not supported"); }).join();
    EXPECT_STREQ(mine, "not a regular file");
}

TEST_F(VornFs, ServesManyThreadsAtOnce)
{
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int number = 0; number < 4; ++number)
        threads.emplace_back([this, number] {
            for (int round = 0; round < 20; ++round) {
                const std::string name = std::to_string(number) + "/" + std::to_string(round);
                Restore(name, name);
                EXPECT_EQ(ReadAll(name), name);
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(Names(""), (Strings{"0", "1", "2", "3"}));
    EXPECT_EQ(Names("3").size(), 20u);
}
