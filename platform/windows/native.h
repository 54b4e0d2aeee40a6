#pragma once

#include "platform/text.h"

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// A second name of FreeLibrary, written as a macro.
#undef FreeModule

namespace kessil::platform {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

/// The text as the system's calls take it, for as long as `text` lives unchanged.
inline const wchar_t *Wide(const WideString &text)
{
    return reinterpret_cast<const wchar_t *>(text.c_str());
}

/// Puts the last error back on the way out of a scope.
class LastErrorKeeper
{
public:
    LastErrorKeeper() : m_code(GetLastError()) {}
    ~LastErrorKeeper() { ::SetLastError(m_code); }
    LastErrorKeeper(const LastErrorKeeper &) = delete;
    LastErrorKeeper &operator=(const LastErrorKeeper &) = delete;

private:
    DWORD m_code;
};

inline void CloseKeepingLastError(HANDLE handle)
{
    const LastErrorKeeper keeper;
    CloseHandle(handle);
}

} // namespace kessil::platform
