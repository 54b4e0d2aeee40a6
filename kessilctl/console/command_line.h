#pragma once

#include "kessilctl/console/options.h"
#include "platform/text.h"

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace kessil::kessilctl {

struct CommandLine
{
    std::string name; ///< the job's, such as "adapter hosts"
    JobOptions job;
    HelperOptions helper;
    std::optional<int> password_descriptor; ///< that passwords are read from; none: the terminal
    bool json = false;
};

/// Reads the arguments (the program's own name first). None, with `exit_code` set, when there is nothing to do: help
/// was asked for and is on `out`, or the arguments are wrong and `err` has the reason.
std::optional<CommandLine> ParseCommandLine(const std::vector<WideString> &arguments, std::ostream &out,
                                            std::ostream &err, int &exit_code);

} // namespace kessil::kessilctl
