#pragma once

#include "rows/row.h"

namespace kessil::test {

/// The rows of the mail library. The handle has its highest bit set: it reaches the library zero-extended.
const std::vector<Row> &MapiRows();

} // namespace kessil::test
