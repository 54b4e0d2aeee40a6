#include "platform/private_section.h"

#include "platform/windows/native.h"
#include "platform/windows/own_user_only.h"

namespace kessil::platform {

SectionHandle CreatePrivateSection(const WideString &name, std::uint32_t size)
{
    OwnUserOnly access;
    SECURITY_ATTRIBUTES *const attributes = access.Get();
    if (attributes == nullptr)
        return nullptr;
    const HANDLE section = CreateFileMappingW(INVALID_HANDLE_VALUE, attributes, PAGE_READWRITE, 0, size, Wide(name));
    if (section != nullptr && GetLastError() == ERROR_ALREADY_EXISTS) {
        CloseHandle(section);
        ::SetLastError(ERROR_ALREADY_EXISTS);
        return nullptr;
    }
    return section;
}

} // namespace kessil::platform
