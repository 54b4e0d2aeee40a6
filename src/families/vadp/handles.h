#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

// What the adapter's calls keep for later ones, as long as the process runs. The adapter's objects are pointers that
// only the adapter follows; none of them is released at the end. For the main thread only.

namespace kessil {

/// The objects of one kind. The parent names each by its index here. An index is free while its pointer is null.
class HandleTable
{
public:
    /// The object, or null for a handle that the table doesn't have, such as a negative one.
    void *operator[](std::uint32_t handle) const { return handle < m_objects.size() ? m_objects[handle] : nullptr; }

    /// Puts the object at the lowest free index, which is returned.
    std::int32_t Store(void *object);

    /// Frees the index, if the table has it.
    void Clear(std::uint32_t handle);

    std::size_t Size() const { return m_objects.size(); }

    /// Removes all objects.
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
extern HandleTable g_vRestoreFile; ///< also of configuration readers

/// Put the object into its table; see HandleTable::Store.
std::int32_t storeBackupOptions(void *object);
std::int32_t storeListing(void *object);
std::int32_t storeACLInfo(void *object);
std::int32_t storeBackupSession(void *object);
std::int32_t storeRestoreSession(void *object);
std::int32_t storeBackupFile(void *object);
std::int32_t storeRestoreFile(void *object);

/// The index in g_vACLInfo of the object that was made under a key. It may have been freed since.
extern std::map<std::string, std::uint32_t> g_mACLInfoIndex;

extern void *g_pCredentials;
extern void *g_pListingCache;
extern void *g_pDisk; ///< the one open disk

} // namespace kessil
