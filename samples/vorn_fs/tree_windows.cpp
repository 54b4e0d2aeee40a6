#include "tree.h"
#include "vorn_fs.h"
#include "windows_name.h"

#include <algorithm>
#include <atomic>

#include <windows.h>

namespace vorn_fs {

namespace {

constexpr DWORD pinned = FILE_SHARE_READ | FILE_SHARE_WRITE; // no renaming and no removal while the handle is open
constexpr DWORD directory_or_link = FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT;

Code SystemCode(DWORD error = GetLastError())
{
    return VORN_FS_SYSTEM + error;
}

/// A file handle that closes itself.
class File
{
public:
    explicit File(HANDLE handle) : m_handle(handle) {}
    ~File() { Close(); }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    HANDLE Get() const { return m_handle; }
    bool IsOpen() const { return m_handle != INVALID_HANDLE_VALUE; }

    void Close()
    {
        const DWORD error = GetLastError();
        if (IsOpen())
            CloseHandle(m_handle);
        m_handle = INVALID_HANDLE_VALUE;
        SetLastError(error);
    }

private:
    HANDLE m_handle;
};

constexpr std::uint64_t ticks_per_second = 10'000'000;
constexpr std::int64_t seconds_from_1601_to_1970 = 11'644'473'600;

Time FromNative(const FILETIME &native)
{
    const std::uint64_t ticks = (static_cast<std::uint64_t>(native.dwHighDateTime) << 32) | native.dwLowDateTime;
    return {static_cast<std::int64_t>(ticks / ticks_per_second) - seconds_from_1601_to_1970,
            static_cast<std::uint32_t>(ticks % ticks_per_second) * 100};
}

/// False for a time that the system can't hold.
bool ToNative(const Time &time, FILETIME &native)
{
    if (time.seconds < -seconds_from_1601_to_1970 || time.seconds > 900'000'000'000)
        return false;
    const std::uint64_t ticks =
        static_cast<std::uint64_t>(time.seconds + seconds_from_1601_to_1970) * ticks_per_second +
        time.nanoseconds / 100;
    native.dwLowDateTime = static_cast<DWORD>(ticks);
    native.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
    return true;
}

Code SetTime(HANDLE file, const Time &modified)
{
    FILETIME native;
    if (!ToNative(modified, native))
        return VORN_FS_BAD_TIME;
    return SetFileTime(file, nullptr, nullptr, &native) ? VORN_OK : SystemCode();
}

std::uint32_t KindOf(DWORD attributes)
{
    if (attributes & FILE_ATTRIBUTE_REPARSE_POINT)
        return VORN_KIND_LINK;
    if (attributes & FILE_ATTRIBUTE_DEVICE)
        return VORN_KIND_OTHER;
    return attributes & FILE_ATTRIBUTE_DIRECTORY ? VORN_KIND_DIRECTORY : VORN_KIND_FILE;
}

Code KindOfOpen(HANDLE file, std::uint32_t &kind)
{
    BY_HANDLE_FILE_INFORMATION information = {};
    if (!GetFileInformationByHandle(file, &information))
        return SystemCode();
    kind = KindOf(information.dwFileAttributes);
    return VORN_OK;
}

} // namespace

/// Keeps its parent open, so that no directory on its path can be renamed.
struct Folder
{
    Folder(FolderPointer above, std::wstring where, HANDLE handle)
        : parent(std::move(above)), path(std::move(where)), file(handle)
    {}

    std::wstring Below(const std::wstring &name) const { return path + L"\\" + name; }

    FolderPointer parent;
    std::wstring path; ///< absolute, in the form that the system doesn't interpret
    File file;
};

namespace {

class WindowsReader : public Reader
{
public:
    WindowsReader(FolderPointer folder, HANDLE file) : m_folder(std::move(folder)), m_file(file) {}

    HANDLE Get() const { return m_file.Get(); }

