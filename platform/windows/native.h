#pragma once

#include "platform/text.h"

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// <windows.h> defines this name as a macro for FreeLibrary.
#undef FreeModule

namespace kessil::platform {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

/// The text in the form that system calls expect, valid while `text` exists unchanged.
inline const wchar_t *Wide(const WideString &text)
{
    return reinterpret_cast<const wchar_t *>(text.c_str());
}

/// Restores the last error at the end of a scope.
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
