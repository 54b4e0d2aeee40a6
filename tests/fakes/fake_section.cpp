#include "fakes/fake_section.h"

#include "fakes/call_log.h"
#include "platform/last_error.h"
#include "platform/section.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

namespace kessil {
namespace test {
namespace {

constexpr std::align_val_t page{4096};

void *Fail(std::uint32_t code)
{
    platform::SetLastError(code);
    return nullptr;
}

} // namespace

FakeSection fake_section;

void FakeSection::FreeBlock::operator()(unsigned char *block) const
{
    ::operator delete(block, page);
}

FakeSection::Block FakeSection::MakeBlock(std::uint32_t size)
{
    const std::size_t bytes = std::max<std::size_t>(size, 1);
    Block block(static_cast<unsigned char *>(::operator new(bytes, page)));
    std::memset(block.get(), 0, bytes);
    return block;
}

void FakeSection::Add(const WideString &name, std::uint32_t size)
{
    m_names[name] = std::make_shared<Section>(Section{size, MakeBlock(size), 0});
}

void FakeSection::Add(const WideString &name, const std::vector<unsigned char> &content)
{
    Add(name, static_cast<std::uint32_t>(content.size()));
    std::copy(content.begin(), content.end(), Bytes(name));
}

void *FakeSection::Hold(const std::shared_ptr<Section> &section)
{
    m_handles.push_back(section);
    ++open_handles;
    return FakeSectionHandle(m_handles.size() - 1);
}

std::shared_ptr<FakeSection::Section> &FakeSection::Held(void *handle)
{
    const std::uintptr_t index = reinterpret_cast<std::uintptr_t>(handle) - 0x5E00;
    if (index >= m_handles.size() || !m_handles[index])
        std::abort();
    return m_handles[index];
}

void *FakeSection::Create(const WideString &name, std::uint32_t size)
{
    if (create_code == 0 && opens_taken && Has(name))
        return Hold(m_names.at(name));
    return CreatePrivate(name, size);
}

void *FakeSection::CreatePrivate(const WideString &name, std::uint32_t size)
{
    if (create_code != 0)
        return Fail(create_code);
    if (Has(name))
        return Fail(taken_code);
    if (size == 0)
        return Fail(empty_code);
    if (size > largest)
        return Fail(no_memory_code);
    Add(name, size);
    return Hold(m_names.at(name));
}

void *FakeSection::Open(const WideString &name, std::uint32_t size)
{
    if (open_code != 0)
        return Fail(open_code);
    if (!Has(name))
        return Fail(missing_code);
    if (open_checks_size && m_names.at(name)->size < size)
        return Fail(too_small_code);
    return Hold(m_names.at(name));
}

unsigned char *FakeSection::Map(void *handle, std::uint32_t size)
{
    const std::shared_ptr<Section> section = Held(handle);
    if (map_code != 0 || section->size < size) {
        Fail(map_code != 0 ? map_code : too_small_code);
        return nullptr;
    }
    ++section->views;
    m_views.push_back({section, size});
    ++views;
    return section->bytes.get();
}

void FakeSection::Unmap(const unsigned char *view, std::uint32_t size)
{
    const auto ended = std::find_if(m_views.begin(), m_views.end(), [view, size](const View &each) {
        return each.section->bytes.get() == view && each.size == size;
    });
    if (ended == m_views.end())
        std::abort();
    Section &section = *ended->section;
    if (--section.views == 0) {
        Block moved = MakeBlock(section.size);
        std::memcpy(moved.get(), section.bytes.get(), section.size);
        section.bytes = std::move(moved);
    }
    m_views.erase(ended);
    --views;
}

void FakeSection::Close(void *handle)
{
    Held(handle).reset();
    --open_handles;
}

} // namespace test

namespace platform {

SectionHandle CreateSection(const WideString &name, std::uint32_t size, bool admit_users)
{
    test::call_log.Add("CreateSection " + ToUtf8(name) + " " + std::to_string(size) +
                       (admit_users ? " admitting users" : ""));
    return test::fake_section.Create(name, size);
}

SectionHandle OpenSection(const WideString &name, std::uint32_t size)
{
    test::call_log.Add("OpenSection " + ToUtf8(name) + " " + std::to_string(size));
    return test::fake_section.Open(name, size);
}

unsigned char *MapCreatedSection(SectionHandle section, std::uint32_t size)
{
    test::call_log.Add("MapCreatedSection " + std::to_string(size));
    return test::fake_section.Map(section, size);
}

unsigned char *MapOpenedSection(SectionHandle section, std::uint32_t size)
{
    test::call_log.Add("MapOpenedSection " + std::to_string(size));
    return test::fake_section.Map(section, size);
}

void UnmapSection(unsigned char *view, std::uint32_t size)
{
    test::call_log.Add("UnmapSection " + std::to_string(size));
    test::fake_section.Unmap(view, size);
}

void CloseSection(SectionHandle section)
{
    test::call_log.Add("CloseSection");
    test::fake_section.Close(section);
}

void RemoveSectionName(const WideString &name)
{
    test::call_log.Add("RemoveSectionName " + ToUtf8(name));
    test::fake_section.RemoveName(name);
}

} // namespace platform
} // namespace kessil
