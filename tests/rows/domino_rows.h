#pragma once

#include "rows/row.h"

namespace kessil::test {

/// The rows of the Notes library.
const std::vector<Row> &DominoRows();

} // namespace kessil::test
