#pragma once

#include <cstddef>

namespace kessil::test {

/// Replaces platform/terminal.h: what the standard streams are connected to. `fake_terminal = FakeTerminal()` resets
/// it.
struct FakeTerminal
{
    struct Stream
    {
        bool is_terminal = false;
        unsigned columns = 0; ///< the width that a terminal reports
    };

    Stream output;
    Stream error;
    std::size_t utf8_calls = 0;  ///< how often UseUtf8Console was called
    std::size_t event_calls = 0; ///< how often TakeConsoleEventsAsSignals was called
};

extern FakeTerminal fake_terminal;

} // namespace kessil::test
