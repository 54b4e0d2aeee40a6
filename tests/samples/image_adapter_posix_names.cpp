#include "image_adapter_library.h"

TEST_F(ImageAdapter, NeitherFollowsNorListsLinks)
{
    WriteBelow("machines/m/disk.img", std::string(512, 'a'));
    std::filesystem::create_directory_symlink("/etc", root / "hosts" / "link");
    std::filesystem::create_directory_symlink(root / "machines" / "m", root / "machines" / "n");
    std::filesystem::create_symlink("disk.img", root / "machines" / "m" / "link.img");
    EXPECT_EQ(Everything("hosts"), std::vector<Item>());
    EXPECT_EQ(RefusalOf("hosts/link"), "the path hosts/link leads through a link");
    EXPECT_EQ(RefusalOf("machines/n/x"), "the path machines/n/x leads through a link");
    EXPECT_EQ(Everything("machines"), (std::vector<Item>{{1, 512, 0, "m"}}));
    EXPECT_EQ(RefusalToOpen("link.img"), "the path machines/m/link.img leads through a link");
}

TEST_F(ImageAdapter, TakesNamesAsTheBytesThatTheyAre)
{
    WriteBelow("hosts/\xFF\\:*. /x", "1");
    EXPECT_EQ(Everything("hosts"), (std::vector<Item>{{1, 1, 0, "\xFF\\:*. "}}));
    EXPECT_EQ(Everything("hosts/\xFF\\:*. "), (std::vector<Item>{{1, 1, -1, "x"}}));
}
