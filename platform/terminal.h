#pragma once

namespace kessil::platform {

enum class StandardStream
{
    Output,
    Error
};

/// Whether the stream is a terminal.
bool IsTerminal(StandardStream stream);

/// The number of characters that fit on a line; 0 when the stream isn't a terminal or its width is unknown.
unsigned TerminalColumns(StandardStream stream);

/// Makes the process's console interpret output as UTF-8. Does nothing on Linux.
void UseUtf8Console();

/// Delivers the other events that end console programs as SIGTERM, as Ctrl-C is delivered as SIGINT: Ctrl-Break,
/// closing the window, a logoff and a shutdown. After the last three the system ends the process within a few seconds;
/// this function makes sure that it doesn't end it sooner. If SIGTERM has no handler, the process ends with
/// `exit_code`. Does nothing on Linux, where these events are signals anyway.
void TakeConsoleEventsAsSignals(int exit_code);

} // namespace kessil::platform
