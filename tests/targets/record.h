#pragma once

#include <string>

/// Appends `line` and a line end to the file that the environment variable KESSIL_RECORD names, and closes the file, so
/// that the line is there whatever happens next. Does nothing when the variable is not set.
void Record(const std::string &line);
