#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// Names between a library, whose paths are bytes with `/` between the names, and this side's file system.
namespace kessil::kessilctl {

/// On Linux the bytes as they are; on Windows they are UTF-8. ToText gives the same bytes back.
std::filesystem::path ToPath(std::string_view text);
std::string ToText(const std::filesystem::path &path);

/// Whether this side's file system takes the name for a plain one. A library may say anything: `..`, a name with a
/// separator in it, or a device must not lead a backup out of its directory.
bool IsPlainName(std::string_view name);

/// `name` in the directory `path`, which is empty for the topmost one.
std::string Join(std::string_view path, std::string_view name);

/// For a terminal: control characters as \xHH, everything else as it is. --json has names that can be told apart.
std::string Printable(std::string_view text);

} // namespace kessil::kessilctl
