#pragma once

#include "protocol/conversation.h"
#include "protocol/recorder.h"
#include "rows/adapter_row.h"

#include <gtest/gtest.h>

#include <memory>

namespace kessil::test {

/// The stand-in adapter, by the file name that it is known by.
inline constexpr const char *adapter_library = "recorder_tarnlink_windows_x64.dll";

/// A helper of a row's own, in which the steps before it have been taken and their record is over.
class AdapterTalk
{
public:
    /// `library` serves the calls of both generations.
    template <class Row>
    explicit AdapterTalk(const Row &row, const std::string &library = adapter_library)
        : m_recorder(Script(row)), m_talk(std::make_unique<Conversation>(0))
    {
        Load(library);
        for (const Step &step : row.before) {
            CallWithSection(step.function, step.signature, Joined(step.in) + Repeat(0xEE, spare));
            Talk().Expect(SuccessFrame());
        }
        Forget();
    }

    Conversation &Talk() { return *m_talk; }

    /// Loads the library for both generations.
    void Load(const std::string &library)
    {
        Talk().Load(TargetLibrary(library));
        const std::string name = platform::ToUtf8(TargetLibrary(library));
        Talk().Send(LoadAltFrame(name));
        Talk().Expect(Hex("00000001"));
    }

    /// Announces a section of these bytes.
    Section &Give(const Bytes &bytes)
    {
        m_digit = m_digit == u'6' ? u'7' : u'6';
        m_section = std::make_unique<Section>(Announce(Talk(), static_cast<std::uint32_t>(bytes.size()), m_digit));
        m_section->Put(0, bytes);
        return *m_section;
    }

    /// Announces a section of these bytes, if there are any, and asks for the call.
    Section &CallWithSection(const std::string &function, const std::string &signature, const Bytes &bytes)
    {
        if (!bytes.empty())
            Give(bytes);
        Call(function, signature);
        return *m_section;
    }

    /// Asks for the call with the section as it is, if there is one.
    void Call(const std::string &function, const std::string &signature)
    {
        Talk().Send(CallFrame(u"", function, signature));
    }

    /// Asks for the command, with these values behind it.
    void Command(std::uint8_t command, const Bytes &values) { Talk().Send(CommandRequest(command, values)); }

    /// What the adapter has seen since Forget.
    std::vector<std::string> Seen() const
    {
        std::vector<std::string> lines;
        std::istringstream record(m_recorder.Lines().substr(m_seen));
        for (std::string line; std::getline(record, line);)
            lines.push_back(line);
        return lines;
    }
    void Forget() { m_seen = m_recorder.Lines().size(); }

    void End()
    {
        Talk().Send(OrderlyStop());
        Talk().End();
    }

    static Bytes Joined(const std::vector<std::string> &elements)
    {
        Bytes bytes;
        for (const std::string &element : elements)
            bytes += Hex(element);
        return bytes;
    }

    static constexpr std::size_t spare = 4096;

private:
    template <class Row>
    static std::string Script(const Row &row)
    {
        std::string script;
        for (const Step &step : row.before)
            script += step.function + " " + step.script + "\n";
        return script + row.function + " " + row.script + "\nGetErrorMessage text=" + row.error_text + "\n";
    }

    Recorder m_recorder;
    std::unique_ptr<Conversation> m_talk;
    std::unique_ptr<Section> m_section;
    char16_t m_digit = u'7';
    std::size_t m_seen = 0;
};

/// Expects what the row says.
inline void ExpectAnswer(const AdapterRow &row)
{
    AdapterTalk talk(row);
    const Bytes before = AdapterTalk::Joined(row.in) + Repeat(0xEE, AdapterTalk::spare);
    const Section &section = talk.CallWithSection(row.function, row.signature, before);
    talk.Talk().Expect(Hex(row.frames) + SuccessFrame());
    const Bytes out = Hex(row.out);
    section.Expect(0, out + Behind(out.size(), before));
    EXPECT_EQ(talk.Seen(), row.seen);
    talk.End();
}

/// The same of a command that reaches the handler of the signature: the request has no frame, all else is as it was.
inline void ExpectAnswerByCommand(const AdapterRow &row, std::uint8_t command)
{
    AdapterTalk talk(row);
    const Bytes before = AdapterTalk::Joined(row.in) + Repeat(0xEE, AdapterTalk::spare);
    const Section &section = talk.Give(before);
    talk.Command(command, {});
    talk.Talk().Expect(Hex(row.frames) + SuccessFrame());
    const Bytes out = Hex(row.out);
    section.Expect(0, out + Behind(out.size(), before));
    EXPECT_EQ(talk.Seen(), row.seen);
    talk.End();
}

/// Cuts the in-list before each of its elements in turn, by the end of the section, and expects the row's refusal each
/// time and no call of the function.
inline void ExpectRefusedInput(const AdapterRow &row)
{
    AdapterTalk talk(row);
    for (std::size_t elements = 0; elements < row.in.size(); ++elements) {
        // A section can't be empty: the first element is refused where nothing but a part of it fits, or, when one
        // byte would be enough for it, where there is no section yet.
        const Bytes cut = AdapterTalk::Joined({row.in.begin(), row.in.begin() + static_cast<std::ptrdiff_t>(elements)});
        if (cut.empty() && !row.before.empty())
            continue;
        if (!cut.empty())
            talk.Give(cut);
        talk.Call(row.function, row.signature);
        talk.Talk().Expect(FailureFrame(row.input_failure));
    }
    EXPECT_EQ(talk.Seen(), std::vector<std::string>());
    talk.End();
}

/// Expects what the row says, of a helper and of one whose pipe delivers each byte by itself.
inline void ExpectAnswer(const CommandRow &row)
{
    AdapterTalk talk(row);
    Bytes values;
    for (const Value &value : row.in)
        values += Hex(value.bytes);
    talk.Command(row.command, values);
    talk.Talk().Expect(Hex(row.reply));
    EXPECT_EQ(talk.Seen(), row.seen);
    talk.End();
}

/// Sends a text of more than 1024 bytes, of which nothing but the length comes, in the place of each text in turn.
inline void ExpectCuts(const CommandRow &row)
{
    ASSERT_EQ(row.cuts.size(), row.in.size());
    Bytes values;
    for (std::size_t value = 0; value < row.in.size(); ++value) {
        if (row.in[value].is_text) {
            AdapterTalk talk(row);
            talk.Command(row.command, values + Hex("00000401"));
            talk.Talk().Expect(Hex(row.cuts[value].reply));
            EXPECT_EQ(talk.Seen(), row.cuts[value].seen) << value;
            talk.End();
        }
        values += Hex(row.in[value].bytes);
    }
}

/// Base of the suites over rows.
class AdapterRowTest : public ::testing::TestWithParam<AdapterRow>
{};

class CommandRowTest : public ::testing::TestWithParam<CommandRow>
{};

template <class Row>
std::string NameOfAdapterRow(const ::testing::TestParamInfo<Row> &info)
{
    return info.param.function + "_" + std::to_string(info.index);
}

inline void PrintTo(const AdapterRow &row, std::ostream *out)
{
    *out << row.signature;
}

inline void PrintTo(const CommandRow &row, std::ostream *out)
{
    *out << row.signature;
}

} // namespace kessil::test
