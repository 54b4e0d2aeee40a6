#pragma once

#include "bench/figure.h"

#include <string>

namespace kessil::bench {

/// The table's header: lines with their line ends.
std::string TableHead();

/// What follows the table: its header, and for a figure that CostsBlocks a line that breaks its median down: the stream
/// of the same bytes, the library's call and the helper's blocks, both as they cost in this process, and the remainder,
/// which may be negative.
std::string BlocksHead();
std::string BlocksLine(const Figure &figure);

/// One measured figure as a line of the table, with its line end.
std::string TableRow(const Figure &figure);

/// The same as a JSON object: name, unit, target, rounds, and the median of each measured value. A value that the
/// figure doesn't have is null. `library`, `block` and `rest` are what BlocksLine shows in addition to the limit.
std::string JsonRow(const Figure &figure);

} // namespace kessil::bench
