#pragma once

#include "protocol/conversation.h"
#include "protocol/recorder.h"
#include "rows/rig.h"

#include <map>
#include <memory>
#include <string>

namespace kessil::test {

/// The rig in a helper process, which has loaded the library, an adapter for both generations. What is sent and
/// received stands in the order in which it happens, so a request that the helper doesn't answer as expected fails
/// there and then, with the helper's log.
class HelperRig : public Rig
{
public:
    explicit HelperRig(const std::string &library);
    ~HelperRig() override;

    void Begin() override;
    void Script(const std::string &function, const std::string &words) override;
    void Give(const Bytes &content) override;
    void Call(const std::string &function, const std::string &signature) override;
    void CallAndGrow(const std::string &function, const std::string &signature, std::uint64_t size,
                     const Bytes &answer) override;
    void Command(const CommandRow &row, const Bytes &values) override;
    void CutCommand(const CommandRow &row, const Bytes &values) override;
    void ExpectSent(const Bytes &bytes) override;
    test::Bytes Section(std::size_t count) const override;
    std::vector<std::string> Seen() const override;
    void ForgetSeen() override;
    void Finish() override;

    Conversation &Talk() { return *m_talk; }

    /// The section that holds the reply.
    test::Section &TheSection() { return m_grown ? *m_grown : *m_section; }

    /// Writes the whole script: its lines, one for each call, the functions' names first.
    void ScriptLines(const std::string &lines) { m_recorder.Write(lines); }

    /// Asks for the command, with these values behind it.
    void Command(std::uint8_t command, const Bytes &values);

private:
    Recorder m_recorder;
    std::unique_ptr<Conversation> m_talk;
    std::map<std::string, std::string> m_script;
    std::unique_ptr<test::Section> m_section;
    std::unique_ptr<test::Section> m_grown;
    char16_t m_digit = u'7';
    std::size_t m_seen = 0;
};

} // namespace kessil::test
