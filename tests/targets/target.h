#pragma once

#include <cstdint>

/// What the stand-in libraries share. They stand for code that strangers built, so they use nothing of the project and
/// spell their own types; every export has C linkage and the platform's default calling convention.

#ifdef _WIN32
#define TARGET_EXPORT extern "C" __declspec(dllexport)
#else
#define TARGET_EXPORT extern "C" __attribute__((visibility("default")))
#endif

/// Exports five functions without arguments that return a 32-bit number, each of which does what `work` does. Commands
/// stand for the last two; the caller of these expects no result and ignores it.
#define TARGET_ANSWERS_WITH(work)                                                                                      \
    TARGET_EXPORT std::uint32_t Answer()                                                                               \
    {                                                                                                                  \
        return work();                                                                                                 \
    }                                                                                                                  \
    TARGET_EXPORT std::uint32_t GetBackupType()                                                                        \
    {                                                                                                                  \
        return work();                                                                                                 \
    }                                                                                                                  \
    TARGET_EXPORT std::uint32_t GetLibApiVersion()                                                                     \
    {                                                                                                                  \
        return work();                                                                                                 \
    }                                                                                                                  \
    TARGET_EXPORT std::uint32_t ExitVixDiskLib()                                                                       \
    {                                                                                                                  \
        return work();                                                                                                 \
    }                                                                                                                  \
    TARGET_EXPORT std::uint32_t ReadBlockSignature()                                                                   \
    {                                                                                                                  \
        return work();                                                                                                 \
    }
