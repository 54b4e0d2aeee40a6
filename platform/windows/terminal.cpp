#include "platform/terminal.h"

#include "platform/windows/native.h"

namespace kessil::platform {
namespace {

HANDLE Native(StandardStream stream)
{
    return GetStdHandle(stream == StandardStream::Output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
}

} // namespace

bool IsTerminal(StandardStream stream)
{
    DWORD mode = 0;
    return GetConsoleMode(Native(stream), &mode) != 0;
}

unsigned TerminalColumns(StandardStream stream)
{
    CONSOLE_SCREEN_BUFFER_INFO screen = {};
    if (!GetConsoleScreenBufferInfo(Native(stream), &screen))
        return 0;
    return static_cast<unsigned>(screen.srWindow.Right - screen.srWindow.Left + 1);
}

void UseUtf8Console()
{
    SetConsoleOutputCP(CP_UTF8);
}

} // namespace kessil::platform
