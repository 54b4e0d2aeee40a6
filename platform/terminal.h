#pragma once

namespace kessil::platform {

enum class StandardStream
{
    Output,
    Error
};

/// Whether a person looks at the stream.
bool IsTerminal(StandardStream stream);

/// How many characters fit in a line; 0 when it isn't a terminal, or doesn't tell.
unsigned TerminalColumns(StandardStream stream);

/// Makes the process's console take what is written as UTF-8. Does nothing where that is so anyway.
void UseUtf8Console();

/// Has what else ends the programs of a console come as SIGTERM, as Ctrl-C comes as SIGINT: Ctrl-Break, the closing of
/// its window, a logoff and a shutdown. After those three the system ends the process within a few seconds, and this
/// sees to it that it isn't sooner. Where nobody handles SIGTERM, the process ends with `exit_code` then. Does nothing
/// where such events are signals anyway.
void TakeConsoleEventsAsSignals(int exit_code);

} // namespace kessil::platform
