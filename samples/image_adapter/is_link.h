#pragma once

#include <filesystem>

namespace image_adapter {

/// Whether the path is that of a symbolic link, or of any reparse point.
bool IsLink(const std::filesystem::path &path);

} // namespace image_adapter
