#include "rows/expectations.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace kessil::test {
namespace {

using Lines = std::vector<std::string>;

Bytes InSection(const std::vector<std::string> &in)
{
    return Joined(in) + Repeat(0xEE, spare);
}

void ExpectSection(Rig &rig, const Bytes &out, const Bytes &before)
{
    ASSERT_LE(out.size(), before.size());
    EXPECT_EQ(rig.Section(before.size()), out + Behind(out.size(), before));
}

// How many bytes of the in-list are left when it is cut.
std::vector<std::size_t> CutsOf(const std::vector<std::string> &in)
{
    std::vector<std::size_t> sizes;
    std::size_t end = 0;
    for (const std::string &element : in) {
        sizes.push_back(end);
        const std::size_t next = end + Hex(element).size();
        while (++end < next) {
            if (rig_can.cuts_any_byte)
                sizes.push_back(end);
        }
    }
    return sizes;
}

template <class AnyRow>
void ExpectRefusalOfEachCut(Rig &rig, const AnyRow &row)
{
    rig.Begin();
    for (const std::size_t size : CutsOf(row.in)) {
        SCOPED_TRACE("cut behind " + std::to_string(size) + " bytes");
        rig.Give(First(size, Joined(row.in)));
        rig.Call(row.function, row.signature);
        rig.ExpectSent(FailureFrame(row.input_failure));
        EXPECT_EQ(rig.Seen(), Lines());
    }
}

// What a section has to hold for the answer that is scripted.
std::uint64_t Needed(const Row &row)
{
    return row.grown != 0 ? row.grown : row.room;
}

template <class AnyRow>
void Prepare(Rig &rig, const AnyRow &row)
{
    rig.Begin();
    Take(rig, row.before);
    rig.Script(row.function, row.script);
    rig.Script("GetErrorMessage", "text=" + row.error_text);
}

// The announcement of the room that the row says, and behind it the refusal.
void ExpectEnd(const Bytes &sent, std::uint64_t room, const Bytes &refusal)
{
    ASSERT_GE(sent.size(), refusal.size() + 8);
    EXPECT_EQ(Last(refusal.size(), sent), refusal);
    EXPECT_EQ(First(8, Last(refusal.size() + 8, sent)), Be64(room)) << "the size asked for";
}

Bytes ValuesOf(const CommandRow &row, std::size_t count)
{
    Bytes bytes;
    for (std::size_t value = 0; value < count; ++value)
        bytes += Hex(row.in[value].bytes);
    return bytes;
}

} // namespace

Bytes Joined(const std::vector<std::string> &elements)
{
    Bytes bytes;
    for (const std::string &element : elements)
        bytes += Hex(element);
    return bytes;
}

void Take(Rig &rig, const std::vector<Step> &steps)
{
    for (const Step &step : steps) {
        rig.Script(step.function, step.script);
        rig.Give(InSection(step.in));
        rig.Call(step.function, step.signature);
        rig.ExpectSent(SuccessFrame());
    }
    rig.ForgetSeen();
}

void ExpectAnswer(Rig &rig, const Row &row)
{
    rig.Begin();
    rig.Script(row.function, row.script);
    const Bytes before = InSection(row.in);
    rig.Give(before);
    rig.Call(row.function, row.signature);
    rig.ExpectSent(SuccessFrame());
    ExpectSection(rig, Hex(row.out), before);
    EXPECT_EQ(rig.Seen(), Lines{row.function + row.recorded});
}

void ExpectAnswer(Rig &rig, const AdapterRow &row)
{
    Prepare(rig, row);
    const Bytes before = InSection(row.in);
    rig.Give(before);
    rig.Call(row.function, row.signature);
    if (rig_can.sees_the_log) {
        EXPECT_EQ(rig.FamilyLog(), row.logged);
    }
    rig.ExpectSent(Hex(row.frames) + SuccessFrame());
    ExpectSection(rig, Hex(row.out), before);
    EXPECT_EQ(rig.Seen(), row.seen);
}

void ExpectAnswer(Rig &rig, const CommandRow &row)
{
    Prepare(rig, row);
    rig.Command(row, ValuesOf(row, row.in.size()));
    if (rig_can.sees_the_log) {
        EXPECT_EQ(rig.FamilyLog(), row.logged);
    }
    rig.ExpectSent(Hex(row.reply));
    EXPECT_EQ(rig.Seen(), row.seen);
}

