#pragma once

#include "platform/text.h"

namespace kessil::parent {

/// A path's own text as wide text, on a system whose paths are bytes (each byte that isn't part of UTF-8 is kept as
/// FromUtf8 does) and on one whose paths are wide.
inline WideString WideFrom(const std::string &native)
{
    return platform::FromUtf8(native);
}

inline WideString WideFrom(const std::wstring &native)
{
    return {native.begin(), native.end()};
}

} // namespace kessil::parent
