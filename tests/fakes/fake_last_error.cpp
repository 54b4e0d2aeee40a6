#include "fakes/fake_last_error.h"

#include "platform/last_error.h"

#include <string>

namespace kessil {
namespace test {

FakeLastError fake_last_error;

} // namespace test

namespace platform {
namespace {

thread_local std::uint32_t last_error = 0;

WideString TextOfUnknown([[maybe_unused]] std::uint32_t code)
{
#ifdef _WIN32
    return {};
#else
    return FromUtf8("Unknown error " + std::to_string(code));
#endif
}

} // namespace

std::uint32_t LastError()
{
    return last_error;
}

void SetLastError(std::uint32_t code)
{
    last_error = code;
}

WideString ErrorText(std::uint32_t code)
{
    const auto text = test::fake_last_error.texts.find(code);
    if (text != test::fake_last_error.texts.end())
        return text->second;
    if (code >= test::fake_last_error.first_unknown)
        return TextOfUnknown(code);
    return FromUtf8("text of " + std::to_string(code)) + test::fake_last_error.line_end;
}

} // namespace platform
} // namespace kessil
