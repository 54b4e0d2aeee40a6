#include "marshal/signature_row.h"

#include <algorithm>

namespace kessil {

// An index would have to be built at each start, for calls that mostly repeat the one before.
Handler FindHandler(std::span<const SignatureRow> rows, std::string_view signature, Handler SignatureRow::*generation)
{
    const auto row = std::ranges::find(rows, signature, &SignatureRow::signature);
    return row == rows.end() ? nullptr : (*row).*generation;
}

} // namespace kessil
