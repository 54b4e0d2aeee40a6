#include "kessilctl/console/exit_code.h"
#include "kessilctl/run.h"
#include "platform/entry_point.h"
#include "platform/terminal.h"

#include <iostream>

int kessil::platform::Main(const std::vector<WideString> &arguments)
{
    constexpr unsigned usual_width = 80;
    UseUtf8Console();
    TakeConsoleEventsAsSignals(static_cast<int>(kessilctl::ExitCode::Interrupted));
    unsigned columns = 0;
    if (IsTerminal(StandardStream::Error)) {
        columns = TerminalColumns(StandardStream::Error);
        columns = columns > 0 ? columns : usual_width;
    }
    kessilctl::Console console(std::cout, std::cerr, columns);
    return kessilctl::Run(arguments, console);
}
