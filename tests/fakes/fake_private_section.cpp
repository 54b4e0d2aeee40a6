#include "fakes/fake_private_section.h"

#include "fakes/call_log.h"
#include "platform/private_section.h"

#include <string>

namespace kessil::platform {

SectionHandle CreatePrivateSection(const WideString &name, std::uint32_t size)
{
    test::call_log.Add("CreatePrivateSection " + ToUtf8(name) + " " + std::to_string(size));
    return test::fake_section.CreatePrivate(name, size);
}

} // namespace kessil::platform
