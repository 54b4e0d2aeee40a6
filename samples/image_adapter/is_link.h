#pragma once

#include <filesystem>

namespace image_adapter {

/// Whether the path's last name is one that leads elsewhere: a symbolic link, or any reparse point.
bool IsLink(const std::filesystem::path &path);

} // namespace image_adapter
