#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace kessil::test {

/// The stand-in library of tests/targets that is linked into this program: what it saw and what it answers.
struct StandIn
{
    std::map<std::string, std::string> script; ///< by function: the words of its line
    std::vector<std::string> lines;            ///< of the record
    std::function<void()> on_call;             ///< runs in each call, once its arguments were written down
};

extern StandIn stand_in;

} // namespace kessil::test
