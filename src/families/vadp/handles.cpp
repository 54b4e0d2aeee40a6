#include "families/vadp/handles.h"

#include <algorithm>

namespace kessil {

HandleTable g_vBackupOptions;
HandleTable g_vListing;
HandleTable g_vACLInfo;
HandleTable g_vBackupSession;
HandleTable g_vRestoreSession;
HandleTable g_vBackupFile;
HandleTable g_vRestoreFile;
std::map<std::string, std::uint32_t> g_mACLInfoIndex;
void *g_pCredentials = nullptr;
void *g_pListingCache = nullptr;
void *g_pDisk = nullptr;

std::int32_t HandleTable::Store(void *object)
{
    const auto slot = std::find(m_objects.begin(), m_objects.end(), nullptr);
    const auto index = static_cast<std::int32_t>(slot - m_objects.begin());
    if (slot != m_objects.end())
        *slot = object;
    else
        m_objects.push_back(object);
    return index;
}

void HandleTable::Clear(std::uint32_t handle)
{
    if (handle < m_objects.size())
        m_objects[handle] = nullptr;
}

std::int32_t storeBackupOptions(void *object)
{
    return g_vBackupOptions.Store(object);
}

std::int32_t storeListing(void *object)
{
    return g_vListing.Store(object);
}

std::int32_t storeACLInfo(void *object)
{
    return g_vACLInfo.Store(object);
}

std::int32_t storeBackupSession(void *object)
{
    return g_vBackupSession.Store(object);
}

std::int32_t storeRestoreSession(void *object)
{
    return g_vRestoreSession.Store(object);
}

std::int32_t storeBackupFile(void *object)
{
    return g_vBackupFile.Store(object);
}

std::int32_t storeRestoreFile(void *object)
{
    return g_vRestoreFile.Store(object);
}

} // namespace kessil
