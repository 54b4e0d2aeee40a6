#include "support/guarded_page.h"

#include <cstring>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace kessil::test {

GuardedBlock::GuardedBlock(std::size_t size) : m_size(size)
{
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t usable = (size + page - 1) / page * page;
    m_length = usable + page;
    m_pages = mmap(nullptr, m_length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (m_pages == MAP_FAILED)
        throw std::bad_alloc();
    m_end = static_cast<unsigned char *>(m_pages) + usable;
    std::memset(m_pages, 0xEE, usable);
    if (mprotect(m_end, page, PROT_NONE) != 0)
        throw std::bad_alloc();
}

GuardedBlock::~GuardedBlock()
{
    munmap(m_pages, m_length);
}

} // namespace kessil::test
