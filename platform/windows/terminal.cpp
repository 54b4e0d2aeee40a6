#include "platform/terminal.h"

#include "platform/windows/native.h"

#include <csignal>
#include <cstdlib>

namespace kessil::platform {
namespace {

HANDLE Native(StandardStream stream)
{
    return GetStdHandle(stream == StandardStream::Output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
}

int g_exit_code = 0;

void EndWithThatCode(int /*signal*/)
{
    std::_Exit(g_exit_code);
}

// Called on a thread that the system creates.
BOOL WINAPI OnConsoleEvent(DWORD event)
{
    if (event == CTRL_C_EVENT)
        return FALSE;
    std::raise(SIGTERM);
    // On return from any other event the system ends the process.
    if (event != CTRL_BREAK_EVENT)
        Sleep(INFINITE);
    return TRUE;
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

void TakeConsoleEventsAsSignals(int exit_code)
{
    g_exit_code = exit_code;
    // By default the run-time library ends the process with an exit code that means something else.
    if (const auto before = std::signal(SIGTERM, EndWithThatCode); before != SIG_DFL)
        std::signal(SIGTERM, before);
    SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
}

} // namespace kessil::platform
