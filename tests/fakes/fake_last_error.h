#pragma once

#include "platform/text.h"

#include <cstdint>
#include <map>

namespace kessil::test {

/// In the place of platform/last_error.h: the last error is a variable of the thread, and every code that the system
/// may know has a text. `fake_last_error = FakeLastError()` begins anew, but for the variable.
struct FakeLastError
{
    /// Texts that differ from "text of <code>" and the line's end.
    std::map<std::uint32_t, WideString> texts;

    WideString line_end = u"\r\n";          ///< behind "text of <code>"
    std::uint32_t first_unknown = 1U << 29; ///< from this code on the system knows none, and answers as it does then
};

extern FakeLastError fake_last_error;

} // namespace kessil::test
