#include "platform/section.h"

#include "platform/windows/native.h"

#include <cstdlib>

namespace kessil::platform {

namespace {

/// The SID of a local group; null on failure. The caller releases it with FreeSid.
PSID GroupSid(DWORD group)
{
    SID_IDENTIFIER_AUTHORITY authority = {SECURITY_NT_AUTHORITY};
    PSID sid = nullptr;
    if (!AllocateAndInitializeSid(&authority, 2, SECURITY_BUILTIN_DOMAIN_RID, group, 0, 0, 0, 0, 0, 0, &sid))
        return nullptr;
    if (IsValidSid(sid))
        return sid;
    FreeSid(sid);
    return nullptr;
}

/// The attributes of a section that Administrators may open, and also the holder of `extra_sid` unless it is null. If
/// any step fails, `failed` stays set and the base has no descriptor.
struct CSecurityAttributes : SECURITY_ATTRIBUTES
{
    explicit CSecurityAttributes(PSID extra_sid);
    ~CSecurityAttributes();
    CSecurityAttributes(const CSecurityAttributes &) = delete;
    CSecurityAttributes &operator=(const CSecurityAttributes &) = delete;

    DWORD failed = 1;
    void *descriptor = nullptr;
    ACL *acl = nullptr;
    PSID admin_sid = nullptr;

private:
    bool Build(PSID extra_sid);
    bool BuildList(PSID extra_sid);
};

CSecurityAttributes::CSecurityAttributes(PSID extra_sid)
    : SECURITY_ATTRIBUTES{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE}
{
    if (!Build(extra_sid))
        return;
    lpSecurityDescriptor = descriptor;
    failed = 0;
}

CSecurityAttributes::~CSecurityAttributes()
{
    const LastErrorKeeper keeper;
    std::free(descriptor);
    std::free(acl);
    if (admin_sid)
        FreeSid(admin_sid);
}

bool CSecurityAttributes::Build(PSID extra_sid)
{
    descriptor = std::malloc(sizeof(SECURITY_DESCRIPTOR));
    if (!descriptor || !InitializeSecurityDescriptor(descriptor, SECURITY_DESCRIPTOR_REVISION))
        return false;
    admin_sid = GroupSid(DOMAIN_ALIAS_RID_ADMINS);
    return admin_sid && BuildList(extra_sid) && SetSecurityDescriptorDacl(descriptor, TRUE, acl, FALSE);
}

bool CSecurityAttributes::BuildList(PSID extra_sid)
{
    // The last member of an entry is the first DWORD of its SID.
    constexpr DWORD entry_size = sizeof(ACCESS_ALLOWED_ACE) - sizeof(DWORD);
    DWORD size = sizeof(ACL) + entry_size + GetLengthSid(admin_sid);
    if (extra_sid)
        size += entry_size + GetLengthSid(extra_sid);

    acl = static_cast<ACL *>(std::malloc(size));
    return acl && InitializeAcl(acl, size, ACL_REVISION) &&
           AddAccessAllowedAce(acl, ACL_REVISION, GENERIC_ALL, admin_sid) &&
           (!extra_sid || AddAccessAllowedAce(acl, ACL_REVISION, GENERIC_ALL, extra_sid));
}

unsigned char *Map(SectionHandle section, DWORD access, std::uint32_t size)
{
    return static_cast<unsigned char *>(MapViewOfFile(section, access, 0, 0, size));
}

} // namespace

SectionHandle CreateSection(const WideString &name, std::uint32_t size, bool admit_users)
{
    PSID users_sid = admit_users ? GroupSid(DOMAIN_ALIAS_RID_USERS) : nullptr;
    CSecurityAttributes attributes(users_sid);
    if (users_sid)
        FreeSid(users_sid);

    return CreateFileMappingW(INVALID_HANDLE_VALUE, attributes.failed ? nullptr : &attributes, PAGE_READWRITE, 0, size,
                              Wide(name));
}

SectionHandle OpenSection(const WideString &name, std::uint32_t)
{
    return OpenFileMappingW(FILE_MAP_READ | FILE_MAP_WRITE, FALSE, Wide(name));
}

unsigned char *MapCreatedSection(SectionHandle section, std::uint32_t size)
{
    return Map(section, FILE_MAP_ALL_ACCESS, size);
}

unsigned char *MapOpenedSection(SectionHandle section, std::uint32_t size)
{
    return Map(section, FILE_MAP_READ | FILE_MAP_WRITE, size);
}

void UnmapSection(unsigned char *view, std::uint32_t)
{
    const LastErrorKeeper keeper;
    UnmapViewOfFile(view);
}

void CloseSection(SectionHandle section)
{
    CloseKeepingLastError(section);
}

void RemoveSectionName(const WideString &) {}

} // namespace kessil::platform
