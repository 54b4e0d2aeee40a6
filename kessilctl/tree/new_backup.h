#pragma once

#include "kessilctl/console/entry.h"
#include "kessilctl/file/partial_file.h"
#include "kessilctl/tree/manifest.h"

#include <cstddef>
#include <filesystem>
#include <span>
#include <string>

namespace kessil::kessilctl {

/// Names in a backup's directory.
inline constexpr const char *files_directory = "files";
inline constexpr const char *manifest_name = "MANIFEST.sha256";

/// A backup that is being written: the tree goes to files/, and the manifest is written last. The file that is being
/// written is called `partial`; the destructor removes it. Throws Failure(LocalFailed) for an error of this side's file
/// system.
class NewBackup
{
public:
    /// Makes the directory unless it exists. Throws Failure(Usage) when it isn't empty.
    explicit NewBackup(const std::filesystem::path &directory);

    /// False when the file system refuses the name, or already has something by it.
    bool AddDirectory(const std::string &path);

    /// Begins the next file.
    void BeginFile() { m_partial.Begin(); }
    void Write(std::span<const std::byte> bytes) { m_partial.Write(bytes); }

    /// Ends the file, gives it its name, and adds its digest to the manifest. False as with AddDirectory.
    bool EndFile(const std::string &path, const std::string &digest);

    /// Removes the file that was begun.
    void DropFile() { m_partial.Drop(); }

    /// False when the file system can't.
    bool SetTime(const std::string &path, const Modified &modified);

    void WriteManifest();

private:
    std::filesystem::path Place(const std::string &path) const;

    std::filesystem::path m_directory;
    PartialFile m_partial;
    Manifest m_manifest;
};

} // namespace kessil::kessilctl
