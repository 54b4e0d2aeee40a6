#include "channel/ipc_communication.h"
#include "families/signature_table.h"
#include "fuzz/fuzz_support.h"
#include "fuzz/fuzzed_rows.h"
#include "fuzz/recorders.h"
#include "fuzz/vorn_stand_in.h"

#include <exception>
#include <set>
#include <string>
#include <string_view>
#include <vector>

// One byte: which handler. One: what its target answers. One: what the parent answers to a new section. Then the
// section's content.

using namespace kessil;
using namespace kessil::test;

namespace {

struct FuzzedCall
{
    Handler handler;
    std::string function;
};

Handler HandlerOf(const std::string &signature)
{
    for (const SignatureRow &row : SignatureTable()) {
        if (row.signature == signature)
            return row.first;
    }
    return nullptr;
}

const std::vector<FuzzedCall> &Calls()
{
    static const std::vector<FuzzedCall> calls = [] {
        std::vector<FuzzedCall> all;
        std::set<Handler> handlers;
        for (const FuzzedRow &row : FuzzedRows()) {
            all.push_back({HandlerOf(row.signature), row.function});
            handlers.insert(all.back().handler);
        }
        for (const std::string &signature : not_fuzzed)
            handlers.insert(HandlerOf(signature));
        // No handler is forgotten. Those of the adapter have a target of their own.
        for (const SignatureRow &row : SignatureTable())
            Require(row.first == nullptr || handlers.count(row.first) != 0 ||
                    row.signature.starts_with("SIGNATURE_VADP"));
        Require(handlers.count(nullptr) == 0);
        return all;
    }();
    return calls;
}

void *Target(const std::string &function, std::uint8_t answer, std::size_t readable)
{
    const FakeModule::Exports vorn = VornStandIn(answer);
    const auto found = vorn.find(function);
    ScriptRecorders(answer, readable);
    return found != vorn.end() ? found->second : Recorders().at(function);
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
    const FuzzedCall &call = Calls()[input.Byte() % Calls().size()];
    const std::uint8_t answer = input.Byte();
    const std::uint8_t parents_answer = input.Byte();
    const Bytes content = input.Rest();
    void *const target = Target(call.function, answer, content.size());
    {
        CIPCCommunication channel;
        WideString error;
        Require(channel.Attach(u"pipe", error));
        if (!content.empty())
            GiveSection(channel, content);
        DeliverParentsAnswer(parents_answer);
        try {
            call.handler(channel, target);
            // A channel that is still open has answered the parent.
            const char last = RequireFrames();
            Require(!fake_pipe.is_open || last == 'S' || last == 'E');
        } catch (const std::exception &) {
            // No memory, or a call that would have faulted: the run ends with exit code 0.
        }
    }
    RequireAllReleased();
    return 0;
}
