#pragma once

#include "protocol/conversation.h"
#include "protocol/recorder.h"
#include "rows/row.h"

#include <gtest/gtest.h>

namespace kessil::test {

/// The in-list of a row as it lies in the section, cut behind the first `elements` of them.
inline Bytes InList(const Row &row, std::size_t elements)
{
    Bytes bytes;
    for (std::size_t at = 0; at < elements; ++at)
        bytes += Hex(row.in[at]);
    return bytes;
}
inline Bytes InList(const Row &row)
{
    return InList(row, row.in.size());
}

/// Calls the row's function of `library` in a helper of its own, and expects what the row says.
inline void ExpectAnswer(const Row &row, const std::string &library)
{
    constexpr std::size_t spare = 4096;
    const Recorder recorder(row.function + " " + row.script + "\n");
    Conversation talk(0);
    const Bytes in_list = InList(row);
    const Bytes before = in_list + Repeat(0xEE, spare);
    Section section = Announce(talk, static_cast<std::uint32_t>(before.size()));
    section.Put(0, before);
    talk.Load(TargetLibrary(library));
    talk.Send(CallFrame(u"", row.function, row.signature));
    talk.Expect(SuccessFrame());
    const Bytes out = Hex(row.out);
    section.Expect(0, out + Behind(out.size(), before));
    EXPECT_EQ(recorder.Lines(), row.function + row.recorded + "\n");
    talk.Send(OrderlyStop());
    talk.End();
}

/// Cuts the in-list before each of its elements in turn, by the end of the section, and expects the row's refusal each
/// time and no call of the function.
inline void ExpectRefusedInput(const Row &row, const std::string &library)
{
    const Recorder recorder;
    Conversation talk(0);
    talk.Load(TargetLibrary(library));
    const Bytes refusal = FailureFrame(row.input_failure);
    char16_t digit = u'2';
    for (std::size_t elements = 0; elements < row.in.size(); ++elements) {
        const Bytes cut = InList(row, elements);
        // Without a section there is nothing to read either.
        if (!cut.empty()) {
            Section section = Announce(talk, static_cast<std::uint32_t>(cut.size()), digit++);
            section.Put(0, cut);
        }
        talk.Send(CallFrame(u"", row.function, row.signature));
        talk.Expect(refusal);
    }
    EXPECT_EQ(recorder.Lines(), "");
    talk.Send(OrderlyStop());
    talk.End();
}

/// Base of a family's own suite over its rows.
class FamilyTest : public ::testing::TestWithParam<Row>
{};

inline std::string NameOfRow(const ::testing::TestParamInfo<Row> &info)
{
    return info.param.function + "_" + std::to_string(info.index);
}

inline void PrintTo(const Row &row, std::ostream *out)
{
    *out << row.signature;
}

} // namespace kessil::test
