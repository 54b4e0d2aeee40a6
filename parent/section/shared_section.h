#pragma once

#include "platform/section.h"

#include <cstdint>
#include <limits>
#include <string>

namespace kessil::parent {

constexpr std::uint32_t largest_section = std::numeric_limits<std::uint32_t>::max();

/// A section of memory that this process has mapped; owns the view and the handle. Move only; an object that is
/// assigned to releases its own section first.
class SharedSection
{
public:
    SharedSection() = default;
    SharedSection(SharedSection &&other) noexcept;
    SharedSection &operator=(SharedSection &&other) noexcept;
    ~SharedSection();

    /// A new section for this user alone. Without a view on failure, with the reason in the last error.
    static SharedSection Create(const WideString &name, std::uint32_t size);

    /// A section that the other side made. Without a view on failure, with the reason in the last error.
    static SharedSection Open(const WideString &name, std::uint32_t size);

    unsigned char *View() const { return m_view; }
    std::uint32_t Size() const { return m_view == nullptr ? 0 : m_size; }

private:
    void Release();

    platform::SectionHandle m_handle = nullptr;
    unsigned char *m_view = nullptr;
    std::uint32_t m_size = 0;
};

/// A name for a section that can't be guessed, ending in '0'. The helper makes the name of a section of its own by
/// changing the last character, and that name is free, too.
WideString RandomSectionName();

/// The name that the helper gives its next section when the current one has this name.
WideString ToggledName(WideString name);

/// 128 random bits, as 32 hexadecimal digits.
std::string RandomDigits();

} // namespace kessil::parent
