#pragma once

#include <kessil/adapter_interface.h>

#include <filesystem>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

/// image_adapter loaded into this process, and a root for it to serve in a directory of its own.

struct AdapterFunctions
{
    decltype(&::GetErrorMessage) GetErrorMessage;
    decltype(&::FreeErrorInfo) FreeErrorInfo;
    decltype(&::SetLoggingCallBack) SetLoggingCallBack;
    decltype(&::GetLibraryVersion) GetLibraryVersion;
    decltype(&::CreateCredentials) CreateCredentials;
    decltype(&::FreeCredentials) FreeCredentials;
    decltype(&::OpenListing) OpenListing;
    decltype(&::NextItem) NextItem;
    decltype(&::FreeListing) FreeListing;
    decltype(&::ListDataStores) ListDataStores;
    decltype(&::ListFolders) ListFolders;
    decltype(&::ListHosts) ListHosts;
    decltype(&::ListDatacenters) ListDatacenters;
    decltype(&::ListMachines) ListMachines;
    decltype(&::InitVixDiskLib) InitVixDiskLib;
    decltype(&::ExitVixDiskLib) ExitVixDiskLib;
    decltype(&::OpenDisk) OpenDisk;
    decltype(&::CloseDisk) CloseDisk;
    decltype(&::ReadSectors) ReadSectors;
    decltype(&::WriteSectors) WriteSectors;
};

/// An item's numbers and name, as {files, bytes, directories, name}.
using Item = std::tuple<std::int32_t, std::uint64_t, std::int32_t, std::string>;

class ImageAdapter : public testing::Test
{
protected:
    ImageAdapter();
    ~ImageAdapter() override;

    void WriteBelow(const std::filesystem::path &path, const std::string &content);
    std::string ReadBelow(const std::filesystem::path &path);

    /// Returns the text of the failure that a call reported, and frees its record; empty when it reported none.
    std::string TakeError();

    /// Returns the items of the listing that a call made, and frees it. The test fails when there is none.
    std::vector<Item> Take(bool yes);
    std::vector<Item> Everything(const std::string &path);

    /// Why the path isn't listed; empty when it is.
    std::string RefusalOf(const std::string &path);

    /// Opens a disk of the machine `m`, and expects that it does.
    void Open(const std::string &name, bool read_only);

    /// Why a disk of the machine `m` isn't opened; empty when it is.
    std::string RefusalToOpen(const std::string &name);

    std::string Read(std::uint64_t start, std::uint64_t count);

    AdapterFunctions adapter;
    std::filesystem::path base;
    std::filesystem::path root;
    void *credentials = nullptr;
    void *disk = nullptr;
    AdapterListing *listing = nullptr;
    VMLib_ErrorInfo *error = nullptr;
    static std::vector<std::pair<int, std::string>> lines; ///< what was logged

private:
    void *m_library;
};
