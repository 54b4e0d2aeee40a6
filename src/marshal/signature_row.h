#pragma once

#include "marshal/handler.h"

#include <span>
#include <string_view>

namespace kessil {

/// One signature and the handlers that it selects: the first for an 'F' request, the second for an 'f' request. Null
/// where that generation doesn't have the signature.
struct SignatureRow
{
    std::string_view signature;
    Handler first;
    Handler second;
};

/// The handler of that signature, compared exactly, in one column of `rows`; null when there is none.
Handler FindHandler(std::span<const SignatureRow> rows, std::string_view signature, Handler SignatureRow::*generation);

} // namespace kessil
