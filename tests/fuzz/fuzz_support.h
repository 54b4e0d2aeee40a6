#pragma once

#include "fakes/fake_module.h"
#include "fakes/fake_pipe.h"
#include "fakes/fake_section.h"
#include "support/heap_probe.h"
#include "support/wire.h"

#include <cstddef>
#include <cstdint>

namespace kessil::test {

/// Ends the program, which is a finding, unless `holds`.
void Require(bool holds);

/// One input, taken byte by byte from the front. Where it is used up, zeros follow.
class Input
{
public:
    Input(const std::uint8_t *data, std::size_t size) : m_next(data), m_left(size) {}

    std::uint8_t Byte()
    {
        if (m_left == 0)
            return 0;
        --m_left;
        return *m_next++;
    }

    /// Everything that is left.
    Bytes Rest() const { return {m_next, m_next + m_left}; }

private:
    const std::uint8_t *m_next;
    std::size_t m_left;
};

/// A fuzzed length soon asks for gigabytes. Each input runs as on a machine that doesn't have them: requests for that
/// many bytes or more fail.
inline constexpr std::size_t memory_limit = std::size_t{1} << 20;

/// Begins anew: fakes that don't record, a silent log.
void ResetAll();

/// The parent's stream: `bytes` in arrivals as one byte of the input says, and an end as another says: of the stream,
/// or of the other side.
void DeliverStream(std::uint8_t chunk, std::uint8_t end, const Bytes &bytes);

/// What went out must be whole frames of the types that a parent knows. Returns the last one's type, 0 when none.
char RequireFrames();

/// The same, and between the frames there may be bare numbers 1 and -1, which begin as no frame does.
void RequireFramesAndStatuses();

/// Nothing may be held any more.
void RequireAllReleased();

} // namespace kessil::test
