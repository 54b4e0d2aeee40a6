#pragma once

#include "platform/pipe_server.h"
#include "platform/windows/native.h"

#include <algorithm>
#include <utility>

namespace kessil::platform {

/// Owns a system handle; null and all ones both mean none. Keeps the last error when it closes the handle.
class Handle
{
public:
    Handle() = default;
    explicit Handle(HANDLE handle) : m_handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    Handle(Handle &&other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
    Handle &operator=(Handle &&other) noexcept
    {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    ~Handle()
    {
        if (m_handle)
            CloseKeepingLastError(m_handle);
    }

    HANDLE Get() const { return m_handle; }
    explicit operator bool() const { return m_handle != nullptr; }

private:
    HANDLE m_handle = nullptr;
};

/// The time that a wait until `deadline` may take: rounded up, never negative and never INFINITE, so a caller whose
/// deadline is far away has to wait again.
inline DWORD MillisecondsUntil(Deadline deadline)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
    return static_cast<DWORD>(std::clamp<decltype(left)>(left, 0, INFINITE - 1));
}

inline bool HasPassed(Deadline deadline)
{
    return deadline <= std::chrono::steady_clock::now();
}

} // namespace kessil::platform
