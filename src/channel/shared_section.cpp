#include "channel/format_system_error.h"
#include "channel/ipc_communication.h"
#include "channel/records.h"
#include "logging/log_manager.h"
#include "platform/last_error.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace kessil {
namespace {

struct FreeBlock
{
    void operator()(unsigned char *block) const { std::free(block); }
};
using Block = std::unique_ptr<unsigned char, FreeBlock>;

// A copy of a view's content, because two sections are never mapped at once.
Block CopyOf(const unsigned char *view, std::uint32_t size)
{
    if (view == nullptr)
        return nullptr;
    Block copy(static_cast<unsigned char *>(std::malloc(std::max<std::size_t>(size, 1))));
    if (!copy)
        throw std::bad_alloc();
    std::memcpy(copy.get(), view, size);
    return copy;
}

} // namespace

bool CIPCCommunication::TakeParentsSection(const unsigned char *payload, std::uint32_t size, WideString &error)
{
    IPCStruct_Resize section;
    const bool taken = section.Parse(payload, size, error) &&
                       ReAttachSharedMemory(section.name, static_cast<std::uint32_t>(section.size), error);
    // The result of sending the answer doesn't matter: if the parent doesn't get it, it is gone, and the next read
    // reports that.
    WideString ignored;
    if (taken)
        static_cast<void>(SendSuccess(ignored));
    else
        static_cast<void>(IPCStruct_Error{-1, -1, error}.Send(*this, ignored));
    return taken;
}

bool CIPCCommunication::ReAttachSharedMemory(const WideString &name, std::uint32_t size, WideString &error)
{
    ReleaseView();
    ReleaseSection();
    m_hSharedMemory = platform::OpenSection(name, size);
    if (m_hSharedMemory == nullptr) {
        error = FormatSystemError(platform::LastError());
        return false;
    }
    m_sharedName = name;
    m_sharedSize = size;
    m_sharedView = platform::MapOpenedSection(m_hSharedMemory, size);
    if (m_sharedView == nullptr) {
        error = FormatSystemError(platform::LastError());
        return false;
    }
    return true;
}

bool CIPCCommunication::ResizeSharedMem(std::uint32_t size, WideString &error)
{
    const WideString name = NextSectionName();
    const std::uint32_t old_size = m_sharedSize;
    const Block content = CopyOf(m_sharedView, old_size);
    ReleaseView();
    ReleaseSection();
    if (!CreateSharedMemory(name, size, error))
        return false;
    if (content)
        std::memcpy(m_sharedView, content.get(), std::min(m_sharedSize, old_size));
    return IPCStruct_Resize{m_sharedName, m_sharedSize}.Send(*this, error) && AgreeWithParent(error);
}

bool CIPCCommunication::AgreeWithParent(WideString &error)
{
    char type = 0;
    unsigned char *data = nullptr;
    std::uint32_t size = 0;
    bool eof = false;
    if (!GetNextRequest(type, data, size, eof, error))
        return false;
    if (eof) {
        error = u"Communication channel disconneded";
        return false;
    }
    ReleaseSectionName();
    if (type != 'E')
        return true;
    IPCStruct_Error refusal;
    if (refusal.Parse(data, size, error))
        error = refusal.text;
    return false;
}

bool CIPCCommunication::CreateSharedMemory(const WideString &name, std::uint32_t size, WideString &error)
{
    m_sharedName = name;
    m_hSharedMemory = platform::CreateSection(name, size, m_extraUsersAccess);
    if (m_hSharedMemory == nullptr) {
        error = FormatSystemError(platform::LastError());
        Close();
        return false;
    }
    m_ownsSectionName = true;
    m_sharedSize = size;
    m_sharedView = platform::MapCreatedSection(m_hSharedMemory, size);
    if (m_sharedView == nullptr) {
        error = FormatSystemError(platform::LastError());
        Close();
        return false;
    }
    return true;
}

// An empty name has no last unit, and is treated as if there were no section. Sections of one run alternate between two
// names, because the parent still has the old one open when the new name comes into use.
WideString CIPCCommunication::NextSectionName() const
{
    WideString name = m_sharedName;
    if ((m_sharedView == nullptr && m_hSharedMemory == nullptr) || name.empty())
        name += u".1";
    else
        name.back() = name.back() == u'0' ? u'1' : u'0';
    return name;
}

void CIPCCommunication::ReleaseView()
{
    if (m_sharedView == nullptr)
        return;
    platform::UnmapSection(m_sharedView, m_sharedSize);
    m_sharedView = nullptr;
}

void CIPCCommunication::ReleaseSection()
{
    ReleaseSectionName();
    if (m_hSharedMemory == nullptr)
        return;
    KESSIL_LOG(log_debug, channel_component, "Closing handle m_hSharedMemory " << m_hSharedMemory);
    platform::CloseSection(m_hSharedMemory);
    m_hSharedMemory = nullptr;
}

void CIPCCommunication::ReleaseSectionName()
{
    if (m_ownsSectionName)
        platform::RemoveSectionName(m_sharedName);
    m_ownsSectionName = false;
}

} // namespace kessil
