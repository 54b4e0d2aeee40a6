#pragma once

#include "tests/kessilctl/kessilctl_run.h"

#include <string>
#include <vector>

namespace kessil::test {

/// Runs kessilctl with the scripted helper of tests/parent, which checks each request byte for byte.
class ScriptedRun : public KessilctlTest
{
protected:
    ScriptedRun();
    ~ScriptedRun() override;

    /// Runs kessilctl with a helper that connects and then does what `script` says.
    Outcome RunScripted(const std::string &script, const std::string &task, const std::vector<std::string> &arguments);

    /// Makes this text the standard input of this process and of its children.
    void SetInput(const std::string &text);

    /// Reads the next line of the standard input.
    static std::string NextLine();

private:
    std::filesystem::path m_directory_before;
};

/// The request of the orderly stop.
inline const std::string stop = "expect 66 01\n";

inline const std::string success = "send 53 00000000\n";

} // namespace kessil::test