    Code Read(void *block, std::uint32_t size, std::uint32_t &count) override
    {
        auto *bytes = static_cast<unsigned char *>(block);
        for (count = 0; count < size;) {
            DWORD got = 0;
            if (!ReadFile(m_file.Get(), bytes + count, size - count, &got, nullptr))
                return SystemCode();
            if (got == 0)
                break;
            count += got;
        }
        return VORN_OK;
    }

private:
    FolderPointer m_folder;
    File m_file;
};

class WindowsWriter : public Writer
{
public:
    WindowsWriter(FolderPointer folder, std::wstring name, std::wstring temporary, HANDLE file)
        : m_folder(std::move(folder)), m_name(std::move(name)), m_temporary(std::move(temporary)), m_file(file)
    {}

    ~WindowsWriter() override
    {
        m_file.Close();
        if (!m_committed)
            DeleteFileW(m_folder->Below(m_temporary).c_str());
    }

    Code Write(const void *block, std::uint32_t size, std::uint32_t &count) override
    {
        const auto *bytes = static_cast<const unsigned char *>(block);
        for (count = 0; count < size;) {
            DWORD put = 0;
            if (!WriteFile(m_file.Get(), bytes + count, size - count, &put, nullptr))
                return SystemCode();
            count += put;
        }
        return VORN_OK;
    }

