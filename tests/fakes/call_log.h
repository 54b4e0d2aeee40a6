#pragma once

#include <string>
#include <utility>
#include <vector>

namespace kessil::test {

/// The calls that all fakes of this program received, in one order: each the function's name and its arguments with a
/// blank between them. Text is UTF-8, handles are left out where there is but one.
struct CallLog
{
    std::vector<std::string> calls;
    bool recording = true; ///< off where a test must see no allocation but its own

    void Add(std::string call)
    {
        if (recording)
            calls.push_back(std::move(call));
    }
};

inline CallLog call_log;

} // namespace kessil::test
