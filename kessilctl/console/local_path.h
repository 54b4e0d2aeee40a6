#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// Paths on this side as texts, and texts for a terminal.
namespace kessil::kessilctl {

/// On Linux the bytes as they are; on Windows they are UTF-8. ToText returns the same bytes again.
std::filesystem::path ToPath(std::string_view text);
std::string ToText(const std::filesystem::path &path);

/// For a terminal: control characters as \xHH, everything else as it is. Different texts may become the same; --json
/// keeps them apart.
std::string Printable(std::string_view text);

bool IsControl(char byte);

} // namespace kessil::kessilctl
