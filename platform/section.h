#pragma once

#include "platform/text.h"

#include <cstdint>

namespace kessil::platform {

// On Linux, sections are created, opened and unlinked with the identity that the process started with, even while the
// thread acts as another user: the other side of a section isn't affected by a logon.

/// An open shared section; null means none. It is the operating system's own handle, so that the log can print it.
using SectionHandle = void *;

/// Creates a section of `size` bytes, all zero, under `name`. Its access list admits Administrators and, with
/// `admit_users`, the local Users group (on Linux: its owner and, with `admit_users`, the group `users`). The memory is
/// reserved at once, so that a lack of memory is an error here and not a fault later. Returns null on failure. A name
/// in use is a failure on Linux; on Windows it opens the existing section.
SectionHandle CreateSection(const WideString &name, std::uint32_t size, bool admit_users);

/// Opens the section of that name for reading and writing. On Linux it fails with EINVAL when the section is smaller
/// than `size`; on Windows mapping it fails instead. Returns null on failure.
SectionHandle OpenSection(const WideString &name, std::uint32_t size);

/// Maps the first `size` bytes of a section, at a page boundary. A view of size 0 contains nothing that the caller may
/// use. Null on failure.
unsigned char *MapCreatedSection(SectionHandle section, std::uint32_t size);
unsigned char *MapOpenedSection(SectionHandle section, std::uint32_t size);

/// Unmaps a view; `size` is the size that it was mapped with. Keeps the last error.
void UnmapSection(unsigned char *view, std::uint32_t size);

/// Closes this process's handle. Keeps the last error.
void CloseSection(SectionHandle section);

/// Removes a section's name from the system. The creator calls this once the other side has opened the section, or when
/// the creator itself releases it. Does nothing on Windows, where the name disappears with the last handle. Keeps the
/// last error.
void RemoveSectionName(const WideString &name);

} // namespace kessil::platform
