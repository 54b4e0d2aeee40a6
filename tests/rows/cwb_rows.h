#pragma once

#include "rows/row.h"

namespace kessil::test {

/// The midrange client's rows, but for the three of parameter blocks, whose addresses aren't known beforehand.
const std::vector<Row> &CwbRows();

/// The rows whose library fills something in, when it fails with 0x80000009 instead and fills nothing in.
const std::vector<Row> &FailingCwbRows();

} // namespace kessil::test
