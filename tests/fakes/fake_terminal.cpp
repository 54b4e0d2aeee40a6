#include "fakes/fake_terminal.h"

#include "platform/terminal.h"

namespace kessil {

test::FakeTerminal test::fake_terminal;

namespace platform {
namespace {

const test::FakeTerminal::Stream &Behind(StandardStream stream)
{
    return stream == StandardStream::Output ? test::fake_terminal.output : test::fake_terminal.error;
}

} // namespace

bool IsTerminal(StandardStream stream)
{
    return Behind(stream).is_terminal;
}

unsigned TerminalColumns(StandardStream stream)
{
    return IsTerminal(stream) ? Behind(stream).columns : 0;
}

void UseUtf8Console()
{
    ++test::fake_terminal.utf8_calls;
}

void TakeConsoleEventsAsSignals(int /*exit_code*/)
{
    ++test::fake_terminal.event_calls;
}

} // namespace platform
} // namespace kessil
