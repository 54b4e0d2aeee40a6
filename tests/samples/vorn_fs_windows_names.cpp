#include "vorn_fs_library.h"

using Strings = std::vector<std::string>;

TEST_F(VornFs, ServesNamesOfAllAlphabets)
{
    const Strings names = {" leading space",
                           "'quotes'",
                           "-rf",
                           "\xC3\xBCml\xC3\xA4ut",
                           "\xE6\x97\xA5\xE6\x9C\xAC",
                           "\xF0\x9F\x97\x84 beyond 16 bits"};
    for (const std::string &name : names) {
        Restore("copy/" + name, name);
        EXPECT_EQ(ReadAll("copy/" + name), name);
    }
    EXPECT_EQ(Names("copy"), names);
    EXPECT_TRUE(std::filesystem::exists(root / L"copy" / L"\u00FCml\u00E4ut"));
}

TEST_F(VornFs, RefusesNamesThatMeanSomethingElse)
{
    const Strings names = {"file:stream", "C:",        "C:\\x",       "..\\outside\\file",
                           "a\\b",        "con",       "NUL",         "nul.txt",
                           "Com1",        "lpt9.x",    "COM\xC2\xB9", "aux ",
                           "conin$",      "trailing.", "trailing ",   "a<b",
                           "a>b",         "a\"b",      "a|b",         "what?",
                           "*",           "\x01",      "new\nline",   "\xFF",
                           "\xC0\xAF",    "\xED",      "\xE0\x80\xAF"};
    for (const std::string &name : names)
        for (const std::uint32_t mode : {1u, 2u, 4u}) {
            EXPECT_EQ(OpenCode(name, mode), 3u) << name;
            EXPECT_EQ(OpenCode("dir/" + name, mode), 3u) << name;
            EXPECT_EQ(OpenCode(name + "/file", mode), 3u) << name;
        }
    EXPECT_TRUE(std::filesystem::is_empty(outside));
    EXPECT_EQ(Names(""), Strings{});
}

TEST_F(VornFs, ServesPathsBeyond260Units)
{
    std::string path = std::string(100, 'd');
    for (int depth = 0; depth < 5; ++depth)
        path += "/" + std::string(100, 'd');
    Restore(path + "/file", "deep down");
    EXPECT_EQ(ReadAll(path + "/file"), "deep down");
    EXPECT_EQ(Names(path), Strings{"file"});
}
