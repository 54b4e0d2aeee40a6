#include "rows/row.h"

namespace kessil::test {

Row Growing(Row row, std::uint64_t grown)
{
    row.grown = grown;
    return row;
}

std::u16string InputOf(const std::string &name)
{
    return u"Failed to serialise input (Process_" + std::u16string(name.begin(), name.end()) + u")";
}

std::u16string OutputOf(const std::string &name)
{
    return u"Failed to serialise output (Process_" + std::u16string(name.begin(), name.end()) + u")";
}

} // namespace kessil::test
