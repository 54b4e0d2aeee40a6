#include "rows/adapter_row.h"

#include <ostream>

namespace kessil::test {
namespace {

std::u16string OfHandler(const std::u16string &failure, const std::string &name)
{
    return failure + u" (Process_VADP" + std::u16string(name.begin(), name.end()) + u")";
}

} // namespace

Value Number(const std::string &hex)
{
    return {hex};
}

Value Flag(bool set)
{
    return {set ? "00000001" : "00000000"};
}

Value Text(const std::string &characters)
{
    static const char digits[] = "0123456789ABCDEF";
    std::string bytes = "000000";
    const auto length = static_cast<unsigned char>(characters.size());
    bytes += {digits[length >> 4], digits[length & 15]};
    for (const char character : characters) {
        const auto byte = static_cast<unsigned char>(character);
        bytes += {digits[byte >> 4], digits[byte & 15]};
    }
    return {bytes, true};
}

std::string Str(const std::string &characters)
{
    return Text(characters).bytes.substr(8) + "00";
}

std::string StatusFailed(const std::string &text)
{
    return no_log + "FFFFFFFF" + Text(text).bytes;
}

std::vector<Cut> EachCut(std::size_t values, const Cut &cut)
{
    return std::vector<Cut>(values, cut);
}

std::vector<std::string> ErrorTaken(const std::string &error)
{
    return {"GetErrorMessage error=" + error, "FreeErrorInfo error=" + error};
}

std::vector<std::string> operator+(std::vector<std::string> left, const std::vector<std::string> &right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

void PrintTo(const AdapterRow &row, std::ostream *out)
{
    *out << row.signature;
}

void PrintTo(const CommandRow &row, std::ostream *out)
{
    *out << row.signature;
}

std::u16string AdapterInput(const std::string &name)
{
    return OfHandler(u"Failed to serialise input", name);
}

std::u16string AdapterError(const std::string &name)
{
    return OfHandler(u"Failed to get error message", name);
}

std::u16string AdapterOutput(const std::string &name)
{
    return OfHandler(u"Failed to serialise output", name);
}

} // namespace kessil::test
