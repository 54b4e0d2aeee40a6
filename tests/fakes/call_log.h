#pragma once

#include <string>
#include <utility>
#include <vector>

namespace kessil::test {

/// The calls of all fakes of this program, in order. Each is the function's name and its arguments, separated by
/// blanks. Text is UTF-8; a handle is left out where only one exists.
struct CallLog
{
    std::vector<std::string> calls;
    bool recording = true; ///< off where the log's own allocations would disturb a test

    void Add(std::string call)
    {
        if (recording)
            calls.push_back(std::move(call));
    }
};

inline CallLog call_log;

} // namespace kessil::test
