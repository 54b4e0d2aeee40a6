#pragma once

#include "platform/last_error.h"
#include "platform/text.h"

#include <cstdint>

namespace kessil::ese {

/// The last error that a call with that result left behind: 0 for a success, whatever the thread's last error is. Good
/// only as the statement right behind the call.
inline std::uint32_t LastErrorAfter(std::uint32_t result)
{
    return result == 0 ? 0 : platform::LastError();
}

/// A handle as it crosses the section.
inline std::uint32_t Low32(std::uint64_t handle)
{
    return static_cast<std::uint32_t>(handle);
}

/// An argument that the library takes as absent when it is null.
inline const char16_t *TextOrNull(const WideString &text)
{
    return text.empty() ? nullptr : text.c_str();
}

} // namespace kessil::ese
