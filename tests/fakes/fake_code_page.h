#pragma once

#include "platform/text.h"

#include <optional>

namespace kessil::test {

/// In the place of platform/code_page.h: a code page whose texts are UTF-8 on both platforms.
/// `fake_code_page = FakeCodePage()` begins anew.
struct FakeCodePage
{
    std::optional<WideString> answer; ///< what every text is converted to; none: what it stands for in UTF-8
};

extern FakeCodePage fake_code_page;

} // namespace kessil::test
