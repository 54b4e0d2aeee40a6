#include "platform/entry_point.h"

#include "platform/windows/ending.h"
#include "platform/windows/native.h"

// Keeps the start-up code from expanding arguments such as `*` to file names.
extern "C" {
extern int _dowildcard;
int _dowildcard = 0;
}

extern "C" int wmain(int count, wchar_t **arguments)
{
    std::vector<kessil::WideString> texts;
    texts.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        texts.emplace_back(reinterpret_cast<const char16_t *>(arguments[i]));
    const int exit_code = kessil::platform::Main(texts);
    kessil::platform::EndBounded(exit_code);
    return exit_code;
}
