#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace kessil::parent {

/// The file to which one helper appends its log. Owns the file, and removes it, when it had to choose the name itself.
class HelperLog
{
public:
    /// `path` empty: a file of a random name in the temporary directory.
    explicit HelperLog(const std::filesystem::path &path);
    ~HelperLog();
    HelperLog(const HelperLog &) = delete;
    HelperLog &operator=(const HelperLog &) = delete;

    const std::filesystem::path &Path() const { return m_path; }

    /// The last lines appended since this object was made, each after a line end and two spaces. Control characters are
    /// replaced by '?'. Empty when nothing has been appended.
    std::string Tail() const;

private:
    std::filesystem::path m_path;
    bool m_owned;
    std::uintmax_t m_start = 0;
};

} // namespace kessil::parent
