#include "posix_calls.h"

#include <cerrno>
#include <cstdarg>
#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using kessil::test::Hex;
using kessil::test::Record;
using kessil::test::Recorded;

namespace kessil::test {

unsigned char fake_view[1];
bool has_users_group = true;
std::uint32_t fake_section_size = 0;
int bytes_per_call = 3;
short fake_poll_events = 0;

} // namespace kessil::test

namespace {

using kessil::test::fake_descriptor;

constexpr gid_t fake_users_id = 100;

} // namespace

// The linker redirects every call of `name` to __wrap_name, and calls the system's function __real_name.
extern "C" {

int __real_shm_open(const char *name, int flags, mode_t mode);
int __wrap_shm_open(const char *name, int flags, mode_t mode)
{
    if (!Recorded())
        return __real_shm_open(name, flags, mode);
    return Record("shm_open", name, Hex(static_cast<unsigned>(flags)), Hex(mode)) ? fake_descriptor : -1;
}

int __real_shm_unlink(const char *name);
int __wrap_shm_unlink(const char *name)
{
    if (!Recorded())
        return __real_shm_unlink(name);
    Record("shm_unlink", name);
    errno = kessil::test::left_by_closer;
    return -1;
}

int __real_fchmod(int descriptor, mode_t mode);
int __wrap_fchmod(int descriptor, mode_t mode)
{
    if (!Recorded())
        return __real_fchmod(descriptor, mode);
    return Record("fchmod", descriptor, Hex(mode)) ? 0 : -1;
}

int __real_fchown(int descriptor, uid_t owner, gid_t group);
int __wrap_fchown(int descriptor, uid_t owner, gid_t group)
{
    if (!Recorded())
        return __real_fchown(descriptor, owner, group);
    return Record("fchown", descriptor, static_cast<int>(owner), group) ? 0 : -1;
}

group *__real_getgrnam(const char *name);
group *__wrap_getgrnam(const char *name)
{
    if (!Recorded())
        return __real_getgrnam(name);
    static group users = {};
    users.gr_gid = fake_users_id;
    Record("getgrnam", name);
    return kessil::test::has_users_group ? &users : nullptr;
}

int __real_posix_fallocate(int descriptor, off_t offset, off_t size);
int __wrap_posix_fallocate(int descriptor, off_t offset, off_t size)
{
    if (!Recorded())
        return __real_posix_fallocate(descriptor, offset, size);
    // Returns its failure as a result and doesn't change the last error.
    const int before = errno;
    const int result = Record("posix_fallocate", descriptor, offset, size) ? 0 : errno;
    errno = before;
    return result;
}

int __real_fstat(int descriptor, struct stat *status);
int __wrap_fstat(int descriptor, struct stat *status)
{
    if (!Recorded())
        return __real_fstat(descriptor, status);
    status->st_size = kessil::test::fake_section_size;
    return Record("fstat", descriptor) ? 0 : -1;
}

void *__real_mmap(void *address, std::size_t size, int protection, int flags, int descriptor, off_t offset);
void *__wrap_mmap(void *address, std::size_t size, int protection, int flags, int descriptor, off_t offset)
{
    if (!Recorded())
        return __real_mmap(address, size, protection, flags, descriptor, offset);
    return Record("mmap", address, size, Hex(static_cast<unsigned>(protection)), Hex(static_cast<unsigned>(flags)),
                  descriptor, offset)
               ? kessil::test::fake_view
               : MAP_FAILED;
}

int __real_munmap(void *address, std::size_t size);
int __wrap_munmap(void *address, std::size_t size)
{
    if (!Recorded())
        return __real_munmap(address, size);
    Record("munmap", size);
    errno = kessil::test::left_by_closer;
    return 0;
}

int __real_close(int descriptor);
int __wrap_close(int descriptor)
{
    if (!Recorded())
        return __real_close(descriptor);
    Record("close", descriptor);
    errno = kessil::test::left_by_closer;
    return 0;
}

int __real_socket(int domain, int type, int protocol);
int __wrap_socket(int domain, int type, int protocol)
{
    if (!Recorded())
        return __real_socket(domain, type, protocol);
    return Record("socket", domain, Hex(static_cast<unsigned>(type)), protocol) ? fake_descriptor : -1;
}

int __real_connect(int descriptor, const sockaddr *address, socklen_t size);
int __wrap_connect(int descriptor, const sockaddr *address, socklen_t size)
{
    if (!Recorded())
        return __real_connect(descriptor, address, size);
    return Record("connect", descriptor, reinterpret_cast<const sockaddr_un *>(address)->sun_path) ? 0 : -1;
}

int __wrap_fcntl(int descriptor, int command, ...);
int __real_fcntl(int descriptor, int command, ...);
int __wrap_fcntl(int descriptor, int command, ...)
{
    va_list rest;
    va_start(rest, command);
    const long argument = va_arg(rest, long);
    va_end(rest);
    if (!Recorded())
        return __real_fcntl(descriptor, command, argument);
    if (command == F_GETFL)
        return Record("fcntl", descriptor, "F_GETFL") ? O_RDWR | O_NONBLOCK : -1;
    return Record("fcntl", descriptor, command, static_cast<int>(argument)) ? 0 : -1;
}

ssize_t __real_read(int descriptor, void *buffer, std::size_t size);
ssize_t __wrap_read(int descriptor, void *buffer, std::size_t size)
{
    if (!Recorded())
        return __real_read(descriptor, buffer, size);
    return Record("read", descriptor, size) ? kessil::test::bytes_per_call : -1;
}

ssize_t __real_send(int descriptor, const void *data, std::size_t size, int flags);
ssize_t __wrap_send(int descriptor, const void *data, std::size_t size, int flags)
{
    if (!Recorded())
        return __real_send(descriptor, data, size, flags);
    return Record("send", descriptor, size, Hex(static_cast<unsigned>(flags))) ? kessil::test::bytes_per_call : -1;
}

int __real_poll(pollfd *descriptors, nfds_t count, int timeout);
int __wrap_poll(pollfd *descriptors, nfds_t count, int timeout)
{
    if (!Recorded())
        return __real_poll(descriptors, count, timeout);
    descriptors[0].revents = kessil::test::fake_poll_events;
    return Record("poll", descriptors[0].fd, count, timeout) ? 1 : -1;
}

} // extern "C"
