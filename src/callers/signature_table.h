#pragma once

#include "marshal/handler.h"

#include <span>

namespace kessil {

/// One signature and the handlers that it selects: the first for an 'F' request, the second for an 'f' request. Null
/// where that generation doesn't know the signature.
struct SignatureRow
{
    const char *signature;
    Handler first;
    Handler second;
};

/// Every signature that parents may send. The strings are a contract with them, odd spellings included.
std::span<const SignatureRow> SignatureTable();

} // namespace kessil
