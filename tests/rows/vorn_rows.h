#pragma once

#include "rows/row.h"

namespace kessil::test {

/// The rows of the data source. A size that is larger than its block is no row's: what the library then writes lies
/// behind the in-list.
const std::vector<Row> &VornRows();

} // namespace kessil::test
