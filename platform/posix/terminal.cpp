#include "platform/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace kessil::platform {
namespace {

int Descriptor(StandardStream stream)
{
    return stream == StandardStream::Output ? STDOUT_FILENO : STDERR_FILENO;
}

} // namespace

bool IsTerminal(StandardStream stream)
{
    return isatty(Descriptor(stream)) == 1;
}

unsigned TerminalColumns(StandardStream stream)
{
    winsize size = {};
    return ioctl(Descriptor(stream), TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

void UseUtf8Console() {}

void TakeConsoleEventsAsSignals(int /*exit_code*/) {}

} // namespace kessil::platform
