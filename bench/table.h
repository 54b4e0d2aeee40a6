#pragma once

#include "bench/figure.h"

#include <string>

namespace kessil::bench {

/// The table's head: lines with their ends.
std::string TableHead();

/// One measured figure as a line of the table, with its end.
std::string TableRow(const Figure &figure);

/// The same as a JSON object: name, unit, target, rounds, and for each measured value its median. Null stands for what
/// the figure doesn't have.
std::string JsonRow(const Figure &figure);

} // namespace kessil::bench
