#pragma once

#include "platform/text.h"

#include <cstdint>
#include <map>

namespace kessil::test {

/// Replaces platform/last_error.h: the last error is a thread-local variable, and every known code has a text.
/// `fake_last_error = FakeLastError()` resets everything but that variable.
struct FakeLastError
{
    /// Texts that differ from "text of <code>" plus the line end.
    std::map<std::uint32_t, WideString> texts;

    WideString line_end = u"\r\n"; ///< appended to "text of <code>"
    std::uint32_t first_unknown =
        1U << 29; ///< codes from here on are unknown, and get the system's text for such codes
};

extern FakeLastError fake_last_error;

} // namespace kessil::test
