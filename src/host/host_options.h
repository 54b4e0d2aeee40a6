#pragma once

#include "platform/text.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kessil {

/// The parsed command line.
struct CHostOptions
{
    WideString exe_path;         ///< the program's name as the command line gives it
    WideString pipe_name;        ///< the full name of the parent's pipe
    std::string out_file;        ///< the log file; each unit of the argument cut to its low byte
    std::int32_t log_level = -1; ///< 1 (errors) or 2 (debug) once parsed
};

/// Parses the command line, the program's name first. False when the usage text has to be printed. A last argument
/// without a value behind it is ignored, whatever it is.
bool ParseOptions(const std::vector<WideString> &arguments, CHostOptions &options);

/// The lines that standard output gets when the command line is refused.
inline constexpr const char *usage_text = "Usage: kessil.exe <pipe_name> [<option>...>\n"
                                          "  Where <option> can be\n"
                                          "    --log_level <log level>\n"
                                          "    --out_file <file name>\n"
                                          "  And <log level> can be debug or error\n";

} // namespace kessil
