#include "platform/private_section.h"

namespace kessil::platform {

SectionHandle CreatePrivateSection(const WideString &name, std::uint32_t size)
{
    return CreateSection(name, size, false);
}

} // namespace kessil::platform
