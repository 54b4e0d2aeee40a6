#include "image_adapter_library.h"

TEST_F(ImageAdapter, RefusesNamesThatMeanSomethingElse)
{
    std::filesystem::create_directory(base / "outside");
    WriteBelow("machines/m/disk.img", std::string(512, 'a'));
    for (const char *path : {"hosts\\..\\..", "..\\outside", "C:", "C:\\", "hosts/C:", "hosts/..  ", "hosts/.. .",
                             "...", "hosts ", "hosts."})
        EXPECT_EQ(RefusalOf(path), "the path " + std::string(path) + " does not keep to the root");
    EXPECT_EQ(RefusalToOpen("disk.img:stream"), "the path machines/m/disk.img:stream does not keep to the root");
    EXPECT_EQ(RefusalToOpen("CON"), "there is no disk m/CON");
}

TEST_F(ImageAdapter, TakesNamesAsUtf8)
{
    const std::filesystem::path name = u"hosts/\u00E9\U0001F33E";
    std::filesystem::create_directories(root / name);
    EXPECT_EQ(Everything("hosts"), (std::vector<Item>{{0, 0, 0, "\xC3\xA9\xF0\x9F\x8C\xBE"}}));
    EXPECT_EQ(Everything("hosts/\xC3\xA9\xF0\x9F\x8C\xBE"), std::vector<Item>());
    EXPECT_NE(RefusalOf("hosts/\xFF"), "");
}
