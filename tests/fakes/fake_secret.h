#pragma once

#include "platform/secret.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kessil::test {

/// Replaces platform/secret.h: the input, as bytes. A read consumes its line. `fake_secret = FakeSecret()` resets it.
struct FakeSecret
{
    std::optional<std::string> typed;       ///< on the terminal; none: there is no terminal
    bool interrupted = false;               ///< the process is asked to end instead
    std::map<int, std::string> descriptors; ///< the remaining input of the open ones
    std::vector<std::string> prompts;       ///< the prompts shown
};

extern FakeSecret fake_secret;

} // namespace kessil::test
