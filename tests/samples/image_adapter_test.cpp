#include "image_adapter_library.h"

#include <limits>

namespace {

using Items = std::vector<Item>;
using Lines = std::vector<std::pair<int, std::string>>;

const std::string a(512, 'a');
const std::string b(512, 'b');
const std::string c(512, 'c');

} // namespace

TEST_F(ImageAdapter, ReturnsItsVersion)
{
    EXPECT_STREQ(adapter.GetLibraryVersion(), "image_adapter 1.0");
}

TEST_F(ImageAdapter, ListsTheDirectoriesOfEachKindInTheOrderOfTheirBytes)
{
    WriteBelow("hosts/a/file", "12");
    WriteBelow("hosts/a/other", "345");
    WriteBelow("hosts/a/inner/deeper", "not counted");
    WriteBelow("hosts/B/file", "");
    WriteBelow("hosts/a file", "not listed");
    WriteBelow("datacenters/d/x", "1");
    WriteBelow("datastores/s/x", "22");
    WriteBelow("folders/f/x", "333");
    WriteBelow("machines/m/x", "4444");
    const auto host_list = adapter.ListHosts("", credentials, &listing, &error);
    EXPECT_EQ(Take(host_list), (Items{{1, 0, 0, "B"}, {2, 5, 1, "a"}}));
    const auto below = adapter.ListHosts("a", credentials, &listing, &error);
    EXPECT_EQ(Take(below), (Items{{1, 11, 0, "inner"}}));
    const auto centers = adapter.ListDatacenters("", credentials, &listing, &error);
    EXPECT_EQ(Take(centers), (Items{{1, 1, 0, "d"}}));
    const auto stores = adapter.ListDataStores("", credentials, nullptr, &listing, &error, "ignored", true);
    EXPECT_EQ(Take(stores), (Items{{1, 2, 0, "s"}}));
    const auto folders = adapter.ListFolders("", credentials, &listing, &error);
    EXPECT_EQ(Take(folders), (Items{{1, 3, 0, "f"}}));
    const auto machines = adapter.ListMachines("", credentials, &listing, &error);
    EXPECT_EQ(Take(machines), (Items{{1, 4, 0, "m"}}));
}

TEST_F(ImageAdapter, ListsFilesToo)
{
    WriteBelow("machines/m/disk.img", a);
    WriteBelow("machines/m/dir/x", "1");
    EXPECT_EQ(Everything("machines/m"), (Items{{1, 1, 0, "dir"}, {1, 512, -1, "disk.img"}}));
    EXPECT_EQ(Everything("").size(), 5u);
    EXPECT_EQ(Everything("hosts"), Items());
}

TEST_F(ImageAdapter, ReturnsTheItemsOneByOne)
{
    WriteBelow("hosts/first/file", "123");
    std::filesystem::create_directory(root / "hosts" / "second");
    ASSERT_TRUE(adapter.ListHosts("", credentials, &listing, &error));
    for (const Item &expected : Items{{1, 3, 0, "first"}, {0, 0, 0, "second"}, {9, 9, 9, ""}}) {
        const char *name = "";
        std::int32_t number = 9;
        std::uint64_t value = 9;
        std::int32_t extra = 9;
        EXPECT_TRUE(adapter.NextItem(listing, &name, &number, &value, &extra, &error));
        EXPECT_EQ((Item{number, value, extra, name}), expected);
    }
    adapter.FreeListing(&listing);
    EXPECT_EQ(listing, nullptr);
    adapter.FreeListing(&listing);
    const char *name = "";
    std::int32_t number = 0;
    std::uint64_t value = 0;
    EXPECT_FALSE(adapter.NextItem(nullptr, &name, &number, &value, &number, &error));
    EXPECT_EQ(TakeError(), "there is no such listing");
}

TEST_F(ImageAdapter, KeepsToItsRoot)
{
    std::filesystem::create_directory(base / "outside");
    WriteBelow("machines/m/disk.img", a);
    for (const char *path :
         {"..", "../outside", "hosts/..", "hosts/../..", ".", "hosts/.", "/", "/hosts", "hosts/", "hosts//x"}) {
        EXPECT_EQ(RefusalOf(path), "the path " + std::string(path) + " does not keep to the root");
        EXPECT_FALSE(adapter.ListHosts(path, credentials, &listing, &error)) << path;
        EXPECT_NE(TakeError(), "");
    }
    EXPECT_EQ(RefusalOf("nowhere").find("cannot list nowhere: "), 0u);
    EXPECT_EQ(RefusalToOpen("../m/disk.img"), "the path machines/m/../m/disk.img does not keep to the root");
}

TEST_F(ImageAdapter, RefusesARootThatIsNoDirectory)
{
    const std::string nowhere = (base / "nowhere").string();
    void *other = nullptr;
    EXPECT_FALSE(adapter.CreateCredentials(nowhere.c_str(), "", &other, &error));
    EXPECT_EQ(TakeError(), "the root " + nowhere + " is not a directory");
    EXPECT_EQ(other, nullptr);
    EXPECT_FALSE(adapter.ListHosts("", nullptr, &listing, &error));
    EXPECT_EQ(TakeError(), "there are no credentials: call CreateCredentials first, with the directory to serve");
}

TEST_F(ImageAdapter, TakesNewCredentialsInPlaceOfOlderOnes)
{
    const std::string second = (base / "second").string();
    std::filesystem::create_directories(base / "second" / "only");
    EXPECT_TRUE(adapter.CreateCredentials(second.c_str(), "", &credentials, &error));
    EXPECT_EQ(Everything(""), (Items{{0, 0, 0, "only"}}));
    adapter.FreeCredentials(&credentials);
    EXPECT_EQ(credentials, nullptr);
    adapter.FreeCredentials(&credentials);
}

