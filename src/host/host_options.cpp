#include "host/host_options.h"

#include "logging/log_manager.h"

namespace kessil {
namespace {

std::string CutToBytes(const WideString &text)
{
    std::string bytes;
    for (const char16_t unit : text)
        bytes.push_back(static_cast<char>(unit & 0xFF));
    return bytes;
}

} // namespace

bool ParseOptions(const std::vector<WideString> &arguments, CHostOptions &options)
{
    options = CHostOptions();
    if (arguments.size() < 2)
        return false;
    options.exe_path = arguments[0];
    options.pipe_name = arguments[1];
    for (std::size_t i = 2; i + 1 < arguments.size(); i += 2) {
        const WideString &value = arguments[i + 1];
        if (arguments[i] == u"--out_file")
            options.out_file = CutToBytes(value);
        else if (arguments[i] == u"--log_level")
            options.log_level = value == u"debug" ? log_debug : log_error;
        else
            return false;
    }
    if (options.out_file.empty())
        options.out_file = "kessil_log.out";
    if (options.log_level == -1)
        options.log_level = log_error;
    return true;
}

} // namespace kessil
