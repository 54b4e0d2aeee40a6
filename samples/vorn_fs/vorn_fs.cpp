#include "vorn_fs.h"

#include "object_table.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <utility>

using namespace vorn_fs;

namespace {

Table g_table;

/// Runs the body of an exported function: no exception leaves the library.
template <typename Body>
Code Guarded(Body body) noexcept
{
    try {
        return body();
    } catch (...) {
        return VORN_FS_NO_MEMORY;
    }
}

void StoreLittleEndian(unsigned char *where, std::uint64_t value, unsigned bytes)
{
    for (unsigned at = 0; at < bytes; ++at)
        where[at] = static_cast<unsigned char>(value >> (8 * at));
}

std::uint64_t LoadLittleEndian(const unsigned char *where, unsigned bytes)
{
    std::uint64_t value = 0;
    for (unsigned at = 0; at < bytes; ++at)
        value |= static_cast<std::uint64_t>(where[at]) << (8 * at);
    return value;
}

Code ParsePath(const char *text, Path &path)
{
    const std::string whole = text ? text : "";
    for (std::size_t start = 0; start <= whole.size() && !whole.empty();) {
        const std::size_t end = std::min(whole.find('/', start), whole.size());
        path.push_back(whole.substr(start, end - start));
        if (!IsPlainName(path.back()))
            return VORN_FS_BAD_PATH;
        start = end + 1;
    }
    return VORN_OK;
}

/// Opens the directory that the first `count` names of `path` lead to.
Code Walk(const FolderPointer &root, const Path &path, std::size_t count, bool create, FolderPointer &folder)
{
    folder = root;
    for (std::size_t at = 0; at < count; ++at) {
        FolderPointer below;
        const Code code = OpenFolder(folder, path[at], create, below);
        if (code != VORN_OK)
            return code;
        folder = std::move(below);
    }
    return VORN_OK;
}

/// Makes a directory or file object in `session`.
template <typename Object>
Code Create(std::map<Handle, std::shared_ptr<Object>> Table::*kind, Handle session, Handle *handle)
{
    const auto owner = g_table.Find(&Table::sessions, session);
    if (!owner)
        return VORN_FS_BAD_HANDLE;
    if (!owner->root)
        return VORN_FS_NO_ROOT;
    auto object = std::make_shared<Object>();
    object->session = session;
    *handle = g_table.Add(kind, std::move(object));
    return VORN_OK;
}

void FillItem(const Item &item, unsigned char *block)
{
    std::memset(block, 0, VORN_ITEM_SIZE);
    const std::size_t length = std::min<std::size_t>(item.name.size(), VORN_ITEM_SIZE - VORN_ITEM_NAME - 1);
    StoreLittleEndian(block + VORN_ITEM_KIND, item.kind, 4);
    StoreLittleEndian(block + VORN_ITEM_NAME_LENGTH, length, 4);
    StoreLittleEndian(block + VORN_ITEM_BYTES, item.bytes, 8);
    StoreLittleEndian(block + VORN_ITEM_SECONDS, static_cast<std::uint64_t>(item.modified.seconds), 8);
    StoreLittleEndian(block + VORN_ITEM_NANOSECONDS, item.modified.nanoseconds, 4);
    std::memcpy(block + VORN_ITEM_NAME, item.name.data(), length);
}

Code OpenAs(File &file, const FolderPointer &root, const Path &path, std::uint32_t mode)
{
    const bool create = (mode & VORN_MODE_READ) == 0;
    if (mode & VORN_MODE_DIRECTORY)
        return Walk(root, path, path.size(), create, file.folder);
    if (path.empty())
        return VORN_FS_NOT_FILE;
    const Code code = Walk(root, path, path.size() - 1, create, file.folder);
    if (code != VORN_OK)
        return code;
    return create ? OpenForWriting(file.folder, path.back(), file.writer)
                  : OpenForReading(file.folder, path.back(), file.reader);
}

bool IsMode(std::uint32_t mode)
{
    const std::uint32_t what = mode & ~VORN_MODE_WITH_TIME;
    return mode == VORN_MODE_READ || what == VORN_MODE_WRITE || what == VORN_MODE_DIRECTORY;
}

Code TakeTime(File &file, const unsigned char *block, std::uint32_t size)
{
    Time time;
    if (size == VORN_TIME_SIZE) {
        time.seconds = static_cast<std::int64_t>(LoadLittleEndian(block + VORN_TIME_SECONDS, 8));
        time.nanoseconds = static_cast<std::uint32_t>(LoadLittleEndian(block + VORN_TIME_NANOSECONDS, 4));
    }
    if (size != VORN_TIME_SIZE || time.nanoseconds > 999999999)
        return VORN_FS_BAD_TIME;
    file.modified = std::make_unique<Time>(time);
    file.time_expected = false;
    return VORN_OK;
}

std::string TextOf(Code code)
{
    static const char *const texts[] = {
        "no error",
        "no more items",
        "the handle is not open in this session",
        "the path is not valid",
        "the path leads to or through a link, and links are not followed",
        "not a directory",
        "not a regular file",
        "the mode is not supported",
        "the object is not open for that",
        "the time to restore is missing or malformed",
        "VORN_FS_ROOT does not name a directory that can be opened",
        "out of memory",
    };
    if (code < std::size(texts))
        return texts[code];
    if (code >= VORN_FS_SYSTEM)
        return SystemText(code - VORN_FS_SYSTEM);
    return "unknown code " + std::to_string(code);
}

} // namespace

uint32_t GetLibApiVersion(void)
{
    return 2;
}

uint32_t GetBackupType(void)
{
    return 1;
}

