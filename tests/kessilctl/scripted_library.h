#pragma once

#include "tests/kessilctl/kessilctl_run.h"

#include <cstdint>
#include <string>

namespace kessil::test {

/// The hosted library vorn_recorder with a script of its results. One line is one call; tests/targets/script.h has the
/// form.
class ScriptedLibrary : public KessilctlTest
{
protected:
    /// What the library does; call before the run.
    void Script(const std::string &lines);

    /// A line of VornGetNextDirItem that yields this item.
    static std::string ItemLine(std::uint32_t kind, const std::string &name, std::uint32_t bytes);

    /// The lines that most conversations need: handles, and a directory with one file of three bytes.
    static std::string OneFile(const std::string &name);

    /// The lines that the library recorded for `function`.
    std::vector<std::string> Recorded(const std::string &function) const;
};

} // namespace kessil::test
