#pragma once

#include <cstddef>

namespace kessil::test {

/// In the place of platform/terminal.h: what stands behind the standard streams. `fake_terminal = FakeTerminal()`
/// begins anew.
struct FakeTerminal
{
    struct Stream
    {
        bool is_terminal = false;
        unsigned columns = 0; ///< that a terminal tells
    };

    Stream output;
    Stream error;
    std::size_t utf8_calls = 0;  ///< how often UseUtf8Console was called
    std::size_t event_calls = 0; ///< how often TakeConsoleEventsAsSignals was called
};

extern FakeTerminal fake_terminal;

} // namespace kessil::test
