#include "is_link.h"

#include <windows.h>

namespace image_adapter {

bool IsLink(const std::filesystem::path &path)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

} // namespace image_adapter
