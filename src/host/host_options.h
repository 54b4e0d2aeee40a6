#pragma once

#include "platform/text.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kessil {

/// The parsed command line.
struct CHostOptions
{
    WideString exe_path;         ///< the program's name as it was called
    WideString pipe_name;        ///< the full name of the parent's pipe
    std::string out_file;        ///< the log file; each unit of the argument cut to its low byte
    std::int32_t log_level = -1; ///< 1 (errors) or 2 (debug) once parsed
};

/// Reads the command line, the program's name first. False when the usage text is due. A last word that has no other
/// behind it is ignored, whatever it says.
bool ParseOptions(const std::vector<WideString> &arguments, CHostOptions &options);

/// How the program is called: lines for standard output.
inline constexpr const char *usage_text = "Usage: kessil.exe <pipe_name> [<option>...>\n"
                                          "  Where <option> can be\n"
                                          "    --log_level <log level>\n"
                                          "    --out_file <file name>\n"
                                          "  And <log level> can be debug or error\n";

} // namespace kessil
