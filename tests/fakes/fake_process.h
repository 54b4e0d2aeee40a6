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
    std::optional<std::uint32_t> exit_code{}; ///< with which it has ended already; none: it runs until it is killed
    bool dies = true;                         ///< false: it doesn't even end when it is killed
    std::function<void()> on_death{};         ///< called once when it is killed
};

/// What StartProcess was told.
struct FakeStart
{
    std::uint32_t process_id;
    std::vector<WideString> arguments;
    WideString directory;
};

/// In the place of platform/process.h: programs are functions, called by StartProcess. Waiting for a process that
/// another thread may kill takes as long as it may. `fake_process = FakeProcess()` begins anew; no process may be held
/// then.
struct FakeProcess
{
    std::map<WideString, std::function<FakeRun(const FakeStart &)>> programs; ///< by their paths

    std::uint32_t start_code = 0;    ///< when not 0, every StartProcess fails with it
    std::uint32_t missing_code = 2;  ///< for a program or a directory that isn't there
    std::uint32_t killed_code = 137; ///< the exit code of a process that was killed
    bool waits = true;               ///< false: a wait is over at once, as if its time had passed
    std::vector<FakeStart> starts;   ///< all that were tried
    std::size_t kills = 0;           ///< of processes that ran
    std::size_t held = 0;            ///< processes not given up yet
    std::uint32_t next_id = 4711;
};

extern FakeProcess fake_process;

} // namespace kessil::test
