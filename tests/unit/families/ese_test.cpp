#include "families/ese/ese.h"

#include "platform/last_error.h"
#include "rows/expectations.h"
#include "rows/exports.h"
#include "targets/ese_recorder.h"
#include "targets/leave_last_error.h"
#include "unit/families/fakes_rig.h"

void LeaveLastError(std::uint32_t code)
{
    kessil::platform::SetLastError(code);
}

namespace kessil::test {
namespace {

const Exports &exports = EseExports();

class EseTest : public ChannelTest
{
protected:
    EseTest() { stand_in = StandIn(); }
};

const Bytes read_16 = Hex("00 00 00 0A 00 00 00 0B 00 00 00 10 EE EE EE EE") + Repeat('-', 16);

TEST_F(EseTest, ReadFileInASectionOf48StaysThere)
{
    stand_in.script["HrESEBackupReadFile"] = "fill=61626364 count=4";
    GiveSection(u"s0", read_16 + Repeat(0xEE, 16));
    Process_HrESEBackupReadFile(channel, reinterpret_cast<void *>(HrESEBackupReadFile));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_EQ(Section(48), First(16, read_16) + Plain("abcd------------") + Hex("00 00 00 04 00 00 00 00 00 00 00 00") +
                               Repeat(0xEE, 4));
}

// Of the 48 bytes four are never used; so 47 would do, and are replaced all the same.
TEST_F(EseTest, ReadFileInASectionOf47GrowsItAndTheDataMoveAlong)
{
    stand_in.script["HrESEBackupReadFile"] = "fill=61626364 count=4";
    GiveSection(u"s0", read_16 + Repeat(0xEE, 15));
    fake_pipe.Deliver(SuccessFrame());
    Process_HrESEBackupReadFile(channel, reinterpret_cast<void *>(HrESEBackupReadFile));
    EXPECT_EQ(fake_pipe.written, ResizeFrame(u"s1", 48) + SuccessFrame());
    EXPECT_EQ(Section(44), First(16, read_16) + Plain("abcd------------") + Hex("00 00 00 04 00 00 00 00 00 00 00 00"));
}

// No copy on the way: the library gets the place in the section where the parent will look.
TEST_F(EseTest, ReadFileGetsTheSectionsOwnBytes)
{
    static void *seen = nullptr;
    GiveSection(u"s0", read_16 + Repeat(0xEE, 16));
    using Function = std::uint32_t(std::uint64_t, std::uint64_t, void *, std::uint32_t, std::uint32_t *);
    Function *const function = [](std::uint64_t, std::uint64_t, void *data, std::uint32_t,
                                  std::uint32_t *) -> std::uint32_t {
        seen = data;
        return 0;
    };
    Process_HrESEBackupReadFile(channel, reinterpret_cast<void *>(function));
    EXPECT_EQ(seen, channel.SharedView() + 16);
}

// A GUID near the end of the section: what would lie behind it is never looked at.
TEST_F(EseTest, AddDatabaseRefusesAGuidThatTheSectionCuts)
{
    // The length says 4, and the list lies right behind these; the section ends 4 to 1 bytes before the GUID does.
    const Bytes in_list =
        Hex("00 00 00 01 00 00") + Hex("00 00 00 04 EE EE EE EE EE EE A0 A1 A2 A3") + Hex("00 00 00 04 00 00 00 00");
    void *const function = reinterpret_cast<void *>(HrESERestoreAddDatabase);
    for (std::size_t spare = 0; spare < 4; ++spare) {
        Forget();
        GiveSection(u"s0", in_list + Repeat(0, spare));
        Process_HrESERestoreAddDatabase(channel, function);
        EXPECT_EQ(fake_pipe.written, FailureFrame(u"Failed to serialise input (Process_HrESERestoreAddDatabase)"));
        EXPECT_THAT(stand_in.lines, ::testing::IsEmpty());
    }
    Forget();
    GiveSection(u"s0", in_list + Repeat(0, 4));
    fake_pipe.Deliver(SuccessFrame());
    Process_HrESERestoreAddDatabase(channel, function);
    EXPECT_EQ(stand_in.lines.size(), 1u);
}

} // namespace
} // namespace kessil::test
