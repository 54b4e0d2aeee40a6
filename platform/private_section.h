#pragma once

#include "platform/section.h"

namespace kessil::platform {

/// Creates a section of `size` bytes, all zero, that this user alone may open; a parent's section. Everything else as
/// CreateSection, except that a name that is taken is refused on every platform. Null on failure.
SectionHandle CreatePrivateSection(const WideString &name, std::uint32_t size);

} // namespace kessil::platform
