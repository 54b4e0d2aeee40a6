#include "host/report.h"

#include <cstdio>

namespace kessil {

// Narrow output, because the log's lines are narrow: a stream that carried them may refuse wide text.
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
