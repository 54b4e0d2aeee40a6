#include "channel/ipc_communication.h"
#include "families/signature_table.h"
#include "families/vadp/adapter_log.h"
#include "families/vadp/binding.h"
#include "families/vadp/handles.h"
#include "fuzz/fuzz_support.h"
#include "fuzz/fuzzed_commands.h"
#include "fuzz/recorders.h"
#include "rows/exports.h"

#include <algorithm>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

// One byte: whether the adapter is bound. Then calls, each of them one byte: which handler; one: what the adapter
// answers; one: how many bytes follow, which are the section's content or what the pipe delivers. A call whose
// arguments come through the pipe is the last one.

using namespace kessil;
using namespace kessil::test;

namespace {

constexpr const char16_t *adapter = u"tarnlink_windows_x64.dll";

bool IsAdapters(const SignatureRow &row)
{
    return row.signature.starts_with("SIGNATURE_VADP");
}

void Forget()
{
    for (HandleTable *const table : {&g_vBackupOptions, &g_vListing, &g_vACLInfo, &g_vBackupSession, &g_vRestoreSession,
                                     &g_vBackupFile, &g_vRestoreFile})
        table->Reset();
    g_mACLInfoIndex.clear();
    g_pCredentials = g_pListingCache = g_pDisk = nullptr;
    g_pfnGetErrorMessage = nullptr;
    g_pfnFreeErrorInfo = nullptr;
    g_pfnFreeCredentials = nullptr;
    g_pfnSetLoggingCallBack = nullptr;
}

void Bind(CIPCCommunication &channel)
{
    fake_module.Add(adapter, AdapterExports());
    platform::ModuleHandle const module = platform::LoadModule(adapter);
    bindAdapterFunctions(channel, adapter, module);
    platform::FreeModule(module);
}

// Has the channel take in a section of that content.
void GiveSection(CIPCCommunication &channel, char16_t digit, const Bytes &content)
{
    const WideString name = {u's', digit};
    fake_section.Add(name, content);
    fake_pipe.Deliver(ResizeFrame(name, content.size()));
    fake_pipe.Deliver(Frame('z', {}));
    char type = 0;
    unsigned char *data = nullptr;
    std::uint32_t size = 0;
    bool eof = false;
    WideString error;
    Require(channel.GetNextRequest(type, data, size, eof, error) && type == 'z');
}

Bytes Next(Input &input)
{
    Bytes bytes(input.Byte());
    for (unsigned char &byte : bytes)
        byte = input.Byte();
    return bytes;
}

struct FuzzedHandler
{
    FuzzedCommand command;
    Handler handler;
};

const std::vector<FuzzedHandler> &Handlers()
{
    static const std::vector<FuzzedHandler> handlers = [] {
        std::vector<FuzzedHandler> all;
        for (const FuzzedCommand &command : FuzzedCommands()) {
            const auto row = std::ranges::find_if(
                SignatureTable(), [&](const SignatureRow &other) { return command.signature == other.signature; });
            all.push_back({command, command.in_section ? row->first : row->second});
        }
        // No handler is forgotten, save the one that trusts its parent's count, and the two that do nothing.
        std::size_t forgotten = 0;
        for (const SignatureRow &row : SignatureTable()) {
            for (const Handler handler : {row.first, row.second}) {
                const bool known =
                    std::ranges::any_of(all, [&](const auto &other) { return other.handler == handler; });
                forgotten += IsAdapters(row) && handler != nullptr && !known ? 1 : 0;
            }
        }
        Require(forgotten == 3);
        return all;
    }();
    return handlers;
}

// False when bytes of the call may still lie in the pipe.
bool Run(CIPCCommunication &channel, const FuzzedHandler &fuzzed, Input &input, char16_t digit)
{
    const FuzzedCommand &command = fuzzed.command;
    ScriptAdapter(input.Byte(), command.DeletesListings());
    const Bytes content = Next(input);
    if (command.in_section && !content.empty())
        GiveSection(channel, digit, content);
    else if (!content.empty())
        fake_pipe.Deliver(content);
    if (!command.in_section)
        fake_pipe.DeliverNothing();
    fake_pipe.written.clear();
    fuzzed.handler(channel, AdapterExports().at(command.function));
    if (command.in_section && !command.MixesBareValues() && fake_pipe.is_open)
        Require(RequireFrames() != 0);
    return command.in_section && fake_pipe.is_open;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    ResetAll();
    Forget();
    const NoMemoryFrom limit(memory_limit);
    Input input(bytes, size);
    {
        CIPCCommunication channel;
        WideString error;
        Require(channel.Attach(u"pipe", error));
        if (input.Byte() % 2 == 0)
            Bind(channel);
        try {
            for (char16_t digit = u'0'; digit < u'8'; ++digit) {
                if (!Run(channel, Handlers()[input.Byte() % Handlers().size()], input, digit))
                    break;
            }
        } catch (const std::exception &) {
            // No memory, an absurd count, or a call that would have faulted: the run ends with exit code 0.
        }
        sendAdapterLogAlt(channel);
    }
    RequireAllReleased();
    return 0;
}
