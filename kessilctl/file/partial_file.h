#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <span>
#include <system_error>

namespace kessil::kessilctl {

/// A file that is being written under a temporary name. The destructor removes it unless MoveTo gave it its final one.
/// Throws Failure(LocalFailed) for an error of the file system.
class PartialFile
{
public:
    explicit PartialFile(std::filesystem::path path) : m_path(std::move(path)) {}
    ~PartialFile() { Drop(); }
    PartialFile(const PartialFile &) = delete;
    PartialFile &operator=(const PartialFile &) = delete;

    /// Creates the file, or empties it.
    void Begin();
    void Write(std::span<const std::byte> bytes);

    /// Closes the file.
    void End();

    /// Renames the closed file, in place of any file of that name.
    std::error_code MoveTo(const std::filesystem::path &place);

    /// Removes the file.
    void Drop();

private:
    std::filesystem::path m_path;
    std::ofstream m_file;
    bool m_begun = false; ///< whether the file is this object's
};

/// Throws Failure(LocalFailed): `what`, such as "cannot write", the path, and the reason.
[[noreturn]] void FailLocally(const std::string &what, const std::filesystem::path &path,
                              const std::error_code &reason);

/// The same, with errno as the reason.
[[noreturn]] void FailWithErrno(const std::string &what, const std::filesystem::path &path);

} // namespace kessil::kessilctl
