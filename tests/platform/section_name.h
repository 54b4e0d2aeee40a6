#pragma once

#include "platform/section.h"
#include "surroundings.h"

#include <string>

namespace kessil::test {

/// A name that no other test uses. Removed from the system on destruction.
class SectionName
{
public:
    explicit SectionName(const std::string &start = "kessil-section-")
        : m_name(platform::FromUtf8(start + std::to_string(OwnProcessId()) + "-" + std::to_string(++s_count)))
    {}
    ~SectionName() { platform::RemoveSectionName(m_name); }
    SectionName(const SectionName &) = delete;
    SectionName &operator=(const SectionName &) = delete;

    operator const WideString &() const { return m_name; } // NOLINT(google-explicit-constructor)

private:
    static inline int s_count = 0;
    WideString m_name;
};

} // namespace kessil::test
