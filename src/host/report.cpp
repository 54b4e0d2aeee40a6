#include "host/report.h"

#include <cstdio>

namespace kessil {

// Narrow, like the log's lines: a stream that has carried narrow output refuses wide output.
void PrintError(const WideString &text)
{
    std::printf("ERROR: '%s'\n", platform::ToUtf8(text).c_str());
    std::fflush(stdout);
}

void PrintInvalidType(char type)
{
    std::printf("ERROR: Invalid request type - '%c'\n", type);
    std::fflush(stdout);
}

} // namespace kessil
