#include "tree.h"
#include "vorn_fs.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <system_error>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vorn_fs {

namespace {

/// A file descriptor that closes itself.
class Descriptor
{
public:
    explicit Descriptor(int number = -1) : m_number(number) {}
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    int Number() const { return m_number; }
    bool IsOpen() const { return m_number >= 0; }

    void Close()
    {
        if (IsOpen())
            close(m_number);
        m_number = -1;
    }

private:
    int m_number;
};

Code SystemCode(int error = errno)
{
    return VORN_FS_SYSTEM + static_cast<Code>(error);
}

std::uint32_t KindOf(const struct stat &status)
{
    if (S_ISREG(status.st_mode))
        return VORN_KIND_FILE;
    if (S_ISDIR(status.st_mode))
        return VORN_KIND_DIRECTORY;
    return S_ISLNK(status.st_mode) ? VORN_KIND_LINK : VORN_KIND_OTHER;
}

timespec NativeTime(const Time &time)
{
    return {static_cast<time_t>(time.seconds), static_cast<long>(time.nanoseconds)};
}

} // namespace

struct Folder
{
    explicit Folder(int number) : descriptor(number) {}
    Descriptor descriptor;
};

namespace {

class PosixReader : public Reader
{
public:
    explicit PosixReader(int number) : m_file(number) {}

    int Number() const { return m_file.Number(); }

    Code Read(void *block, std::uint32_t size, std::uint32_t &count) override
    {
        auto *bytes = static_cast<unsigned char *>(block);
        for (count = 0; count < size;) {
            const ssize_t got = read(m_file.Number(), bytes + count, size - count);
            if (got < 0 && errno != EINTR)
                return SystemCode();
            if (got == 0)
                break;
            if (got > 0)
                count += static_cast<std::uint32_t>(got);
        }
        return VORN_OK;
    }

private:
    Descriptor m_file;
};

class PosixWriter : public Writer
{
public:
    PosixWriter(FolderPointer folder, std::string name, std::string temporary, int number)
        : m_folder(std::move(folder)), m_name(std::move(name)), m_temporary(std::move(temporary)), m_file(number)
    {}

    ~PosixWriter() override
    {
        if (!m_committed)
            unlinkat(m_folder->descriptor.Number(), m_temporary.c_str(), 0);
    }

    Code Write(const void *block, std::uint32_t size, std::uint32_t &count) override
    {
        const auto *bytes = static_cast<const unsigned char *>(block);
        for (count = 0; count < size;) {
            const ssize_t put = write(m_file.Number(), bytes + count, size - count);
            if (put < 0 && errno != EINTR)
                return SystemCode();
            if (put > 0)
                count += static_cast<std::uint32_t>(put);
        }
        return VORN_OK;
    }

