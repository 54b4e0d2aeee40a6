#pragma once

#include "platform/windows/handle.h"

#include <vector>

namespace kessil::platform {

/// A security descriptor that admits only the user of this process.
class OwnUserOnly
{
public:
    OwnUserOnly() { m_built = ReadUser() && BuildList(); }

    /// Null when a step failed, with the reason in the last error. Valid as long as this object.
    SECURITY_ATTRIBUTES *Get() { return m_built ? &m_attributes : nullptr; }

private:
    bool ReadUser();
    bool BuildList();

    std::vector<unsigned char> m_user;
    std::vector<unsigned char> m_list;
    SECURITY_DESCRIPTOR m_descriptor = {};
    SECURITY_ATTRIBUTES m_attributes = {sizeof(SECURITY_ATTRIBUTES), &m_descriptor, FALSE};
    bool m_built = false;
};

inline bool OwnUserOnly::ReadUser()
{
    HANDLE opened = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened))
        return false;
    const Handle token(opened);
    DWORD size = 0;
    GetTokenInformation(token.Get(), TokenUser, nullptr, 0, &size);
    m_user.resize(size);
    return GetTokenInformation(token.Get(), TokenUser, m_user.data(), size, &size) != 0;
}

inline bool OwnUserOnly::BuildList()
{
    const PSID sid = reinterpret_cast<const TOKEN_USER *>(m_user.data())->User.Sid;
    const DWORD size = sizeof(ACL) + sizeof(ACCESS_ALLOWED_ACE) - sizeof(DWORD) + GetLengthSid(sid);
    m_list.resize(size);
    auto *const list = reinterpret_cast<ACL *>(m_list.data());
    return InitializeAcl(list, size, ACL_REVISION) && AddAccessAllowedAce(list, ACL_REVISION, GENERIC_ALL, sid) &&
           InitializeSecurityDescriptor(&m_descriptor, SECURITY_DESCRIPTOR_REVISION) &&
           SetSecurityDescriptorDacl(&m_descriptor, TRUE, list, FALSE);
}

} // namespace kessil::platform
