#pragma once

#include "rows/row.h"

namespace kessil::test {

/// The rows of the ESE backup library: each function once with a result of 0, which makes the last error 0 whatever the
/// library left there, and once with a result that isn't 0; and what else is peculiar. Handles come out of the library
/// with 64 bits and keep 32.
const std::vector<Row> &EseRows();

} // namespace kessil::test
