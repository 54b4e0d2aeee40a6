#pragma once

#include "platform/text.h"

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

namespace kessil::test {

/// Replaces platform/section.h: sections are blocks of this process, found by name. A name in use is refused, and stays
/// in use until RemoveSectionName. All views of a section share one block; when the last of them is unmapped, the
/// content moves elsewhere, so that an address sanitizer detects the use of an old view. Misuse, such as unmapping what
/// isn't mapped, aborts. `fake_section = FakeSection()` resets it; no view may be in use then.
class FakeSection
{
public:
    /// Adds a section as if another process had created it.
    void Add(const WideString &name, std::uint32_t size);
    void Add(const WideString &name, const std::vector<unsigned char> &content);

    bool Has(const WideString &name) const { return m_names.count(name) != 0; }

    /// A section's current content.
    unsigned char *Bytes(const WideString &name) { return m_names.at(name)->bytes.get(); }

    std::uint32_t create_code = 0; ///< when not 0, every CreateSection fails with it; the others likewise
    std::uint32_t open_code = 0;
    std::uint32_t map_code = 0;
    std::uint32_t taken_code = 183;              ///< the error of CreateSection for a name in use
    std::uint32_t missing_code = 2;              ///< the error of OpenSection for a name that doesn't exist
    std::uint32_t too_small_code = 22;           ///< the error of opening or mapping more than there is
    std::uint32_t empty_code = 87;               ///< the error of creating an empty section
    std::uint32_t no_memory_code = 8;            ///< the error of creating a section of more than `largest` bytes
    std::uint32_t largest = 64U * 1024U * 1024U; ///< bytes
    bool opens_taken = false;                    ///< CreateSection opens an existing section, as on Windows
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
