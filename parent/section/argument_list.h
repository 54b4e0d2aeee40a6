#pragma once

#include "parent/section/elements.h"
#include "parent/section/shared_section.h"

#include <string>
#include <string_view>
#include <vector>

namespace kessil::parent {

/// Lays out the arguments of one call in a section. An element that doesn't fit is not written, and the function that
/// adds it returns false or null; it may be added again when the section has been replaced by one of at least Needed()
/// bytes with the same content. A list that has failed takes no elements either.
class ArgumentList
{
public:
    /// `section` may be replaced at any time.
    explicit ArgumentList(const SharedSection &section) : m_section(section) {}

    /// Begins a list, empty and good.
    void Begin();

    bool Number(std::uint64_t value, int width);
    bool Narrow(std::string_view text);
    bool Wide(std::u16string_view text);

    /// `size` bytes whose content is left as it is; null when they can't be added.
    unsigned char *Buffer(std::uint64_t size);

    /// The section's size that the element refused last takes.
    std::uint64_t Needed() const { return m_needed; }

    /// Remembers why this list can't be sent.
    void Fail(std::string reason);
    bool Good() const { return m_failure.empty(); }
    const std::string &Failure() const { return m_failure; }

    /// The bytes laid out so far, padding included.
    std::uint32_t Size() const { return m_position; }

    /// Whether Begin was called since the last Finish or Discard.
    bool Begun() const { return m_begun; }
    void Discard() { m_begun = false; }

    /// Ends the list. Whether it can be sent as it lies in the section.
    bool Finish();

private:
    unsigned char *Place(std::uint32_t padding, std::uint64_t size);

    const SharedSection &m_section;
    bool m_begun = false;
    std::uint32_t m_position = 0;
    std::uint64_t m_needed = 0;
    std::string m_failure;

    /// Where the zero units lie inside of which the next element begins.
    std::vector<std::uint32_t> m_shared_terminators;
};

} // namespace kessil::parent
