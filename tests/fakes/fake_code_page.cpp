#include "fakes/fake_code_page.h"

#include "platform/code_page.h"

namespace kessil {
namespace test {

FakeCodePage fake_code_page;

} // namespace test

namespace platform {

WideString FromThreadCodePage(std::string_view text)
{
    return test::fake_code_page.answer.value_or(FromUtf8(text));
}

} // namespace platform
} // namespace kessil
