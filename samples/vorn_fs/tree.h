#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// The directory tree in the file system. One implementation for each operating system.
namespace vorn_fs {

/// A result code of kessil/data_source.h or vorn_fs.h.
using Code = std::uint32_t;

struct Time
{
    std::int64_t seconds = 0;
    std::uint32_t nanoseconds = 0;
};

/// One item of a listing. If `code` is a failure, only the name is valid.
struct Item
{
    std::string name;
    std::uint32_t kind = 0;
    std::uint64_t bytes = 0;
    Time modified;
    Code code = 0;
};

/// The names of a path, each of them a plain one.
using Path = std::vector<std::string>;

/// An open directory of the tree. While it is open, its path can't be made to lead elsewhere.
struct Folder;
using FolderPointer = std::shared_ptr<const Folder>;

/// A file being read.
class Reader
{
public:
    virtual ~Reader() = default;

    /// Reads up to `size` bytes, fewer only at the end of the file or on failure. `count` is set in every case.
    virtual Code Read(void *block, std::uint32_t size, std::uint32_t &count) = 0;
};

/// A file being written under a temporary name. The destructor removes it unless Commit succeeded.
class Writer
{
public:
    virtual ~Writer() = default;

    virtual Code Write(const void *block, std::uint32_t size, std::uint32_t &count) = 0;

    /// Gives the file its time, unless null, and its name. Nothing can be written afterwards.
    virtual Code Commit(const Time *modified) = 0;
};

/// Whether the system takes `name` for that of something in its directory, and for nothing else.
bool IsPlainName(const std::string &name);

/// Opens the directory that VORN_FS_ROOT names.
Code OpenRoot(FolderPointer &root);

/// Opens the directory `name` in `parent`. With `create` it is made first if it doesn't exist.
Code OpenFolder(const FolderPointer &parent, const std::string &name, bool create, FolderPointer &folder);

/// All that is in a directory, in the order of the names' bytes.
Code List(const Folder &folder, std::vector<Item> &items);

Code SetFolderTime(const Folder &folder, const Time &modified);

Code OpenForReading(const FolderPointer &folder, const std::string &name, std::unique_ptr<Reader> &reader);

Code OpenForWriting(const FolderPointer &folder, const std::string &name, std::unique_ptr<Writer> &writer);

/// The operating system's text for its own code.
std::string SystemText(std::uint32_t system_code);

} // namespace vorn_fs
