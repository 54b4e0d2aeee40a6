/// A parent that ends in one of the ways in which processes end, for the tests that its helper ends with it. Started as
/// `doomed_parent PIPE HELPER DIRECTORY ENDING`: starts a scripted helper in that directory, sends its process id (4
/// bytes, the host's order) through the pipe, waits for a byte from there, and ends.
#include <kessil/parent.h>

#include "platform/entry_point.h"
#include "platform/pipe.h"

#include <cstdlib>
#include <thread>

namespace {

using namespace kessil;

// Ends with the process and not before: most parents here end without cleaning up.
parent::Helper *g_helper = nullptr;

bool Start(parent::Helper &helper)
{
    return bool(helper.Start());
}

void ReportAndWait(platform::PipeHandle pipe, std::uint32_t id)
{
    unsigned char byte = 0;
    std::uint32_t count = 0;
    platform::WritePipe(pipe, &id, sizeof id, count);
    platform::ReadPipe(pipe, &byte, 1, count);
}

} // namespace

int kessil::platform::Main(const std::vector<WideString> &arguments)
{
    if (arguments.size() != 5)
        return 2;
    const PipeHandle pipe = ConnectPipe(arguments[1], 10000);
    parent::Options options;
    options.program = std::filesystem::path(ToUtf8(arguments[2]));
    options.working_directory = std::filesystem::path(ToUtf8(arguments[3]));
    options.log_file = options.working_directory / "log";
    const std::string ending = ToUtf8(arguments[4]);

    parent::Helper *const helper = g_helper = new parent::Helper(options);
    bool started = false;
    if (ending == "outlives_thread")
        std::thread([&] { started = Start(*helper); }).join();
    else
        started = Start(*helper);
    if (!started)
        return 3;
    ReportAndWait(pipe, helper->ProcessId());
    if (ending == "outlives_thread")
        return helper->Load(u"x") ? 0 : 4;
    if (ending == "abort")
        std::abort();
    if (ending == "exit")
        std::exit(0);
    if (ending == "quick_exit")
        std::_Exit(0);
    if (ending == "in_call")
        helper->Load(u"x");
    return 0;
}
