#include "protocol/helper_rig.h"

#include <sstream>
#include <utility>

namespace kessil::test {
namespace {

std::map<std::string, std::unique_ptr<HelperRig>> shared;

} // namespace

const Capabilities rig_can = {false, false, false, false, false};

std::unique_ptr<Rig> NewRig(const std::string &library)
{
    return std::make_unique<HelperRig>(library);
}

Rig &SharedRig(const std::string &library)
{
    std::unique_ptr<HelperRig> &rig = shared[library];
    if (!rig)
        rig = std::make_unique<HelperRig>(library);
    return *rig;
}

void DropRig(const std::string &library)
{
    shared.erase(library);
}

void FinishRigs()
{
    for (const auto &[library, rig] : std::exchange(shared, {}))
        rig->Finish();
}

HelperRig::HelperRig(const std::string &library) : m_talk(std::make_unique<Conversation>(0))
{
    Talk().Load(TargetLibrary(library));
    if (library != adapter_library)
        return;
    Talk().Send(LoadAltFrame(platform::ToUtf8(TargetLibrary(library))));
    Talk().Expect(Be32(1));
}

HelperRig::~HelperRig()
{
    if (!Talk().Helper().HasEnded())
        Talk().Abandon();
}

void HelperRig::Begin()
{
    m_script.clear();
    m_recorder.Write("");
    ForgetSeen();
}

void HelperRig::Script(const std::string &function, const std::string &words)
{
    m_script[function] = words;
    std::string lines;
    for (const auto &[name, line] : m_script)
        lines += name + " " + line + "\n";
    m_recorder.Write(lines);
}

void HelperRig::Give(const Bytes &content)
{
    const Bytes bytes = content.empty() ? Bytes{0xEE} : content;
    m_grown.reset();
    m_digit = m_digit == u'6' ? u'7' : u'6';
    auto section = std::make_unique<test::Section>(
        test::Section::Create(Talk().SectionName(m_digit), static_cast<std::uint32_t>(bytes.size())));
    section->Put(0, bytes);
    Talk().Send(ResizeFrame(section->Name(), bytes.size()));
    Talk().Expect(SuccessFrame());
    m_section = std::move(section);
}

void HelperRig::Call(const std::string &function, const std::string &signature)
{
    Talk().Send(CallFrame(u"", function, signature));
}

void HelperRig::CallAndGrow(const std::string &function, const std::string &signature, std::uint64_t size,
                            const Bytes &answer)
{
    Call(function, signature);
    const WideString name = Talk().SectionName(u'0');
    Talk().Expect(ResizeFrame(name, size));
    if (answer == SuccessFrame())
        m_grown = std::make_unique<test::Section>(test::Section::Open(name, static_cast<std::uint32_t>(size)));
    Talk().Send(answer);
}

void HelperRig::Command(std::uint8_t command, const Bytes &values)
{
    Talk().Send(CommandRequest(command, values));
}

void HelperRig::Command(const CommandRow &row, const Bytes &values)
{
    Command(row.command, values);
}

// A text of more than 1024 bytes, of which nothing but the length comes.
void HelperRig::CutCommand(const CommandRow &row, const Bytes &values)
{
    Command(row.command, values + Be32(1025));
}

// Nothing else was sent if what follows is the answer to a request that always has the same one.
void HelperRig::ExpectSent(const Bytes &bytes)
{
    Talk().Expect(bytes);
    Talk().Send(CallFrame(u"", "no_such_function", ""));
    Talk().Expect(ErrorFrame(0, 0, u"Failed to get function address..."));
}

Bytes HelperRig::Section(std::size_t count) const
{
    return m_grown ? m_grown->Get(0, count) : m_section->Get(0, count);
}

std::vector<std::string> HelperRig::Seen() const
{
    std::vector<std::string> lines;
    std::istringstream record(m_recorder.Lines().substr(m_seen));
    for (std::string line; std::getline(record, line);)
        lines.push_back(line);
    return lines;
}

void HelperRig::ForgetSeen()
{
    m_seen = m_recorder.Lines().size();
}

void HelperRig::Finish()
{
    Talk().Send(OrderlyStop());
    Talk().End();
}

} // namespace kessil::test