    Code Commit(const Time *modified) override
    {
        const int folder = m_folder->descriptor.Number();
        if (modified) {
            const timespec times[2] = {{0, UTIME_OMIT}, NativeTime(*modified)};
            if (futimens(m_file.Number(), times) != 0)
                return SystemCode();
        }
        if (fsync(m_file.Number()) != 0)
            return SystemCode();
        if (renameat(folder, m_temporary.c_str(), folder, m_name.c_str()) != 0)
            return SystemCode();
        m_committed = true;
        m_file.Close();

        const Descriptor entries(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        return entries.IsOpen() && fsync(entries.Number()) == 0 ? VORN_OK : SystemCode();
    }

private:
    FolderPointer m_folder;
    std::string m_name;
    std::string m_temporary;
    Descriptor m_file;
    bool m_committed = false;
};

Item ReadItem(int folder, const std::string &name)
{
    Item item;
    item.name = name;
    struct stat status = {};
    if (fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        item.code = SystemCode();
        item.kind = VORN_KIND_OTHER;
        return item;
    }
    item.kind = KindOf(status);
    if (item.kind == VORN_KIND_FILE)
        item.bytes = static_cast<std::uint64_t>(status.st_size);
    item.modified = {status.st_mtim.tv_sec, static_cast<std::uint32_t>(status.st_mtim.tv_nsec)};
    return item;
}

} // namespace

bool IsPlainName(const std::string &name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

Code OpenRoot(FolderPointer &root)
{
    const char *path = std::getenv("VORN_FS_ROOT");
    auto opened = std::make_shared<Folder>(path && *path ? open(path, O_PATH | O_DIRECTORY | O_CLOEXEC) : -1);
    if (!opened->descriptor.IsOpen())
        return VORN_FS_NO_ROOT;
    root = std::move(opened);
    return VORN_OK;
}

Code OpenFolder(const FolderPointer &parent, const std::string &name, bool create, FolderPointer &folder)
{
    const int above = parent->descriptor.Number();
    if (create && mkdirat(above, name.c_str(), 0777) != 0 && errno != EEXIST)
        return SystemCode();
    auto opened = std::make_shared<Folder>(openat(above, name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (opened->descriptor.IsOpen()) {
        folder = std::move(opened);
        return VORN_OK;
    }
    if (errno != ENOTDIR && errno != ELOOP)
        return SystemCode();
    return ReadItem(above, name).kind == VORN_KIND_LINK ? VORN_FS_LINK : VORN_FS_NOT_DIRECTORY;
}

Code List(const Folder &folder, std::vector<Item> &items)
{
    const int readable = openat(folder.descriptor.Number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR *stream = readable < 0 ? nullptr : fdopendir(readable);
    if (!stream) {
        const Code code = SystemCode();
        if (readable >= 0)
            close(readable);
        return code;
    }
    const std::unique_ptr<DIR, int (*)(DIR *)> closer(stream, closedir);

    errno = 0;
    while (const dirent *entry = readdir(stream)) {
        if (IsPlainName(entry->d_name))
            items.push_back(ReadItem(readable, entry->d_name));
        errno = 0;
    }
    if (errno != 0)
        return SystemCode();
    std::erase_if(items, [](const Item &item) { return item.code == SystemCode(ENOENT); });
    std::sort(items.begin(), items.end(), [](const Item &left, const Item &right) { return left.name < right.name; });
    return VORN_OK;
}

Code SetFolderTime(const Folder &folder, const Time &modified)
{
    const timespec times[2] = {{0, UTIME_OMIT}, NativeTime(modified)};
    const Descriptor readable(openat(folder.descriptor.Number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return readable.IsOpen() && futimens(readable.Number(), times) == 0 ? VORN_OK : SystemCode();
}

Code OpenForReading(const FolderPointer &folder, const std::string &name, std::unique_ptr<Reader> &reader)
{
    const int above = folder->descriptor.Number();
    // Checked first: opening a device can have effects, and opening a named pipe can block.
    const Item item = ReadItem(above, name);
    if (item.code != VORN_OK)
        return item.code;
    if (item.kind != VORN_KIND_FILE)
        return item.kind == VORN_KIND_LINK ? VORN_FS_LINK : VORN_FS_NOT_FILE;

    const int number = openat(above, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (number < 0)
        return errno == ELOOP ? VORN_FS_LINK : SystemCode();
    auto opened = std::make_unique<PosixReader>(number);
    struct stat status = {};
    if (fstat(opened->Number(), &status) != 0)
        return SystemCode();
    if (!S_ISREG(status.st_mode))
        return VORN_FS_NOT_FILE;
    reader = std::move(opened);
    return VORN_OK;
}

Code OpenForWriting(const FolderPointer &folder, const std::string &name, std::unique_ptr<Writer> &writer)
{
    static std::atomic<unsigned> counter;
    const Item there = ReadItem(folder->descriptor.Number(), name);
    if (there.code == VORN_OK && there.kind != VORN_KIND_FILE && there.kind != VORN_KIND_LINK)
        return VORN_FS_NOT_FILE;

    std::string temporary;
    int number = -1;
    do {
        temporary = std::string(".vorn_fs-").append(std::to_string(getpid())).append("-");
        temporary.append(std::to_string(counter++)).append(".tmp");
        number = openat(folder->descriptor.Number(), temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (number < 0 && errno == EEXIST);
    if (number < 0)
        return SystemCode();
    writer = std::make_unique<PosixWriter>(folder, name, temporary, number);
    return VORN_OK;
}

std::string SystemText(std::uint32_t system_code)
{
    return std::generic_category().message(static_cast<int>(system_code));
}

} // namespace vorn_fs
