#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

/// vorn_fs loaded into this process, and a tree for it to serve in a directory of its own, with a neighbour `outside`.

struct ListedItem
{
    std::uint32_t kind;
    std::string name;
    std::uint64_t bytes;
    std::int64_t seconds;
    std::uint32_t nanoseconds;
};

/// The library's functions, with types of their own and not those of the library's header.
struct VornFunctions
{
    std::uint32_t (*GetLibApiVersion)();
    std::uint32_t (*GetBackupType)();
    std::uint32_t (*CreateSession)(std::uint64_t *);
    std::uint32_t (*CloseSession)(std::uint64_t);
    std::uint32_t (*CreateDir)(std::uint64_t, std::uint64_t *);
    std::uint32_t (*OpenDir)(std::uint64_t, std::uint64_t, const char *);
    std::uint32_t (*GetNextDirItem)(std::uint64_t, std::uint64_t, void *);
    std::uint32_t (*CloseDir)(std::uint64_t, std::uint64_t);
    std::uint32_t (*CreateFile)(std::uint64_t, std::uint64_t *);
    std::uint32_t (*OpenFile)(std::uint64_t, std::uint64_t, const char *, std::uint32_t);
    std::uint32_t (*ReadFile)(std::uint64_t, std::uint64_t, void *, std::uint32_t, std::uint32_t *);
    std::uint32_t (*WriteFile)(std::uint64_t, std::uint64_t, const void *, std::uint32_t, std::uint32_t *);
    std::uint32_t (*RestoreFile)(std::uint64_t, std::uint64_t);
    std::uint32_t (*CloseFile)(std::uint64_t, std::uint64_t);
    const char *(*GetErrorText)(std::uint64_t, std::uint64_t, std::uint32_t);
};

class VornFs : public testing::Test
{
protected:
    VornFs();
    ~VornFs() override;

    /// A session on the tree; of another session's root when VORN_FS_ROOT was changed in between.
    std::uint64_t OpenSession();

    void WriteBelow(const std::filesystem::path &path, const std::string &content);
    std::string ReadBelow(const std::filesystem::path &path);

    /// The listing of a directory. The test fails when the library reports a failure.
    std::vector<ListedItem> ListAll(const std::string &path);
    std::vector<std::string> Names(const std::string &path);

    /// Opens a file object; `code` gets what VornOpenFile returned.
    std::uint64_t Open(const std::string &path, std::uint32_t mode, std::uint32_t &code);
    std::uint32_t OpenCode(const std::string &path, std::uint32_t mode);

    /// The content of a file through the library, read in blocks of `block` bytes.
    std::string ReadAll(const std::string &path, std::uint32_t block = 1000);

    /// Writes and commits a file through the library.
    void Restore(const std::string &path, const std::string &content);

    VornFunctions vorn;
    std::filesystem::path base;
    std::filesystem::path root;
    std::filesystem::path outside;
    std::uint64_t session = 0;

private:
    void *m_library;
};
