#pragma once

#include "platform/text.h"

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

namespace kessil::test {

/// In the place of platform/section.h: sections are blocks of this process, found by name. A name that is taken is
/// refused, and stands until RemoveSectionName. All views of a section are its one block; when the last of them is
/// unmapped the content moves elsewhere, so that an address sanitizer sees whoever uses an old view. Misuse, such as
/// unmapping what isn't mapped, aborts. `fake_section = FakeSection()` begins anew; no view may be in use then.
class FakeSection
{
public:
    /// A section made by another process.
    void Add(const WideString &name, std::uint32_t size);
    void Add(const WideString &name, const std::vector<unsigned char> &content);

    bool Has(const WideString &name) const { return m_names.count(name) != 0; }

    /// A named section's content as it is now.
    unsigned char *Bytes(const WideString &name) { return m_names.at(name)->bytes.get(); }

    std::uint32_t create_code = 0; ///< when not 0, every CreateSection fails with it; the others likewise
    std::uint32_t open_code = 0;
    std::uint32_t map_code = 0;
    std::uint32_t taken_code = 183;              ///< what CreateSection fails with for a name that is taken
    std::uint32_t missing_code = 2;              ///< what OpenSection fails with for a name that isn't there
    std::uint32_t too_small_code = 22;           ///< what opening or mapping more than there is fails with
    std::uint32_t empty_code = 87;               ///< what creating a section of no bytes fails with
    std::uint32_t no_memory_code = 8;            ///< what a section of more than `largest` bytes fails with
    std::uint32_t largest = 64U * 1024U * 1024U; ///< bytes
    bool opens_taken = false;                    ///< CreateSection gives the section that is there, as Windows does
    bool open_checks_size = true;                ///< opening a section that is too small fails, as on Linux
    std::size_t open_handles = 0;
    std::size_t views = 0;

    // What platform/section.h calls.
    void *Create(const WideString &name, std::uint32_t size);
    void *CreatePrivate(const WideString &name, std::uint32_t size);
    void *Open(const WideString &name, std::uint32_t size);
    unsigned char *Map(void *handle, std::uint32_t size);
    void Unmap(const unsigned char *view, std::uint32_t size);
    void Close(void *handle);
    void RemoveName(const WideString &name) { m_names.erase(name); }

private:
    struct FreeBlock
    {
        void operator()(unsigned char *block) const;
    };
    using Block = std::unique_ptr<unsigned char, FreeBlock>;
    struct Section
    {
        std::uint32_t size = 0;
        Block bytes;
        std::size_t views = 0;
    };
    struct View
    {
        std::shared_ptr<Section> section;
        std::uint32_t size;
    };

    static Block MakeBlock(std::uint32_t size);
    void *Hold(const std::shared_ptr<Section> &section);
    std::shared_ptr<Section> &Held(void *handle);

    std::map<WideString, std::shared_ptr<Section>> m_names;
    std::vector<std::shared_ptr<Section>> m_handles;
    std::vector<View> m_views;
};

/// The handle of the n-th section that was created or opened, from 0 on.
inline void *FakeSectionHandle(std::size_t n)
{
    return reinterpret_cast<void *>(std::uintptr_t{0x5E00} + n);
}

extern FakeSection fake_section;

} // namespace kessil::test
