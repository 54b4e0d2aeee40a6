#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

// What the adapter's calls leave behind for later ones, for the life of the process. The adapter's objects are pointers
// that only the adapter looks behind; none of them is released at the end. For the main thread only.

namespace kessil {

/// The objects of one kind that the parent knows, each by its index here. An index is free while its pointer is null.
class HandleTable
{
public:
    /// The object, or null for a handle that the table doesn't have; negative ones are among these.
    void *operator[](std::uint32_t handle) const { return handle < m_objects.size() ? m_objects[handle] : nullptr; }

    /// Puts the object at the lowest free index, which is returned.
    std::int32_t Store(void *object);

    /// Frees the index, if the table has it.
    void Clear(std::uint32_t handle);

    std::size_t Size() const { return m_objects.size(); }

    /// Forgets everything, as if nothing had been stored.
    void Reset() { m_objects.clear(); }

private:
    std::vector<void *> m_objects;
};

extern HandleTable g_vBackupOptions;
extern HandleTable g_vListing; ///< of AdapterListing
extern HandleTable g_vACLInfo;
extern HandleTable g_vBackupSession;
extern HandleTable g_vRestoreSession;
extern HandleTable g_vBackupFile;
extern HandleTable g_vRestoreFile; ///< of config readers, too

/// Put the object into its table; see HandleTable::Store.
std::int32_t storeBackupOptions(void *object);
std::int32_t storeListing(void *object);
std::int32_t storeACLInfo(void *object);
std::int32_t storeBackupSession(void *object);
std::int32_t storeRestoreSession(void *object);
std::int32_t storeBackupFile(void *object);
std::int32_t storeRestoreFile(void *object);

/// Where in g_vACLInfo the object lies that was made under a key. What was once there may have gone since.
extern std::map<std::string, std::uint32_t> g_mACLInfoIndex;

extern void *g_pCredentials;
extern void *g_pListingCache;
extern void *g_pDisk; ///< the one open disk

} // namespace kessil
