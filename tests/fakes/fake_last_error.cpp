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
    return text != test::fake_last_error.texts.end() ? text->second
                                                     : FromUtf8("text of " + std::to_string(code) + "\r\n");
}

} // namespace platform
} // namespace kessil
