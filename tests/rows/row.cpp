#include "rows/row.h"

namespace kessil::test {

std::vector<Row> RowsWithInList(std::vector<Row> rows)
{
    std::erase_if(rows, [](const Row &row) { return row.in.empty(); });
    return rows;
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
