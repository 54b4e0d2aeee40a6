#pragma once

#include "platform/text.h"

namespace kessil {

/// Puts a directory, or a list of them, in front of the process's PATH, which later loads search in order. False with
/// the system's text in `error` when there is no PATH or it can't be changed.
bool AddPath(const WideString &directories, WideString &error);

} // namespace kessil
