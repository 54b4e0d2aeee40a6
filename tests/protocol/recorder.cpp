#include "protocol/recorder.h"

#include "support/set_variable.h"

#include <fstream>

namespace kessil::test {

Recorder::Recorder(const std::string &script)
{
    Write(script);
    SetVariable("KESSIL_SCRIPT", (m_directory.Path() / "script").string());
    SetVariable("KESSIL_RECORD", (m_directory.Path() / "record").string());
}

Recorder::~Recorder()
{
    SetVariable("KESSIL_SCRIPT", "");
    SetVariable("KESSIL_RECORD", "");
}

void Recorder::Write(const std::string &script) const
{
    std::ofstream(m_directory.Path() / "script", std::ios::binary) << script;
}

std::string Recorder::Lines() const
{
    return ReadText(m_directory.Path() / "record");
}

} // namespace kessil::test
