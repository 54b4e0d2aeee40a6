#include "channel/ipc_communication.h"
#include "fuzz/fuzz_support.h"

// One byte: which reader. One: the size of the arrivals. One: how the stream ends. Then the stream.

using namespace kessil;
using namespace kessil::test;

namespace {

bool ReadOne(CIPCCommunication &channel, bool conditional)
{
    char type = 0;
    unsigned char *data = nullptr;
    std::uint32_t size = 0;
    bool eof = false;
    WideString error;
    const bool read = conditional ? channel.GetNextRequestCond("f", type, data, size, eof, error)
                                  : channel.GetNextRequest(type, data, size, eof, error);
    if (!read)
        Require(!error.empty());
    if (!read || eof)
        return false;
    Require(type != 'R');
    // Every byte of the payload must be there to be read.
    unsigned sum = 0;
    for (std::uint32_t i = 0; i < size; ++i)
        sum += data[i];
    Require(sum <= 255U * size);
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    ResetAll();
    const NoMemoryFrom limit(memory_limit);
    Input input(bytes, size);
    const bool conditional = input.Byte() % 2 != 0;
    const std::uint8_t chunk = input.Byte();
    const std::uint8_t end = input.Byte();
    fake_section.Add(u"s0", 64);
    fake_section.Add(u"s1", 256);
    DeliverStream(chunk, end, input.Rest());
    {
        CIPCCommunication channel;
        WideString error;
        Require(channel.Attach(u"pipe", error));
        while (ReadOne(channel, conditional)) {
        }
        RequireFrames();
    }
    RequireAllReleased();
    return 0;
}
