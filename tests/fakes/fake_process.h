#pragma once

#include "platform/text.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace kessil::test {

/// How the run of a fake program ends.
struct FakeRun
{
    std::optional<std::uint32_t> exit_code{}; ///< it has ended with this code; none: it runs until it is killed
    bool dies = true;                         ///< false: it doesn't end even when it is killed
    std::function<void()> on_death{};         ///< called once when it is killed
};

/// The arguments of StartProcess.
struct FakeStart
{
    std::uint32_t process_id;
    std::vector<WideString> arguments;
    WideString directory;
};

/// Replaces platform/process.h: programs are functions that StartProcess calls. A wait for a process that another
/// thread may kill takes as long as it may. `fake_process = FakeProcess()` resets it; no process may be held then.
struct FakeProcess
{
    std::map<WideString, std::function<FakeRun(const FakeStart &)>> programs; ///< by their paths

    std::uint32_t start_code = 0;    ///< when not 0, every StartProcess fails with it
    std::uint32_t missing_code = 2;  ///< for a program or a directory that doesn't exist
    std::uint32_t killed_code = 137; ///< the exit code of a process that was killed
    bool waits = true;               ///< false: a wait ends at once, as if its deadline had passed
    std::vector<FakeStart> starts;   ///< every attempt
    std::size_t kills = 0;           ///< of processes that ran
    std::size_t held = 0;            ///< processes not released yet
    std::uint32_t next_id = 4711;
};

extern FakeProcess fake_process;

} // namespace kessil::test
