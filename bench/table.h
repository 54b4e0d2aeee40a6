#pragma once

#include "bench/figure.h"

#include <string>

namespace kessil::bench {

/// The table's head: lines with their ends.
std::string TableHead();

/// What follows the table: its head, and for a figure that CostsBlocks a line that takes its median apart: the stream
/// of the same bytes, the library's call, the helper's blocks, both as they cost in this process, and what
/// is left, which may be less than nothing.
std::string BlocksHead();
std::string BlocksLine(const Figure &figure);

/// One measured figure as a line of the table, with its end.
std::string TableRow(const Figure &figure);

/// The same as a JSON object: name, unit, target, rounds, and for each measured value its median. Null stands for what
/// the figure doesn't have. `library`, `block` and `rest` are what BlocksLine tells beside the limit.
std::string JsonRow(const Figure &figure);

} // namespace kessil::bench