uint32_t VornCreateSession(uint64_t *session)
{
    *session = 0;
    return Guarded([&] {
        auto created = std::make_shared<Session>();
        const Code code = OpenRoot(created->root);
        *session = g_table.Add(&Table::sessions, std::move(created));
        return code;
    });
}

uint32_t VornCloseSession(uint64_t session)
{
    return Guarded([&]() -> Code {
        if (!g_table.Find(&Table::sessions, session))
            return VORN_FS_BAD_HANDLE;
        g_table.RemoveSession(session);
        return VORN_OK;
    });
}

uint32_t VornCreateDir(uint64_t session, uint64_t *dir)
{
    *dir = 0;
    return Guarded([&] { return Create(&Table::directories, session, dir); });
}

uint32_t VornOpenDir(uint64_t session, uint64_t dir, const char *path)
{
    return Guarded([&]() -> Code {
        const auto owner = g_table.Find(&Table::sessions, session);
        const auto directory = g_table.Find(&Table::directories, session, dir);
        if (!owner || !directory)
            return VORN_FS_BAD_HANDLE;
        if (directory->open)
            return VORN_FS_WRONG_STATE;
        Path names;
        FolderPointer folder;
        Code code = ParsePath(path, names);
        if (code == VORN_OK)
            code = Walk(owner->root, names, names.size(), false, folder);
        if (code == VORN_OK)
            code = List(*folder, directory->items);
        directory->open = code == VORN_OK;
        return code;
    });
}

uint32_t VornGetNextDirItem(uint64_t session, uint64_t dir, void *item)
{
    return Guarded([&]() -> Code {
        const auto directory = g_table.Find(&Table::directories, session, dir);
        if (!directory)
            return VORN_FS_BAD_HANDLE;
        if (!directory->open)
            return VORN_FS_WRONG_STATE;
        if (directory->next == directory->items.size())
            return VORN_END;
        const Item &next = directory->items[directory->next++];
        FillItem(next, static_cast<unsigned char *>(item));
        return next.code;
    });
}

uint32_t VornCloseDir(uint64_t session, uint64_t dir)
{
    return Guarded([&]() -> Code {
        if (!g_table.Find(&Table::directories, session, dir))
            return VORN_FS_BAD_HANDLE;
        g_table.Remove(&Table::directories, dir);
        return VORN_OK;
    });
}

uint32_t VornCreateFile(uint64_t session, uint64_t *file)
{
    *file = 0;
    return Guarded([&] { return Create(&Table::files, session, file); });
}

uint32_t VornOpenFile(uint64_t session, uint64_t file, const char *path, uint32_t mode)
{
    return Guarded([&]() -> Code {
        const auto owner = g_table.Find(&Table::sessions, session);
        const auto object = g_table.Find(&Table::files, session, file);
        if (!owner || !object)
            return VORN_FS_BAD_HANDLE;
        if (object->mode != 0)
            return VORN_FS_WRONG_STATE;
        if (!IsMode(mode))
            return VORN_FS_BAD_MODE;
        Path names;
        Code code = ParsePath(path, names);
        if (code == VORN_OK)
            code = OpenAs(*object, owner->root, names, mode);
        if (code != VORN_OK)
            return code;
        object->mode = mode;
        object->time_expected = (mode & VORN_MODE_WITH_TIME) != 0;
        return VORN_OK;
    });
}

uint32_t VornReadFile(uint64_t session, uint64_t file, void *block, uint32_t size, uint32_t *count)
{
    *count = 0;
    return Guarded([&]() -> Code {
        const auto object = g_table.Find(&Table::files, session, file);
        if (!object)
            return VORN_FS_BAD_HANDLE;
        return object->reader ? object->reader->Read(block, size, *count) : VORN_FS_WRONG_STATE;
    });
}

uint32_t VornWriteFile(uint64_t session, uint64_t file, const void *block, uint32_t size, uint32_t *count)
{
    *count = 0;
    return Guarded([&]() -> Code {
        const auto object = g_table.Find(&Table::files, session, file);
        if (!object)
            return VORN_FS_BAD_HANDLE;
        if (object->time_expected) {
            const Code code = TakeTime(*object, static_cast<const unsigned char *>(block), size);
            *count = code == VORN_OK ? size : 0;
            return code;
        }
        return object->writer ? object->writer->Write(block, size, *count) : VORN_FS_WRONG_STATE;
    });
}

uint32_t VornRestoreFile(uint64_t session, uint64_t file)
{
    return Guarded([&]() -> Code {
        const auto object = g_table.Find(&Table::files, session, file);
        if (!object)
            return VORN_FS_BAD_HANDLE;
        if (object->time_expected)
            return VORN_FS_BAD_TIME;
        if (object->writer) {
            const Code code = object->writer->Commit(object->modified.get());
            object->writer.reset();
            return code;
        }
        if ((object->mode & VORN_MODE_DIRECTORY) == 0)
            return VORN_FS_WRONG_STATE;
        return object->modified ? SetFolderTime(*object->folder, *object->modified) : VORN_OK;
    });
}

uint32_t VornCloseFile(uint64_t session, uint64_t file)
{
    return Guarded([&]() -> Code {
        if (!g_table.Find(&Table::files, session, file))
            return VORN_FS_BAD_HANDLE;
        g_table.Remove(&Table::files, file);
        return VORN_OK;
    });
}

const char *VornGetErrorText(uint64_t, uint64_t, uint32_t code)
{
    // Without a destructor, so that the library can be unloaded while threads that called it still run.
    static thread_local char text[512];
    try {
        std::snprintf(text, sizeof text, "%s", TextOf(code).c_str());
        return text;
    } catch (const std::bad_alloc &) {
        return "out of memory";
    }
}
