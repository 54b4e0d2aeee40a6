#pragma once

#include "platform/secret.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kessil::test {

/// In the place of platform/secret.h: what is to be read, as bytes. What a read takes is gone.
/// `fake_secret = FakeSecret()` begins anew.
struct FakeSecret
{
    std::optional<std::string> typed;       ///< on the terminal; none: there is no terminal
    bool interrupted = false;               ///< somebody asks the process to end instead
    std::map<int, std::string> descriptors; ///< what the open ones still have
    std::vector<std::string> prompts;       ///< that were shown
};

extern FakeSecret fake_secret;

} // namespace kessil::test
