#pragma once

#include "kessilctl/console/command_line.h"
#include "kessilctl/console/password.h"
#include "platform/text.h"
#include <kessil/parent.h>

namespace kessil::kessilctl {

/// Throws Failure, with the exit code for how the request ended, unless it was answered.
void Require(const parent::Result &result);

/// A file by its full path, so that the helper's directory doesn't matter; anything else is a name to search for.
WideString LibraryName(const std::string &given);

/// For one call.
parent::TimeLimit LimitOf(const Command &command);

/// Starts the helper and gives it what the command line has for every task: first the user, since the directories that
/// follow may be open to him alone, then the search path. The password is forgotten once it is sent. Throws Failure.
void StartHelper(parent::Helper &helper, const Command &command, Password &password);

} // namespace kessil::kessilctl
