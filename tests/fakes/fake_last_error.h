#pragma once

#include "platform/text.h"

#include <cstdint>
#include <map>

namespace kessil::test {

/// In the place of platform/last_error.h: the last error is a variable of the thread, and every code has a text.
struct FakeLastError
{
    /// Texts that differ from "text of <code>\r\n".
    std::map<std::uint32_t, WideString> texts;
};

extern FakeLastError fake_last_error;

} // namespace kessil::test
