#include "protocol/recorder.h"

#include "support/set_variable.h"

#include <fstream>

namespace kessil::test {

Recorder::Recorder(const std::string &script)
{
    std::ofstream(m_directory.Path() / "script", std::ios::binary) << script;
    SetVariable("KESSIL_SCRIPT", (m_directory.Path() / "script").string());
    SetVariable("KESSIL_RECORD", (m_directory.Path() / "record").string());
}

Recorder::~Recorder()
{
    SetVariable("KESSIL_SCRIPT", "");
    SetVariable("KESSIL_RECORD", "");
}

std::string Recorder::Lines() const
{
    return ReadText(m_directory.Path() / "record");
}

} // namespace kessil::test
