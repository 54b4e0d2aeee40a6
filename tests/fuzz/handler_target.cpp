#include "callers/signature_table.h"
#include "channel/ipc_communication.h"
#include "fuzz/fuzz_support.h"
#include "fuzz/vorn_stand_in.h"

#include <exception>
#include <string>
#include <utility>
#include <vector>

// One byte: which handler. One: what its target answers. One: what the parent answers to a new section. Then the
// section's content.

using namespace kessil;
using namespace kessil::test;

namespace {

const std::vector<SignatureRow> &ServedRows()
{
    static const std::vector<SignatureRow> served = [] {
        std::vector<SignatureRow> rows;
        for (const SignatureRow &row : SignatureTable()) {
            if (row.first != nullptr)
                rows.push_back(row);
        }
        return rows;
    }();
    return served;
}

void DeliverParentsAnswer(std::uint8_t kind)
{
    switch (kind % 8) {
    case 0:
        fake_pipe.Deliver(FailureFrame(u"refused"));
        break;
    case 1:
        fake_pipe.DeliverNothing();
        break;
    case 2:
        fake_pipe.Deliver(Hex("53 00 00 00 02 01"));
        fake_pipe.DeliverNothing();
        break;
    case 3:
        fake_section.Add(u"other", kind);
        fake_pipe.Deliver(ResizeFrame(u"other", kind) + SuccessFrame());
        break;
    case 4:
        fake_section.create_code = 8;
        break;
    default:
        fake_pipe.Deliver(SuccessFrame());
    }
}

// Has the channel take in a section of that content.
void GiveSection(CIPCCommunication &channel, const Bytes &content)
{
    fake_section.Add(u"s0", content);
    fake_pipe.Deliver(ResizeFrame(u"s0", content.size()));
    fake_pipe.Deliver(Frame('z', {}));
    char type = 0;
    unsigned char *data = nullptr;
    std::uint32_t size = 0;
    bool eof = false;
    WideString error;
    Require(channel.GetNextRequest(type, data, size, eof, error));
    fake_pipe.written.clear();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    ResetAll();
    const NoMemoryFrom limit(memory_limit);
    Input input(bytes, size);
    const SignatureRow &row = ServedRows()[input.Byte() % ServedRows().size()];
    const std::uint8_t answer = input.Byte();
    const std::uint8_t parents_answer = input.Byte();
    const std::string function = std::string(row.signature).substr(std::string("SIGNATURE_").size());
    void *const target = VornStandIn(answer).at(function);
    {
        CIPCCommunication channel;
        WideString error;
        Require(channel.Attach(u"pipe", error));
        const Bytes content = input.Rest();
        if (!content.empty())
            GiveSection(channel, content);
        DeliverParentsAnswer(parents_answer);
        try {
            row.first(channel, target);
            // Whoever still holds the pipe has told the parent how it went.
            const char last = RequireFrames();
            Require(!fake_pipe.is_open || last == 'S' || last == 'E');
        } catch (const std::exception &) {
            // No memory, or a call that would have faulted: the run ends with exit code 0.
        }
    }
    RequireAllReleased();
    return 0;
}
