#include "is_link.h"

namespace image_adapter {

bool IsLink(const std::filesystem::path &path)
{
    std::error_code ignored;
    return std::filesystem::is_symlink(path, ignored);
}

} // namespace image_adapter
