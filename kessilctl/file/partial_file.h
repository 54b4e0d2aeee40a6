#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <span>
#include <system_error>

namespace kessil::kessilctl {

/// A file that is being written, under a name that goes with the object unless it was moved to its own. Throws
/// Failure(LocalFailed) when this side's file system refuses.
class PartialFile
{
public:
    explicit PartialFile(std::filesystem::path path) : m_path(std::move(path)) {}
    ~PartialFile() { Drop(); }
    PartialFile(const PartialFile &) = delete;
    PartialFile &operator=(const PartialFile &) = delete;

    /// Starts with an empty content.
    void Begin();
    void Write(std::span<const std::byte> bytes);

    /// Brings the content to its end.
    void End();

    /// Gives the ended content another name, in place of any file of that name.
    std::error_code MoveTo(const std::filesystem::path &place);

    /// Forgets the content.
    void Drop();

private:
    std::filesystem::path m_path;
    std::ofstream m_file;
    bool m_begun = false; ///< whether what stands under the name is this object's
};

/// Throws Failure(LocalFailed): `what`, such as "cannot write", the path, and the reason.
[[noreturn]] void FailLocally(const std::string &what, const std::filesystem::path &path,
                              const std::error_code &reason);

/// The same, with errno for the reason.
[[noreturn]] void FailWithErrno(const std::string &what, const std::filesystem::path &path);

} // namespace kessil::kessilctl
