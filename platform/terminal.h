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

} // namespace kessil::platform
