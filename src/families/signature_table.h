#pragma once

#include "marshal/signature_row.h"

#include <span>

namespace kessil {

/// Every signature that parents may send. The strings are a contract with them, odd spellings included.
std::span<const SignatureRow> SignatureTable();

} // namespace kessil
