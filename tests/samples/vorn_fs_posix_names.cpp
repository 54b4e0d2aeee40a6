#include "vorn_fs_library.h"

#include <filesystem>

using Strings = std::vector<std::string>;

TEST_F(VornFs, ServesEveryNameThatTheFileSystemHolds)
{
    const Strings names = {"\x01 control",
                           " leading space",
                           "\"quotes\" 'and' `more`",
                           "*?[wild]",
                           "-rf",
                           "a:stream",
                           "back\\slash",
                           "con",
                           "new\nline",
                           std::string(255, 'n'),
                           "tab\tand\rreturn",
                           "trailing. ",
                           "\xC3\xBCml\xC3\xA4ut",
                           "\xE6\x97\xA5\xE6\x9C\xAC",
                           "\xFF\xFE not UTF-8"};
    for (const std::string &name : names)
        WriteBelow(name, "of " + name);
    EXPECT_EQ(Names(""), names);
    for (const std::string &name : names) {
        EXPECT_EQ(ReadAll(name), "of " + name);
        Restore("copy/" + name, name);
        EXPECT_EQ(ReadBelow("copy/" + name), name);
    }
    EXPECT_EQ(Names("copy"), names);
}

TEST_F(VornFs, ServesPathsOfAnyDepth)
{
    std::string path = std::string(200, 'd');
    for (int depth = 0; depth < 30; ++depth)
        path += "/" + std::string(200, 'd');
    Restore(path + "/file", "deep down");
    EXPECT_EQ(ReadAll(path + "/file"), "deep down");
    EXPECT_EQ(Names(path), Strings{"file"});
}

TEST_F(VornFs, ListsLinksAndFollowsNone)
{
    WriteBelow("inside/file", "inside");
    std::filesystem::create_symlink(outside, root / "to_outside");
    std::filesystem::create_symlink("inside", root / "to_inside");
    std::filesystem::create_symlink("inside/file", root / "to_file");
    std::filesystem::create_symlink("nowhere", root / "to_nothing");
    const auto items = ListAll("");
    ASSERT_EQ(items.size(), 5u);
    for (std::size_t at = 1; at < items.size(); ++at) {
        EXPECT_EQ(items[at].kind, 3u) << items[at].name;
        EXPECT_EQ(items[at].bytes, 0u) << items[at].name;
    }
    for (const std::string link : {"to_outside", "to_inside", "to_file", "to_nothing"}) {
        EXPECT_EQ(OpenCode(link, 1), 4u) << link;
        EXPECT_EQ(OpenCode(link, 4), 4u) << link;
        EXPECT_EQ(OpenCode(link + "/file", 1), 4u) << link;
        EXPECT_EQ(OpenCode(link + "/new", 2), 4u) << link;
        EXPECT_EQ(OpenCode(link + "/new", 4), 4u) << link;
        std::uint64_t dir = 0;
        ASSERT_EQ(vorn.CreateDir(session, &dir), 0u);
        EXPECT_EQ(vorn.OpenDir(session, dir, link.c_str()), 4u) << link;
    }
    EXPECT_TRUE(std::filesystem::is_empty(outside));
}

TEST_F(VornFs, ReplacesALinkAndNotWhatItLeadsTo)
{
    std::filesystem::create_symlink(outside / "victim", root / "name");
    Restore("name", "content");
    EXPECT_FALSE(std::filesystem::is_symlink(root / "name"));
    EXPECT_EQ(ReadBelow("name"), "content");
    EXPECT_TRUE(std::filesystem::is_empty(outside));
}

TEST_F(VornFs, StaysInADirectoryThatWasReplacedByALink)
{
    WriteBelow("dir/file", "inside");
    std::uint32_t code = 0;
    std::uint32_t count = 0;
    const std::uint64_t file = Open("dir/new", 2, code);
    ASSERT_EQ(code, 0u);
    std::filesystem::rename(root / "dir", root / "moved");
    std::filesystem::create_symlink(outside, root / "dir");
    EXPECT_EQ(vorn.WriteFile(session, file, "x", 1, &count), 0u);
    EXPECT_EQ(vorn.RestoreFile(session, file), 0u);
    EXPECT_TRUE(std::filesystem::is_empty(outside));
    EXPECT_EQ(ReadBelow("moved/new"), "x");
}

TEST_F(VornFs, ListsDevicesAndOpensNone)
{
    ASSERT_EQ(std::system(("mkfifo '" + (root / "fifo").string() + "'").c_str()), 0);
    ASSERT_EQ(ListAll("").size(), 1u);
    EXPECT_EQ(ListAll("")[0].kind, 4u);
    EXPECT_EQ(OpenCode("fifo", 1), 6u);
    EXPECT_EQ(OpenCode("fifo", 2), 6u);
}

TEST_F(VornFs, CarriesTimesBeyond32Bits)
{
    // Seconds from 1970: -1 and 0x180000000, in 2174.
    const unsigned char times[2][16] = {{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xC9, 0x9A, 0x3B},
                                        {0, 0, 0, 0x80, 1, 0, 0, 0}};
    const std::int64_t seconds[2] = {-1, 0x180000000};
    for (int at = 0; at < 2; ++at) {
        std::uint32_t code = 0;
        std::uint32_t count = 0;
        const std::uint64_t file = Open("file" + std::to_string(at), 10, code);
        ASSERT_EQ(code, 0u);
        ASSERT_EQ(vorn.WriteFile(session, file, times[at], 16, &count), 0u);
        ASSERT_EQ(vorn.RestoreFile(session, file), 0u);
        vorn.CloseFile(session, file);
        EXPECT_EQ(ListAll("")[static_cast<std::size_t>(at)].seconds, seconds[at]);
    }
    EXPECT_EQ(ListAll("")[0].nanoseconds, 999999999u);
}