    Code Commit(const Time *modified) override
    {
        const Code code = modified ? SetTime(m_file.Get(), *modified) : VORN_OK;
        if (code != VORN_OK)
            return code;
        if (!FlushFileBuffers(m_file.Get()))
            return SystemCode();
        m_file.Close();
        if (!MoveFileExW(m_folder->Below(m_temporary).c_str(), m_folder->Below(m_name).c_str(),
                         MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            return SystemCode();
        m_committed = true;
        return VORN_OK;
    }

private:
    FolderPointer m_folder;
    std::wstring m_name;
    std::wstring m_temporary;
    File m_file;
    bool m_committed = false;
};

std::wstring Uninterpreted(const std::wstring &full)
{
    if (full.rfind(L"\\\\?\\", 0) == 0)
        return full;
    return full.rfind(L"\\\\", 0) == 0 ? L"\\\\?\\UNC" + full.substr(1) : L"\\\\?\\" + full;
}

std::wstring RootPath()
{
    const DWORD room = GetEnvironmentVariableW(L"VORN_FS_ROOT", nullptr, 0);
    std::wstring name(room, L'\0');
    name.resize(room ? GetEnvironmentVariableW(L"VORN_FS_ROOT", name.data(), room) : 0);
    if (name.empty())
        return {};
    std::wstring full(GetFullPathNameW(name.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(GetFullPathNameW(name.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    while (full.size() > 3 && full.back() == L'\\')
        full.pop_back();
    return full.empty() ? full : Uninterpreted(full);
}

Item FromNative(const WIN32_FIND_DATAW &found)
{
    Item item;
    item.name = Narrow(found.cFileName);
    item.kind = KindOf(found.dwFileAttributes);
    if (item.kind == VORN_KIND_FILE)
        item.bytes = (static_cast<std::uint64_t>(found.nFileSizeHigh) << 32) | found.nFileSizeLow;
    item.modified = FromNative(found.ftLastWriteTime);
    return item;
}

} // namespace

Code OpenRoot(FolderPointer &root)
{
    const std::wstring path = RootPath();
    if (path.empty())
        return VORN_FS_NO_ROOT;
    // The root itself may be a link: its name is chosen by the user and not by a parent.
    const HANDLE handle = CreateFileW(path.c_str(), FILE_LIST_DIRECTORY, pinned, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    auto opened = std::make_shared<Folder>(nullptr, path, handle);
    std::uint32_t kind = 0;
    if (!opened->file.IsOpen())
        return VORN_FS_NO_ROOT;
    if (KindOfOpen(handle, kind) != VORN_OK || kind != VORN_KIND_DIRECTORY)
        return VORN_FS_NO_ROOT;
    root = std::move(opened);
    return VORN_OK;
}

Code OpenFolder(const FolderPointer &parent, const std::string &name, bool create, FolderPointer &folder)
{
    const std::wstring path = parent->Below(Widen(name));
    if (create && !CreateDirectoryW(path.c_str(), nullptr) && GetLastError() != ERROR_ALREADY_EXISTS)
        return SystemCode();
    const HANDLE handle =
        CreateFileW(path.c_str(), FILE_LIST_DIRECTORY, pinned, nullptr, OPEN_EXISTING, directory_or_link, nullptr);
    auto opened = std::make_shared<Folder>(parent, path, handle);
    std::uint32_t kind = 0;
    if (!opened->file.IsOpen())
        return SystemCode();
    const Code code = KindOfOpen(handle, kind);
    if (code != VORN_OK)
        return code;
    if (kind != VORN_KIND_DIRECTORY)
        return kind == VORN_KIND_LINK ? VORN_FS_LINK : VORN_FS_NOT_DIRECTORY;
    folder = std::move(opened);
    return VORN_OK;
}

Code List(const Folder &folder, std::vector<Item> &items)
{
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileExW(folder.Below(L"*").c_str(), FindExInfoBasic, &found, FindExSearchNameMatch,
                                           nullptr, FIND_FIRST_EX_LARGE_FETCH);
    if (search == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_FILE_NOT_FOUND ? VORN_OK : SystemCode();
    const std::unique_ptr<void, BOOL(WINAPI *)(HANDLE)> closer(search, FindClose);
    do {
        const std::wstring name = found.cFileName;
        if (name != L"." && name != L"..")
            items.push_back(FromNative(found));
    } while (FindNextFileW(search, &found));
    if (GetLastError() != ERROR_NO_MORE_FILES)
        return SystemCode();
    std::sort(items.begin(), items.end(), [](const Item &left, const Item &right) { return left.name < right.name; });
    return VORN_OK;
}

Code SetFolderTime(const Folder &folder, const Time &modified)
{
    const File writable(CreateFileW(folder.path.c_str(), FILE_WRITE_ATTRIBUTES, pinned, nullptr, OPEN_EXISTING,
                                    directory_or_link, nullptr));
    return writable.IsOpen() ? SetTime(writable.Get(), modified) : SystemCode();
}

Code OpenForReading(const FolderPointer &folder, const std::string &name, std::unique_ptr<Reader> &reader)
{
    const HANDLE handle = CreateFileW(folder->Below(Widen(name)).c_str(), GENERIC_READ, pinned | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, directory_or_link, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return SystemCode();
    auto opened = std::make_unique<WindowsReader>(folder, handle);
    std::uint32_t kind = 0;
    const Code code = KindOfOpen(opened->Get(), kind);
    if (code != VORN_OK)
        return code;
    if (kind != VORN_KIND_FILE)
        return kind == VORN_KIND_LINK ? VORN_FS_LINK : VORN_FS_NOT_FILE;
    reader = std::move(opened);
    return VORN_OK;
}

Code OpenForWriting(const FolderPointer &folder, const std::string &name, std::unique_ptr<Writer> &writer)
{
    static std::atomic<unsigned> counter;
    const std::wstring final_name = Widen(name);
    const DWORD there = GetFileAttributesW(folder->Below(final_name).c_str());
    if (there != INVALID_FILE_ATTRIBUTES && (there & FILE_ATTRIBUTE_DIRECTORY))
        return VORN_FS_NOT_FILE;

    std::wstring temporary;
    HANDLE handle = INVALID_HANDLE_VALUE;
    do {
        temporary = L".vorn_fs-" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(counter++) + L".tmp";
        handle = CreateFileW(folder->Below(temporary).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                             FILE_ATTRIBUTE_NORMAL, nullptr);
    } while (handle == INVALID_HANDLE_VALUE && GetLastError() == ERROR_FILE_EXISTS);
    if (handle == INVALID_HANDLE_VALUE)
        return SystemCode();
    writer = std::make_unique<WindowsWriter>(folder, final_name, temporary, handle);
    return VORN_OK;
}

std::string SystemText(std::uint32_t system_code)
{
    wchar_t text[400];
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        system_code, 0, text, static_cast<DWORD>(std::size(text)), nullptr);
    std::wstring line(text, length);
    while (!line.empty() && (line.back() == L'\r' || line.back() == L'\n' || line.back() == L' '))
        line.pop_back();
    return line.empty() ? "system error " + std::to_string(system_code) : Narrow(line);
}

} // namespace vorn_fs
