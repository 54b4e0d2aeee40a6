#include "callers/library_caller.h"
#include "channel/ipc_communication.h"
#include "fuzz/fuzz_support.h"
#include "fuzz/vorn_stand_in.h"
#include "host/request_loop.h"

#include <exception>

// One byte: what the library answers. One: the size of the arrivals. One: how the stream ends. Then the stream.

using namespace kessil;
using namespace kessil::test;

namespace {

void NoHook(CIPCCommunication & /*channel*/, const WideString & /*name*/, platform::ModuleHandle /*module*/) {}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    ResetAll();
    const NoMemoryFrom limit(memory_limit);
    Input input(bytes, size);
    fake_module.Add(u"vorn.dll", VornStandIn(input.Byte()));
    const std::uint8_t chunk = input.Byte();
    const std::uint8_t end = input.Byte();
    const Bytes stream = input.Rest();
    fake_section.Add(u"s0", 64);
    // The section's content is as hostile as the stream.
    fake_section.Add(u"s1", stream);
    DeliverStream(chunk, end, stream);
    try {
        CIPCCommunication channel;
        WideString error;
        Require(channel.Attach(u"pipe", error));
        CLibraryCaller caller(VornStandInRows(), NoHook);
        RequestLoop loop(channel, caller, error);
        const int exit_code = loop.Run();
        Require(exit_code == 0 || exit_code == 1);
    } catch (const std::exception &) {
        // No memory, or a call that would have faulted: the run ends with exit code 0.
    }
    RequireFrames();
    RequireAllReleased();
    return 0;
}
