#include "target.h"

extern "C" std::uint32_t InlineCodeAnswer();

/// Needs no C++ run-time library itself, but the library beside it, inline_code, does.
TARGET_ANSWERS_WITH(InlineCodeAnswer)
