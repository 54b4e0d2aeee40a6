#include "callers/library_caller.h"
#include "callers/library_caller_alt.h"
#include "channel/ipc_communication.h"
#include "channel/pipe_primitives.h"
#include "fuzz/fuzz_support.h"
#include "fuzz/vorn_stand_in.h"
#include "host/request_loop.h"

#include <cstring>
#include <exception>
#include <vector>

// One byte: what the library answers. One: the size of the arrivals. One: how the stream ends. Then the stream.

using namespace kessil;
using namespace kessil::test;

namespace {

void NoHook(CIPCCommunication & /*channel*/, const WideString & /*name*/, platform::ModuleHandle /*module*/) {}

// Reads a bare value of each kind and answers 1 when all of them came.
void ReadBareValues(CIPCCommunication &channel, void * /*function*/)
{
    std::uint32_t number = 0;
    std::uint64_t large = 0;
    std::string text;
    std::vector<unsigned char> block;
    const bool whole = ReadUInt32FromPipe(channel, number) && ReadUInt64FromPipe(channel, large) &&
                       ReadStringFromPipe(channel, text) && ReadBytesFromPipe(channel, block);
    Require(text.size() <= 1024);
    WriteInt32ToPipe(channel, whole ? 1 : -1);
}

// The stand-in's rows and, in the second generation, one that has bare values.
std::vector<SignatureRow> Signatures()
{
    const auto rows = VornStandInRows();
    std::vector<SignatureRow> signatures(rows.begin(), rows.end());
    signatures.push_back({"BARE", nullptr, ReadBareValues});
    return signatures;
}

// Command 2 has the bare values; from 3 on each of the stand-in's functions has a command.
std::vector<CommandRow> Commands()
{
    std::vector<CommandRow> commands = {{2, "BARE", "GetBackupType"}};
    std::uint32_t number = 3;
    for (const SignatureRow &row : VornStandInRows())
        commands.push_back({number++, row.signature.data(), row.signature.data() + std::strlen("SIGNATURE_")});
    return commands;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    static const std::vector<SignatureRow> signatures = Signatures();
    static const std::vector<CommandRow> commands = Commands();
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
        CLibraryCaller caller(signatures, NoHook);
        CLibraryCallerAlt caller_alt(signatures, NoHook);
        RequestLoop loop(channel, caller, caller_alt, commands, error);
        const int exit_code = loop.Run();
        Require(exit_code == 0 || exit_code == 1);
    } catch (const std::exception &) {
        // No memory, or a call that would have faulted: the run ends with exit code 0.
    }
    RequireFramesAndStatuses();
    RequireAllReleased();
    return 0;
}
