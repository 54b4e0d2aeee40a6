#pragma once

#include "platform/text.h"

namespace kessil {

/// Puts directories, one or a list of them, in front of the process's PATH, where later loads look first. False with
/// the system's text in `error` when there is no PATH or it can't be changed.
bool AddPath(const WideString &directories, WideString &error);

} // namespace kessil
