#pragma once

#include "families/signature_table.h"
#include "rows/exports.h"
#include "rows/row.h"
#include "unit/channel_fixture.h"
#include "unit/families/stand_in.h"

#include <algorithm>
#include <map>
#include <string>

namespace kessil::test {

/// Base of a family's own suite. The rows of one family on fakes: its handlers, found by their signatures, and a
/// stand-in library in this process.
class FamilyTest : public ChannelTest, public ::testing::WithParamInterface<Row>
{
protected:
    FamilyTest() { stand_in = StandIn(); }

    // Calls the handler of the row over a section of these bytes.
    void Call(const Row &row, const Exports &exports, const Bytes &bytes)
    {
        Forget();
        GiveSection(u"s0", bytes);
        const auto rows = SignatureTable();
        const auto found =
            std::find_if(rows.begin(), rows.end(), [&](const auto &other) { return row.signature == other.signature; });
        ASSERT_NE(found, rows.end()) << row.signature;
        ASSERT_NE(found->first, nullptr) << row.signature;
        found->first(channel, exports.at(row.function));
    }

    void ExpectAnswer(const Row &row, const Exports &exports)
    {
        stand_in.script[row.function] = row.script;
        const Bytes before = InList(row, row.in.size()) + Repeat(0xEE, spare);
        Call(row, exports, before);
        EXPECT_EQ(fake_pipe.written, SuccessFrame());
        const Bytes out = Hex(row.out);
        const Bytes after = out + Behind(out.size(), before);
        EXPECT_EQ(Section(before.size()), after);
        EXPECT_THAT(stand_in.lines, ::testing::ElementsAre(row.function + row.recorded));
    }

    // The in-list cut before each of its elements in turn.
    void ExpectRefusedInput(const Row &row, const Exports &exports)
    {
        for (std::size_t elements = 0; elements < row.in.size(); ++elements) {
            Call(row, exports, InList(row, elements));
            EXPECT_EQ(fake_pipe.written, FailureFrame(row.input_failure)) << elements;
            EXPECT_THAT(stand_in.lines, ::testing::IsEmpty()) << elements;
        }
    }

    // While the function runs, the section is replaced by one without room, and the parent refuses a larger one. The
    // library answers nothing in that call: what it would write into is gone.
    void ExpectRefusedOutput(const Row &row, const Exports &exports)
    {
        stand_in.on_call = [this] { TakeRoomAway(); };
        Call(row, exports, InList(row, row.in.size()));
        EXPECT_THAT(stand_in.lines, ::testing::ElementsAre(row.function + row.recorded));
        if (row.output_failure.empty()) {
            EXPECT_EQ(fake_pipe.written, SuccessFrame());
            return;
        }
        const Bytes refusal = FailureFrame(row.output_failure);
        ASSERT_GT(fake_pipe.written.size(), refusal.size());
        EXPECT_EQ(fake_pipe.written.front(), 'R');
        if (row.room != 0) {
            const Bytes &frames = fake_pipe.written;
            const auto end_of_growth = frames.end() - static_cast<std::ptrdiff_t>(refusal.size());
            EXPECT_EQ(Bytes(end_of_growth - 8, end_of_growth), Be64(row.room)) << "the size asked for";
        }
        EXPECT_EQ(Bytes(fake_pipe.written.end() - static_cast<std::ptrdiff_t>(refusal.size()), fake_pipe.written.end()),
                  refusal);
    }

    static Bytes InList(const Row &row, std::size_t elements)
    {
        Bytes bytes;
        for (std::size_t at = 0; at < elements; ++at)
            bytes = bytes + Hex(row.in[at]);
        return bytes;
    }

private:
    static constexpr std::size_t spare = 4096;

    void TakeRoomAway()
    {
        GiveSection(u"tiny", Bytes());
        fake_pipe.Deliver(FailureFrame(u"no room"));
    }
};

inline std::string NameOfRow(const ::testing::TestParamInfo<Row> &info)
{
    return info.param.function + "_" + std::to_string(info.index);
}

inline void PrintTo(const Row &row, std::ostream *out)
{
    *out << row.signature;
}

} // namespace kessil::test
