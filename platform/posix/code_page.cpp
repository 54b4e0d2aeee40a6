#include "platform/code_page.h"

namespace kessil::platform {

WideString FromThreadCodePage(std::string_view text)
{
    return FromUtf8(text);
}

} // namespace kessil::platform
