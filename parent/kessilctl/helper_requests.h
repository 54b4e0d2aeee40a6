#pragma once

#include "command_line.h"
#include "kessil/parent.h"
#include "password.h"

namespace kessil::driver {

/// Throws Failure, with the exit code for how the request ended, unless it was answered.
void Require(const parent::Result &result);

/// Starts the helper and gives it what the command line has for every task: first the user, since the directories that
/// follow may be open to him alone, then the search path. The password is forgotten once it is sent. Throws Failure.
void StartHelper(parent::Helper &helper, const Command &command, Password &password);

} // namespace kessil::driver
