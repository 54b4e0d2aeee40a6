#pragma once

#include "platform/section.h"

namespace kessil::platform {

/// Creates a section of `size` bytes, all zero, that only this user may open: a parent's section. Otherwise like
/// CreateSection, except that a name in use is refused on every platform. Null on failure.
SectionHandle CreatePrivateSection(const WideString &name, std::uint32_t size);

} // namespace kessil::platform
