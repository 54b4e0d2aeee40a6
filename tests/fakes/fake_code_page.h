#pragma once

#include "platform/text.h"

#include <optional>

namespace kessil::test {

/// Replaces platform/code_page.h: a code page whose texts are UTF-8 on both platforms. `fake_code_page =
/// FakeCodePage()` resets it.
struct FakeCodePage
{
    std::optional<WideString> answer; ///< the result of every conversion; none: the text is converted from UTF-8
};

extern FakeCodePage fake_code_page;

} // namespace kessil::test
