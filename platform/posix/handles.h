#pragma once

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <unistd.h>

namespace kessil::platform::posix {

/// Restores errno at the end of a scope; every function that closes something needs this.
class KeepErrno
{
public:
    KeepErrno() : m_kept(errno) {}
    ~KeepErrno() { errno = m_kept; }
    KeepErrno(const KeepErrno &) = delete;
    KeepErrno &operator=(const KeepErrno &) = delete;

private:
    int m_kept;
};

/// Moves a descriptor out of the range of the standard streams. If a standard stream is closed, the next descriptor
/// would take its number, and a hosted library's output would go there. Returns -1 when `descriptor` is -1 or can't be
/// moved.
inline int AboveStandardStreams(int descriptor)
{
    if (descriptor < 0 || descriptor > STDERR_FILENO)
        return descriptor;
    const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const KeepErrno keep;
    close(descriptor);
    return moved;
}

/// Converts between a descriptor and the opaque handle of the platform headers.
inline void *ToHandle(int descriptor)
{
    return reinterpret_cast<void *>(static_cast<std::intptr_t>(descriptor));
}
inline int ToDescriptor(void *handle)
{
    return static_cast<int>(reinterpret_cast<std::intptr_t>(handle));
}

} // namespace kessil::platform::posix
