#pragma once

#include "kessilctl/console/interruption.h"
#include "kessilctl/console/options.h"
#include "kessilctl/console/password.h"
#include "platform/text.h"

#include <kessil/parent.h>

#include <string>

namespace kessil::kessilctl {

/// What a job makes its requests with. The helper has been started; all of it outlives the job.
struct RunningHelper
{
    parent::Helper &helper;
    const Interruption &interruption; ///< checked ahead of each call
    parent::TimeLimit limit;          ///< of each call
};

/// Throws Failure, with the exit code for how the request ended, unless it was answered.
void Require(const parent::Result &result);

/// An existing file by its full path, so that the helper finds it from any directory; anything else is a name to search
/// for, and stays as it is.
WideString LibraryName(const std::string &given);

/// The limit of one call, with a notice after 10 seconds or half of the time, whichever comes first.
parent::TimeLimit LimitOf(const HelperOptions &options);

/// Starts the helper, has it log on if the options say so, and then adds to its search path: the directories may be
/// readable only to that user. Clears the password once it is sent. Throws Failure.
void StartHelper(parent::Helper &helper, const HelperOptions &options, Password &password);

} // namespace kessil::kessilctl
