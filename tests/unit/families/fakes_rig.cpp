#include "unit/families/fakes_rig.h"

#include "fakes/fake_module.h"
#include "fakes/fake_pipe.h"
#include "families/signature_table.h"
#include "families/vadp/adapter_log.h"
#include "families/vadp/binding.h"
#include "families/vadp/handles.h"
#include "platform/module.h"
#include "rows/exports.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace kessil::test {
namespace {

// The functions of all stand-in libraries. No two have the same name.
void *FunctionOf(const std::string &name)
{
    static const Exports all = [] {
        Exports functions;
        for (const Exports *library :
             {&AdapterExports(), &CwbExports(), &DominoExports(), &EseExports(), &MapiExports(), &VornExports()})
            functions.insert(library->begin(), library->end());
        return functions;
    }();
    return all.at(name);
}

void Run(Handler handler, CIPCCommunication &channel, const std::string &function, const std::string &signature)
{
    if (handler == nullptr)
        throw std::logic_error("no handler for " + signature);
    handler(channel, FunctionOf(function));
}

std::unique_ptr<FakesRig> shared;

} // namespace

SignatureRow Handlers(const std::string &signature)
{
    const auto rows = SignatureTable();
    const auto found =
        std::find_if(rows.begin(), rows.end(), [&](const SignatureRow &row) { return signature == row.signature; });
    if (found == rows.end())
        throw std::logic_error("no signature " + signature);
    return *found;
}

const Capabilities rig_can = {true, true, true, true, true};

std::unique_ptr<Rig> NewRig(const std::string & /*library*/)
{
    return std::make_unique<FakesRig>();
}

Rig &SharedRig(const std::string & /*library*/)
{
    if (!shared)
        shared = std::make_unique<FakesRig>();
    return *shared;
}

void DropRig(const std::string & /*library*/)
{
    shared.reset();
}

void FinishRigs()
{
    shared.reset();
}

FakesRig::FakesRig()
{
    Begin();
}

void FakesRig::Begin()
{
    channel.Close();
    ResetFakes();
    Attach();
    m_sections = 0;
    stand_in = StandIn();
    for (HandleTable *const table : {&g_vBackupOptions, &g_vListing, &g_vACLInfo, &g_vBackupSession, &g_vRestoreSession,
                                     &g_vBackupFile, &g_vRestoreFile})
        table->Reset();
    g_mACLInfoIndex.clear();
    g_pCredentials = g_pListingCache = g_pDisk = nullptr;
    Unbind();
    sendAdapterLogAlt(channel);
    fake_module.Add(adapter_name, AdapterExports());
    module = platform::LoadModule(adapter_name);
    bindAdapterFunctions(channel, adapter_name, module);
    Forget();
}

void FakesRig::Script(const std::string &function, const std::string &words)
{
    stand_in.script[function] = words;
}

void FakesRig::Give(const Bytes &content)
{
    GiveSection(u"s" + WideString(1, static_cast<char16_t>(u'0' + m_sections++ % 10)), content);
}

void FakesRig::Call(const std::string &function, const std::string &signature)
{
    Run(Handlers(signature).first, channel, function, signature);
}

void FakesRig::CallAndGrow(const std::string &function, const std::string &signature, std::uint64_t size,
                           const Bytes &answer)
{
    fake_pipe.Deliver(answer);
    Call(function, signature);
    const WideString grown = u"s" + WideString(1, m_sections % 10 == 1 ? u'1' : u'0');
    const Bytes announcement = ResizeFrame(grown, size);
    EXPECT_EQ(First(announcement.size(), fake_pipe.written), announcement);
    fake_pipe.written = Behind(announcement.size(), fake_pipe.written);
}

void FakesRig::CallOver(const Bytes &content, const std::string &function, const std::string &signature)
{
    Forget();
    Give(content);
    Call(function, signature);
}

void FakesRig::CallWithValues(const std::string &function, const std::string &signature, const Bytes &values)
{
    fake_pipe.Deliver(values);
    Run(Handlers(signature).second, channel, function, signature);
}

void FakesRig::Command(const CommandRow &row, const Bytes &values)
{
    CallWithValues(row.function, row.signature, values);
    EXPECT_TRUE(fake_pipe.IsReadOut());
}

void FakesRig::CutCommand(const CommandRow &row, const Bytes &values)
{
    fake_pipe.ends_with_nothing = true;
    CallWithValues(row.function, row.signature, values);
}

void FakesRig::ExpectSent(const Bytes &bytes)
{
    EXPECT_EQ(fake_pipe.written, bytes);
    Forget();
}

void FakesRig::TakeRoomAwayInTheCall()
{
    stand_in.on_call = [this, taken = false]() mutable {
        if (std::exchange(taken, true))
            return;
        GiveSection(u"tiny", Bytes());
        fake_pipe.Deliver(FailureFrame(u"no room"));
    };
}

Bytes FakesRig::Sent() const
{
    return fake_pipe.written;
}

std::vector<std::string> FakesRig::FamilyLog() const
{
    std::vector<std::string> lines;
    for (const std::string &record : Logged()) {
        const std::string component = std::string(" ") + vadp_component;
        const std::size_t at = record.find(component + ": ");
        if (at != std::string::npos)
            lines.push_back(record.substr(0, at) + record.substr(at + component.size()));
    }
    return lines;
}

void FakesRig::Unbind()
{
    g_pfnGetErrorMessage = nullptr;
    g_pfnFreeErrorInfo = nullptr;
    g_pfnFreeCredentials = nullptr;
    g_pfnSetLoggingCallBack = nullptr;
}

} // namespace kessil::test
