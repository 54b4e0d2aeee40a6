#include "platform/section.h"

#include "platform/posix/handles.h"
#include "platform/posix/identity.h"

#include <algorithm>
#include <cerrno>
#include <grp.h>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>

namespace kessil::platform {
namespace {

using posix::ActAsProcess;
using posix::KeepErrno;
using posix::ToDescriptor;

std::string ObjectName(const WideString &name)
{
    std::string object = ToUtf8(name);
    std::replace_if(
        object.begin(), object.end(), [](char c) { return c == '/' || c == '\\'; }, '_');
    return "/" + object;
}

// Sets the object's access rights and reserves its memory. The mode is set after creation because the process's umask
// would reduce it there.
bool PrepareObject(int descriptor, std::uint32_t size, bool admit_users)
{
    if (fchmod(descriptor, S_IRUSR | S_IWUSR) != 0)
        return false;
    if (admit_users) {
        const group *const users = getgrnam("users");
        // Without that group only the owner has access.
        if (users != nullptr && fchown(descriptor, static_cast<uid_t>(-1), users->gr_gid) == 0 &&
            fchmod(descriptor, S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP) != 0)
            return false;
    }
    int result = 0;
    do
        result = posix_fallocate(descriptor, 0, size);
    while (result == EINTR);
    errno = result;
    return result == 0;
}

// A mapping can't be empty; nobody uses the byte that is mapped for a size of 0.
std::size_t MappedLength(std::uint32_t size)
{
    return std::max<std::size_t>(size, 1);
}

unsigned char *Map(SectionHandle section, std::uint32_t size)
{
    void *const view = mmap(nullptr, MappedLength(size), PROT_READ | PROT_WRITE, MAP_SHARED, ToDescriptor(section), 0);
    return view == MAP_FAILED ? nullptr : static_cast<unsigned char *>(view);
}

} // namespace

SectionHandle CreateSection(const WideString &name, std::uint32_t size, bool admit_users)
{
    const ActAsProcess as_process;
    const std::string object = ObjectName(name);
    const int descriptor =
        posix::AboveStandardStreams(shm_open(object.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (descriptor < 0)
        return nullptr;
    if (PrepareObject(descriptor, size, admit_users))
        return posix::ToHandle(descriptor);
    const KeepErrno keep;
    shm_unlink(object.c_str());
    close(descriptor);
    return nullptr;
}

SectionHandle OpenSection(const WideString &name, std::uint32_t size)
{
    const ActAsProcess as_process;
    const int descriptor = posix::AboveStandardStreams(shm_open(ObjectName(name).c_str(), O_RDWR | O_CLOEXEC, 0));
    if (descriptor < 0)
        return nullptr;
    struct stat status = {};
    const bool known = fstat(descriptor, &status) == 0;
    if (known && status.st_size >= static_cast<off_t>(size))
        return posix::ToHandle(descriptor);
    if (known)
        errno = EINVAL;
    const KeepErrno keep;
    close(descriptor);
    return nullptr;
}

unsigned char *MapCreatedSection(SectionHandle section, std::uint32_t size)
{
    return Map(section, size);
}

unsigned char *MapOpenedSection(SectionHandle section, std::uint32_t size)
{
    return Map(section, size);
}

void UnmapSection(unsigned char *view, std::uint32_t size)
{
    const KeepErrno keep;
    munmap(view, MappedLength(size));
}

void CloseSection(SectionHandle section)
{
    const KeepErrno keep;
    close(ToDescriptor(section));
}

void RemoveSectionName(const WideString &name)
{
    const KeepErrno keep;
    const ActAsProcess as_process;
    shm_unlink(ObjectName(name).c_str());
}

} // namespace kessil::platform
