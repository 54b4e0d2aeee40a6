#include "protocol/conversation.h"
#include "protocol/recorder.h"

#include <gtest/gtest.h>

namespace kessil::test {
namespace {

constexpr auto library = "ese_recorder";

// Every call has its own last error, and none that an earlier call left.
TEST(EseLastError, IsTheCallsOwn)
{
    const Recorder recorder("HrESEBackupEnd result=1 error=0x57\n"
                            "HrESEBackupEnd result=0 error=0x58\n"
                            "HrESEBackupEnd result=2 error=0\n"
                            "HrESEBackupEnd result=3 error=0x80070005\n");
    Conversation talk(0);
    Section section = Announce(talk, 64);
    talk.Load(TargetLibrary(library));
    section.Put(0, Hex("00000009"));
    for (const char *const out : {"00000001 00000057", "00000000 00000000", "00000002 00000000", "00000003 80070005"}) {
        talk.Send(CallFrame(u"", "HrESEBackupEnd", "SIG_HR_ESE_BACKUP_END"));
        talk.Expect(SuccessFrame());
        section.Expect(0, Hex("00000009") + Hex(out));
    }
    talk.Send(OrderlyStop());
    talk.End();
}

} // namespace
} // namespace kessil::test