void ExpectRefusedInput(Rig &rig, const Row &row)
{
    ExpectRefusalOfEachCut(rig, row);
}

void ExpectRefusedInput(Rig &rig, const AdapterRow &row)
{
    ExpectRefusalOfEachCut(rig, row);
}

void ExpectGrowth(Rig &rig, const Row &row)
{
    rig.Begin();
    rig.Script(row.function, row.script);
    const Bytes before = Joined(row.in);
    rig.Give(before);
    const std::uint64_t size = Needed(row);
    rig.CallAndGrow(row.function, row.signature, size, SuccessFrame());
    rig.ExpectSent(SuccessFrame());
    // The section's content moves along, and zeros follow.
    Bytes after = First(size, before) + Repeat(0, size - std::min<std::size_t>(size, before.size()));
    const Bytes out = Hex(row.out);
    ASSERT_LE(out.size(), after.size());
    for (std::size_t at = 0; at < out.size(); ++at)
        after[at] = out[at] == 0xEE ? after[at] : out[at];
    EXPECT_EQ(rig.Section(after.size()), after);
    EXPECT_EQ(rig.Seen(), Lines{row.function + row.recorded});
}

bool Grows(const Row &row)
{
    return Needed(row) > Joined(row.in).size();
}

bool CanRefuseOutput(const Row &row)
{
    return (rig_can.takes_room_away && !row.writes_section) || row.room > Joined(row.in).size();
}

void ExpectRefusedOutput(Rig &rig, const Row &row)
{
    const Bytes refusal = FailureFrame(row.output_failure);
    rig.Begin();
    rig.Give(Joined(row.in));
    // What the library would write into may be gone: it answers nothing.
    if (!rig_can.takes_room_away || row.writes_section) {
        rig.CallAndGrow(row.function, row.signature, row.room, FailureFrame(u"no room"));
        rig.ExpectSent(refusal);
    } else {
        rig.TakeRoomAwayInTheCall();
        rig.Call(row.function, row.signature);
        if (row.output_failure.empty()) {
            EXPECT_EQ(rig.Sent(), SuccessFrame());
        } else
            ExpectEnd(rig.Sent(), row.room, refusal);
    }
    EXPECT_EQ(rig.Seen(), Lines{row.function + row.recorded});
}

void ExpectRefusedOutput(Rig &rig, const AdapterRow &row)
{
    Prepare(rig, row);
    // What the library would write into is gone.
    if (row.script.find("data=") != std::string::npos)
        rig.Script(row.function, "result=1");
    rig.Give(Joined(row.in));
    rig.TakeRoomAwayInTheCall();
    rig.Call(row.function, row.signature);
    if (row.output_failure.empty())
        EXPECT_EQ(Last(5, rig.Sent()), SuccessFrame());
    else
        ExpectEnd(rig.Sent(), row.room, FailureFrame(row.output_failure));
    EXPECT_NE(rig.Seen(), Lines());
}

void ExpectDoubleAnswer(Rig &rig, const AdapterRow &row)
{
    Prepare(rig, row);
    rig.Unbind();
    const Bytes before = InSection(row.in);
    rig.Give(before);
    rig.Call(row.function, row.signature);
    const Bytes sent = rig.Sent();
    const Bytes refusal = FailureFrame(row.error_failure);
    EXPECT_NE(std::search(sent.begin(), sent.end(), refusal.begin(), refusal.end()), sent.end());
    EXPECT_EQ(sent.size(), refusal.size() + Hex(row.frames).size() + SuccessFrame().size());
    EXPECT_EQ(Last(5, sent), SuccessFrame());
    const Bytes out = Hex(row.out);
    ExpectSection(rig, First(out.size() - row.error_text.size() - 1, out) + Bytes{0}, before);
}

void ExpectCuts(const CommandRow &row)
{
    ASSERT_EQ(row.cuts.size(), row.in.size());
    for (std::size_t value = 0; value < row.in.size(); ++value) {
        if (!rig_can.cuts_any_value && !row.in[value].is_text)
            continue;
        SCOPED_TRACE("value " + std::to_string(value));
        const std::unique_ptr<Rig> rig = NewRig(adapter_library);
        Prepare(*rig, row);
        rig->CutCommand(row, ValuesOf(row, value));
        rig->ExpectSent(Hex(row.cuts[value].reply));
        EXPECT_EQ(rig->Seen(), row.cuts[value].seen);
        rig->Finish();
    }
}

} // namespace kessil::test
