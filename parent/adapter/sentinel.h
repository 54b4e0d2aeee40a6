#pragma once

#include "parent/wire/bare_values.h"

namespace kessil::parent {

/// A second request, sent behind a call whose answer has no recognisable end: where the answer to this one begins, that
/// of the call has ended. It looks up a message text in a file without a name, which finds nothing and changes nothing;
/// the helper answers it by an 'E' frame that repeats the message's number, which is random.
class Sentinel
{
public:
    /// How many bytes of its answer identify it: type, length, -1, number. The whole answer is longer, so that waiting
    /// for as many bytes behind any value can't block.
    static constexpr std::size_t start_size = 13;

    void AppendTo(BareWriter &writer);

    /// Whether these `start_size` bytes are the start of its answer.
    bool IsAnsweredBy(std::span<const unsigned char> start) const;

    /// Whether this payload of its answer is well-formed.
    static bool IsWellFormed(const std::string &payload);

private:
    std::uint32_t m_number = 0;
};

} // namespace kessil::parent
