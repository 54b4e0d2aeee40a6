#include "callers/library_caller.h"
#include "callers/library_caller_alt.h"
#include "families/vorn/vorn.h"
#include "host/request_loop.h"
#include "logging/log_manager.h"
#include "support/heap_probe.h"
#include "unit/channel_fixture.h"

#include <array>
#include <cstring>

namespace kessil::test {
namespace {

std::uint32_t BackupType()
{
    return 3;
}

std::uint32_t ReadFile(std::uint64_t, std::uint64_t, void *data, std::uint32_t size, std::uint32_t *count)
{
    std::memset(data, 'x', size);
    *count = size;
    return 0;
}

void NoHook(CIPCCommunication & /*channel*/, const WideString & /*name*/, platform::ModuleHandle /*module*/) {}

class AllocationTest : public ChannelTest
{
protected:
    // Serves `frame` 50 times to warm up and 1000 times more; returns how often these asked for memory.
    std::size_t RequestsOfAThousand(const Bytes &section, const Bytes &frame, std::size_t reply_size)
    {
        GetLogManager()->Config().level = log_error;
        fake_module.Add(u"lib", {{"GetBackupType", reinterpret_cast<void *>(BackupType)},
                                 {"VornReadFile", reinterpret_cast<void *>(ReadFile)}});
        fake_section.Add(u"s0", section);
        fake_pipe.Deliver(LoadFrame(u"lib"));
        fake_pipe.Deliver(ResizeFrame(u"s0", section.size()));
        std::size_t before = 0;
        std::size_t after = 0;
        for (int i = 0; i < 50; ++i)
            fake_pipe.Deliver(frame);
        fake_pipe.Do([&before] { before = HeapProbe::Requests(); });
        for (int i = 0; i < 1000; ++i)
            fake_pipe.Deliver(frame);
        fake_pipe.Do([&after] { after = HeapProbe::Requests(); });
        fake_pipe.Deliver(Hex("66 01"));
        // The fakes' own notes would need memory.
        call_log.recording = false;
        fake_pipe.written.reserve(1100 * reply_size);
        fake_pipe.writes.reserve(1100);

        constexpr std::array rows = {SignatureRow{"SIGNATURE_GetBackupType", Process_GetBackupType, nullptr},
                                     SignatureRow{"SIGNATURE_VornReadFile", Process_VornReadFile, nullptr}};
        CLibraryCaller caller(rows, NoHook);
        CLibraryCallerAlt caller_alt(rows, NoHook);
        RequestLoop loop(channel, caller, caller_alt, {}, error);
        EXPECT_EQ(loop.Run(), 0);
        EXPECT_EQ(fake_pipe.writes.size(), 1052u);
        EXPECT_EQ(fake_pipe.written.size(), 1052 * reply_size);
        EXPECT_GT(before, 0u);
        return after - before;
    }
};

TEST_F(AllocationTest, SteadyGetBackupTypeAllocatesNothing)
{
    EXPECT_EQ(RequestsOfAThousand(Repeat(0, 64), CallFrame(u"", "GetBackupType", "SIGNATURE_GetBackupType"), 5), 0u);
    EXPECT_EQ(Section(4), Hex("00 00 00 03"));
}

TEST_F(AllocationTest, SteadyGetBackupTypeOfANamedLibraryAllocatesNothing)
{
    EXPECT_EQ(RequestsOfAThousand(Repeat(0, 64), CallFrame(u"lib", "GetBackupType", "SIGNATURE_GetBackupType"), 5), 0u);
}

TEST_F(AllocationTest, SteadyVornReadFileAllocatesNothing)
{
    const Bytes request = Repeat(0, 16) + Be32(65536) + Repeat(0, 4) + Repeat(0, 65536) + Be32(65536);
    EXPECT_EQ(RequestsOfAThousand(request + Repeat(0, 64), CallFrame(u"", "VornReadFile", "SIGNATURE_VornReadFile"), 5),
              0u);
    EXPECT_EQ(Section(24 + 65536), Repeat(0, 16) + Be32(65536) + Repeat(0, 4) + Repeat('x', 65536));
}

// The probe itself: a call that is known to need memory is seen.
TEST_F(AllocationTest, CallThatIsRefusedIsSeenToAllocate)
{
    const Bytes reply = FailureFrame(u"Invalid signature");
    fake_module.Add(u"lib", {{"GetBackupType", reinterpret_cast<void *>(BackupType)}});
    const std::array rows = {SignatureRow{"SIG", Process_GetBackupType, nullptr}};
    CLibraryCaller caller(rows, NoHook);
    caller.LoadLibraryW(u"lib", channel);
    Forget();
    const IPCStruct_FunctionCall call{u"", "GetBackupType", "SIGNATURE_OfNoRow"};
    const std::size_t before = HeapProbe::Requests();
    caller.CallFunction(call, channel);
    EXPECT_GT(HeapProbe::Requests(), before);
    EXPECT_EQ(fake_pipe.written, reply);
}

} // namespace
} // namespace kessil::test
