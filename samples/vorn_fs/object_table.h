#pragma once

#include "tree.h"

#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace vorn_fs {

using Handle = std::uint64_t;

struct Session
{
    FolderPointer root;
};

struct Directory
{
    Handle session = 0;
    bool open = false;
    std::vector<Item> items;
    std::size_t next = 0;
};

struct File
{
    Handle session = 0;
    std::uint32_t mode = 0; ///< 0 until opened, and again once committed
    bool time_expected = false;
    std::unique_ptr<Time> modified;
    FolderPointer folder;
    std::unique_ptr<Reader> reader;
    std::unique_ptr<Writer> writer;
};

/// Everything that is open, by handle. No handle is used twice, so a stale one is never found.
class Table
{
public:
    template <typename Object>
    Handle Add(std::map<Handle, std::shared_ptr<Object>> Table::*kind, std::shared_ptr<Object> object)
    {
        const std::lock_guard lock(m_lock);
        (this->*kind).emplace(++m_last, std::move(object));
        return m_last;
    }

    template <typename Object>
    std::shared_ptr<Object> Find(std::map<Handle, std::shared_ptr<Object>> Table::*kind, Handle handle)
    {
        const std::lock_guard lock(m_lock);
        const auto found = (this->*kind).find(handle);
        return found == (this->*kind).end() ? nullptr : found->second;
    }

    /// The object `handle` of `session`, or null.
    template <typename Object>
    std::shared_ptr<Object> Find(std::map<Handle, std::shared_ptr<Object>> Table::*kind, Handle session, Handle handle)
    {
        auto object = Find(kind, handle);
        return object && object->session == session ? object : nullptr;
    }

    template <typename Object>
    void Remove(std::map<Handle, std::shared_ptr<Object>> Table::*kind, Handle handle)
    {
        const std::lock_guard lock(m_lock);
        (this->*kind).erase(handle);
    }

    void RemoveSession(Handle session)
    {
        const auto of_session = [session](const auto &entry) { return entry.second->session == session; };
        const std::lock_guard lock(m_lock);
        std::erase_if(directories, of_session);
        std::erase_if(files, of_session);
        sessions.erase(session);
    }

    std::map<Handle, std::shared_ptr<Session>> sessions;
    std::map<Handle, std::shared_ptr<Directory>> directories;
    std::map<Handle, std::shared_ptr<File>> files;

private:
    std::mutex m_lock;
    Handle m_last = 0;
};

} // namespace vorn_fs
