#pragma once

#include "kessilctl/console/report.h"
#include "kessilctl/helper/running_helper.h"

namespace kessil::kessilctl {

/// `kessilctl errtext`: has the helper look up a message's text. Throws Failure.
void LookUpMessage(const ErrorTextOptions &options, const RunningHelper &running, std::optional<Message> &message);

} // namespace kessil::kessilctl
