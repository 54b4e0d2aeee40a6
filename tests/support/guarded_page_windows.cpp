#include "support/guarded_page.h"

#include <cstring>
#include <new>
#include <windows.h>

namespace kessil::test {

GuardedBlock::GuardedBlock(std::size_t size) : m_size(size)
{
    SYSTEM_INFO system = {};
    GetSystemInfo(&system);
    const std::size_t page = system.dwPageSize;
    const std::size_t usable = (size + page - 1) / page * page;
    m_length = usable + page;
    m_pages = VirtualAlloc(nullptr, m_length, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    if (m_pages == nullptr)
        throw std::bad_alloc();
    m_end = static_cast<unsigned char *>(m_pages) + usable;
    std::memset(m_pages, 0xEE, usable);
    DWORD old = 0;
    if (!VirtualProtect(m_end, page, PAGE_NOACCESS, &old))
        throw std::bad_alloc();
}

GuardedBlock::~GuardedBlock()
{
    VirtualFree(m_pages, 0, MEM_RELEASE);
}

} // namespace kessil::test
