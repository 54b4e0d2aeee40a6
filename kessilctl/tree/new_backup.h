#pragma once

#include "kessilctl/file/partial_file.h"
#include "kessilctl/tree/manifest.h"
#include "kessilctl/tree/vorn_library.h"

#include <cstddef>
#include <filesystem>
#include <span>
#include <string>

namespace kessil::kessilctl {

/// Where a backup keeps its parts.
inline constexpr const char *files_directory = "files";
inline constexpr const char *manifest_name = "MANIFEST.sha256";

/// A backup that is being written: files/ takes the tree, and the manifest comes last. What is being written stands
/// under the name `partial`, which goes with the object. Throws Failure(LocalFailed) when this side's file system
/// refuses.
class NewBackup
{
public:
    /// Makes the directory, or takes it when it is empty; anything else is Failure(Usage).
    explicit NewBackup(const std::filesystem::path &directory);

    /// False when the file system doesn't take it, or takes the name for that of something it has.
    bool AddDirectory(const std::string &path);

    /// Starts the content of the next file.
    void BeginFile() { m_partial.Begin(); }
    void Write(std::span<const std::byte> bytes) { m_partial.Write(bytes); }

    /// Gives the content its name and puts its digest into the manifest. False as with AddDirectory.
    bool EndFile(const std::string &path, const std::string &digest);

    /// Forgets the content.
    void DropFile() { m_partial.Drop(); }

    /// False when the file system doesn't take the time.
    bool SetTime(const std::string &path, const Modified &modified);

    void WriteManifest();

private:
    std::filesystem::path Place(const std::string &path) const;

    std::filesystem::path m_directory;
    PartialFile m_partial;
    Manifest m_manifest;
};

} // namespace kessil::kessilctl
