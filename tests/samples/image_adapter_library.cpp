#include "image_adapter_library.h"

#include "platform/module.h"
#include "platform/text.h"

#include <fstream>
#include <iterator>
#include <random>

namespace {

std::filesystem::path FreshDirectory()
{
    std::random_device random;
    const auto name = "image_adapter_test_" + std::to_string(random()) + std::to_string(random());
    std::filesystem::path path = std::filesystem::temp_directory_path() / name;
    std::filesystem::create_directory(path);
    return path;
}

template <typename Function>
void Find(void *library, const char *name, Function &function)
{
    function = reinterpret_cast<Function>(kessil::platform::FindExport(library, name));
    ASSERT_NE(function, nullptr) << name;
}

} // namespace

std::vector<std::pair<int, std::string>> ImageAdapter::lines;

ImageAdapter::ImageAdapter()
    : adapter(), base(FreshDirectory()), root(base / "root"),
      m_library(kessil::platform::LoadModule(kessil::platform::FromUtf8(KESSIL_TEST_IMAGE_ADAPTER)))
{
#define FIND(name) Find(m_library, #name, adapter.name)
    FIND(GetErrorMessage);
    FIND(FreeErrorInfo);
    FIND(SetLoggingCallBack);
    FIND(GetLibraryVersion);
    FIND(CreateCredentials);
    FIND(FreeCredentials);
    FIND(OpenListing);
    FIND(NextItem);
    FIND(FreeListing);
    FIND(ListDataStores);
    FIND(ListFolders);
    FIND(ListHosts);
    FIND(ListDatacenters);
    FIND(ListMachines);
    FIND(InitVixDiskLib);
    FIND(ExitVixDiskLib);
    FIND(OpenDisk);
    FIND(CloseDisk);
    FIND(ReadSectors);
    FIND(WriteSectors);
#undef FIND
    for (const char *kind : {"hosts", "datacenters", "datastores", "folders", "machines"})
        std::filesystem::create_directories(root / kind);
    EXPECT_TRUE(adapter.CreateCredentials(root.string().c_str(), "", &credentials, &error)) << TakeError();
    EXPECT_TRUE(adapter.InitVixDiskLib("", "", &error));
    lines.clear();
    adapter.SetLoggingCallBack([](const char *text, unsigned char level) { lines.emplace_back(level, text); });
}

ImageAdapter::~ImageAdapter()
{
    if (disk) {
        EXPECT_TRUE(adapter.CloseDisk(&disk, &error)) << TakeError();
    }
    adapter.ExitVixDiskLib();
    adapter.FreeCredentials(&credentials);
    kessil::platform::FreeModule(m_library);
    std::error_code ignored;
    std::filesystem::remove_all(base, ignored);
}

void ImageAdapter::WriteBelow(const std::filesystem::path &path, const std::string &content)
{
    std::filesystem::create_directories((root / path).parent_path());
    std::ofstream file(root / path, std::ios::binary);
    file << content;
    ASSERT_TRUE(file.flush()) << path;
}

std::string ImageAdapter::ReadBelow(const std::filesystem::path &path)
{
    std::ifstream file(root / path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string ImageAdapter::TakeError()
{
    std::string text = adapter.GetErrorMessage(error);
    adapter.FreeErrorInfo(&error);
    EXPECT_EQ(error, nullptr);
    return text;
}

std::vector<Item> ImageAdapter::Take(bool yes)
{
    EXPECT_TRUE(yes) << TakeError();
    EXPECT_NE(listing, nullptr);
    std::vector<Item> items;
    if (listing) {
        for (const tag_item_data &item : *listing)
            items.emplace_back(item.item_number, item.item_value, item.item_extra, item.item_name);
    }
    delete std::exchange(listing, nullptr);
    return items;
}

std::vector<Item> ImageAdapter::Everything(const std::string &path)
{
    return Take(adapter.OpenListing(path.c_str(), credentials, nullptr, &listing, &error, 0));
}

std::string ImageAdapter::RefusalOf(const std::string &path)
{
    if (adapter.OpenListing(path.c_str(), credentials, nullptr, &listing, &error, 0)) {
        delete std::exchange(listing, nullptr);
        return {};
    }
    EXPECT_EQ(listing, nullptr);
    return TakeError();
}

void ImageAdapter::Open(const std::string &name, bool read_only)
{
    ASSERT_TRUE(adapter.OpenDisk("m", name.c_str(), read_only, credentials, &disk, &error)) << TakeError();
    ASSERT_NE(disk, nullptr);
}

std::string ImageAdapter::RefusalToOpen(const std::string &name)
{
    EXPECT_FALSE(adapter.OpenDisk("m", name.c_str(), false, credentials, &disk, &error));
    return TakeError();
}

std::string ImageAdapter::Read(std::uint64_t start, std::uint64_t count)
{
    std::string data(count * 512, '?');
    EXPECT_TRUE(adapter.ReadSectors(disk, start, count, data.data(), &error)) << TakeError();
    return data;
}
