#include "parent/section/shared_section.h"

#include "platform/private_section.h"

#include <random>
#include <utility>

namespace kessil::parent {

SharedSection::SharedSection(SharedSection &&other) noexcept
    : m_handle(std::exchange(other.m_handle, nullptr)), m_view(std::exchange(other.m_view, nullptr)),
      m_size(other.m_size)
{}

SharedSection &SharedSection::operator=(SharedSection &&other) noexcept
{
    if (this != &other) {
        Release();
        m_handle = std::exchange(other.m_handle, nullptr);
        m_view = std::exchange(other.m_view, nullptr);
        m_size = other.m_size;
    }
    return *this;
}

SharedSection::~SharedSection()
{
    Release();
}

void SharedSection::Release()
{
    if (m_view != nullptr)
        platform::UnmapSection(m_view, m_size);
    if (m_handle != nullptr)
        platform::CloseSection(m_handle);
    m_view = nullptr;
    m_handle = nullptr;
}

SharedSection SharedSection::Create(const WideString &name, std::uint32_t size)
{
    SharedSection section;
    section.m_size = size;
    section.m_handle = platform::CreatePrivateSection(name, size);
    if (section.m_handle != nullptr)
        section.m_view = platform::MapCreatedSection(section.m_handle, size);
    return section;
}

SharedSection SharedSection::Open(const WideString &name, std::uint32_t size)
{
    SharedSection section;
    section.m_size = size;
    section.m_handle = platform::OpenSection(name, size);
    if (section.m_handle != nullptr)
        section.m_view = platform::MapOpenedSection(section.m_handle, size);
    return section;
}

std::string RandomDigits()
{
    std::random_device source;
    std::string digits;
    for (int word = 0; word < 4; ++word) {
        const auto bits = static_cast<std::uint32_t>(source());
        for (int shift = 28; shift >= 0; shift -= 4)
            digits += "0123456789abcdef"[bits >> shift & 15];
    }
    return digits;
}

WideString RandomSectionName()
{
    return platform::FromUtf8("kessil-" + RandomDigits() + "-0");
}

WideString ToggledName(WideString name)
{
    if (!name.empty())
        name.back() = name.back() == u'0' ? u'1' : u'0';
    return name;
}

} // namespace kessil::parent
