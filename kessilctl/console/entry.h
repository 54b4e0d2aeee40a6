#pragma once

#include <cstdint>
#include <string>

namespace kessil::kessilctl {

enum class Kind
{
    File,
    Directory,
    Link,
    Other
};

/// "file", "directory", "link" or "other".
const char *NameOf(Kind kind);

/// Time of the last change of content: seconds from 1970-01-01 UTC, and nanoseconds added to them.
struct Modified
{
    std::int64_t seconds = 0;
    std::uint32_t nanoseconds = 0;
    bool operator==(const Modified &) const = default;
};

/// One item of a listing. Where `failure` isn't empty, the library reported a failure for it and only the name holds.
struct Entry
{
    std::string name;
    Kind kind = Kind::Other;
    std::uint64_t bytes = 0;
    Modified modified;
    std::string failure;
};

} // namespace kessil::kessilctl
