#include "kessilctl/console/local_path.h"
#include "kessilctl/tree/item_path.h"

#include <gtest/gtest.h>

namespace kessil::kessilctl {
namespace {

TEST(LocalPath, ReturnsTheSameBytes)
{
    for (const std::string text : {"plain", "\xC3\xBCml\xC3\xA4ut", "\xFF\xFE not UTF-8", "\xED\xA0\x80 lone",
                                   "\xF0\x9F\x97\x84 beyond 16 bits"})
        EXPECT_EQ(ToText(ToPath(text)), text);
}

TEST(LocalPath, RefusesNamesThatLeadElsewhere)
{
    using std::string_literals::operator""s;
    for (const std::string &name : {""s, "."s, ".."s, "a/b"s, "/"s, "../x"s, "a\0b"s})
        EXPECT_FALSE(IsPlainName(name)) << name;
    for (const char *name : {"a", "...", "..a", " ", "-", "\xC3\xBC"})
        EXPECT_EQ(IsPlainName(name),
                  std::filesystem::path::preferred_separator == '/' || (name[0] != ' ' && std::string(name) != "..."))
            << name;
    for (const char *name : {"a\\b", "C:", "a:b", "nul", "COM1.txt", "end.", "end ", "what?", "new\nline"})
        EXPECT_EQ(IsPlainName(name), std::filesystem::path::preferred_separator == '/') << name;
}

TEST(LocalPath, Joins)
{
    EXPECT_EQ(Join("", "name"), "name");
    EXPECT_EQ(Join("a/b", "name"), "a/b/name");
}

TEST(LocalPath, ShowsControlCharacters)
{
    EXPECT_EQ(Printable("a\nb\x1B[2J\x7F \xC3\xBC\\"), "a\\x0Ab\\x1B[2J\\x7F \xC3\xBC\\");
}

} // namespace
} // namespace kessil::kessilctl
