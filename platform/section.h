#pragma once

#include "platform/text.h"

#include <cstdint>

namespace kessil::platform {

// Sections are made, opened and unnamed as whoever the process started as, also where the thread acts as another user:
// the other side of a section knows nothing of a logon.

/// An open shared section; null when none. The operating system's own handle, so that the log can print it.
using SectionHandle = void *;

/// Creates a section of `size` bytes, all zero, under `name`. Its access list admits Administrators and, with
/// `admit_users`, the local Users group (on Linux: its owner, and the group `users`). A section's memory is reserved
/// at once: a full system is an error here and no fault later. Returns null on failure, also for a name that is
/// taken on Linux; on Windows a taken name gives the section that is there.
SectionHandle CreateSection(const WideString &name, std::uint32_t size, bool admit_users);

/// Opens the section of that name for reading and writing. On Linux it fails with EINVAL when the section is smaller
/// than `size`; on Windows that shows when it is mapped. Returns null on failure.
SectionHandle OpenSection(const WideString &name, std::uint32_t size);

/// Maps the first `size` bytes of a section, from a page boundary on. A size of 0 gives a view that holds nothing
/// for the caller. Null on failure.
unsigned char *MapCreatedSection(SectionHandle section, std::uint32_t size);
unsigned char *MapOpenedSection(SectionHandle section, std::uint32_t size);

/// Ends a view; `size` is what it was mapped with. Keeps the last error.
void UnmapSection(unsigned char *view, std::uint32_t size);

/// Closes this process's handle. Keeps the last error.
void CloseSection(SectionHandle section);

/// Takes a section's name out of the system. Its creator calls this once the other side has opened it, or when it
/// gives the section up. Does nothing on Windows, where a name goes with its last handle. Keeps the last error.
void RemoveSectionName(const WideString &name);

} // namespace kessil::platform
