#pragma once

#include "parent/section/elements.h"
#include "parent/section/shared_section.h"

#include <span>
#include <string>

namespace kessil::parent {

/// Reads the results of the last call from a section. A value that doesn't lie within the section leaves its variable
/// as it was, and so do all that follow.
class ResultList
{
public:
    /// `section` may be replaced at any time.
    explicit ResultList(const SharedSection &section) : m_section(section) {}

    /// Whether a call has been answered and its results still lie in the section.
    bool Present() const { return m_present; }
    void SetPresent(bool present) { m_present = present; }

    /// Goes back to the first element.
    void Rewind();

    bool Number(std::uint64_t &value, int width);
    void Narrow(std::string &text);
    void Wide(WideString &text);

    /// `bytes` points into the section.
    void Buffer(std::span<const std::byte> &bytes);

    /// Whether all elements read so far lay within the section.
    bool Good() const { return m_good; }

    /// The number of the element read last, from 1 on.
    std::uint32_t Element() const { return m_element; }

    /// Of all lists so far, padding included.
    std::uint64_t BytesRead() const { return m_bytes_read; }

private:
    const unsigned char *Take(std::uint32_t padding, std::uint64_t size);
    std::uint32_t Measure(std::uint32_t padding, std::uint32_t unit) const;

    const SharedSection &m_section;
    bool m_present = false;
    bool m_good = true;
    std::uint32_t m_position = 0;
    std::uint32_t m_element = 0;
    std::uint64_t m_bytes_read = 0;
};

} // namespace kessil::parent