TEST_F(ImageAdapter, ReadsAndWritesSectors)
{
    WriteBelow("machines/m/disk.img", a + b + c);
    Open("disk.img", false);
    EXPECT_EQ(Read(0, 3), a + b + c);
    EXPECT_EQ(Read(1, 1), b);
    EXPECT_EQ(Read(3, 0), "");
    EXPECT_TRUE(adapter.WriteSectors(disk, 1, 2, (c + a).data(), &error));
    EXPECT_EQ(Read(0, 3), a + c + a);
    EXPECT_TRUE(adapter.CloseDisk(&disk, &error));
    EXPECT_EQ(disk, nullptr);
    EXPECT_EQ(ReadBelow("machines/m/disk.img"), a + c + a);
}

TEST_F(ImageAdapter, RefusesSectorsBeyondTheEndAndContinues)
{
    WriteBelow("machines/m/disk.img", a + b + c);
    Open("disk.img", false);
    constexpr auto most = std::numeric_limits<std::uint64_t>::max();
    std::string data(4 * 512, 'x');
    for (const auto &[start, count] :
         {std::pair<std::uint64_t, std::uint64_t>(0, 4), {2, 2}, {3, 1}, {4, 0}, {1, most}, {most, 1}, {most, most}}) {
        const std::string text = std::to_string(count) + " sectors from " + std::to_string(start) +
                                 " on reach beyond the end of m/disk.img, which has 3";
        EXPECT_FALSE(adapter.ReadSectors(disk, start, count, data.data(), &error));
        EXPECT_EQ(TakeError(), text);
        EXPECT_FALSE(adapter.WriteSectors(disk, start, count, data.data(), &error));
        EXPECT_EQ(TakeError(), text);
    }
    EXPECT_EQ(Read(0, 3), a + b + c);
}

TEST_F(ImageAdapter, FailsWhenTheImageBecameShorter)
{
    WriteBelow("machines/m/disk.img", a + b + c);
    Open("disk.img", true);
    WriteBelow("machines/m/disk.img", a);
    std::string data(1024, 'x');
    EXPECT_FALSE(adapter.ReadSectors(disk, 1, 2, data.data(), &error));
    EXPECT_EQ(TakeError(), "cannot read the disk m/disk.img: the file became shorter");
    EXPECT_EQ(Read(0, 1), a);
}

TEST_F(ImageAdapter, DoesNotWriteWhatIsToBeReadOnly)
{
    using std::filesystem::perms;
    WriteBelow("machines/m/disk.img", a);
    const std::string refusal = "the disk m/disk.img is open for reading only";
    Open("disk.img", true);
    EXPECT_FALSE(adapter.WriteSectors(disk, 0, 1, b.data(), &error));
    EXPECT_EQ(TakeError(), refusal);
    ASSERT_TRUE(adapter.CloseDisk(&disk, &error));

    const auto writable = perms::owner_write | perms::group_write | perms::others_write;
    std::filesystem::permissions(root / "machines" / "m" / "disk.img", writable, std::filesystem::perm_options::remove);
    Open("disk.img", false);
    EXPECT_FALSE(adapter.WriteSectors(disk, 0, 1, b.data(), &error));
    EXPECT_EQ(TakeError(), refusal);
    EXPECT_EQ(Read(0, 1), a);
    std::filesystem::permissions(root / "machines" / "m" / "disk.img", writable, std::filesystem::perm_options::add);
}

TEST_F(ImageAdapter, OpensOnlyWhatIsADisk)
{
    WriteBelow("machines/m/odd.img", a + "x");
    WriteBelow("machines/m/dir/x", "");
    WriteBelow("machines/m/disk.img", a);
    EXPECT_EQ(RefusalToOpen("odd.img"), "the size of the disk m/odd.img, 513 bytes, is not a multiple of 512");
    EXPECT_EQ(RefusalToOpen("dir"), "there is no disk m/dir");
    EXPECT_EQ(RefusalToOpen("missing"), "there is no disk m/missing");
    EXPECT_EQ(RefusalToOpen(""), "there is no disk m");
    Open("disk.img", true);
    EXPECT_EQ(RefusalToOpen("disk.img"), "a disk is open already: m/disk.img");
    EXPECT_EQ(Read(0, 1), a);
    ASSERT_TRUE(adapter.CloseDisk(&disk, &error));
    adapter.ExitVixDiskLib();
    EXPECT_EQ(RefusalToOpen("disk.img"), "OpenDisk needs InitVixDiskLib first");
}

TEST_F(ImageAdapter, AcceptsThatNothingIsOpen)
{
    std::string data(512, 'x');
    EXPECT_FALSE(adapter.ReadSectors(nullptr, 0, 1, data.data(), &error));
    EXPECT_EQ(TakeError(), "no disk is open");
    EXPECT_FALSE(adapter.WriteSectors(nullptr, 0, 1, data.data(), &error));
    EXPECT_EQ(TakeError(), "no disk is open");
    EXPECT_FALSE(adapter.CloseDisk(&disk, &error));
    EXPECT_EQ(TakeError(), "no disk is open");
    EXPECT_EQ(TakeError(), "");
}

TEST_F(ImageAdapter, LogsWhatItOpensAndEveryFailure)
{
    WriteBelow("machines/m/disk.img", a);
    Open("disk.img", true);
    EXPECT_EQ(RefusalOf(".."), "the path .. does not keep to the root");
    ASSERT_TRUE(adapter.CloseDisk(&disk, &error));
    EXPECT_EQ(lines, (Lines{{2, "opened m/disk.img, 1 sectors"},
                            {1, "the path .. does not keep to the root"},
                            {2, "closed m/disk.img"}}));
}
