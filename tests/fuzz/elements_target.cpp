#include "families/ese/composites.h"
#include "marshal/elements.h"

#include "fuzz/fuzz_support.h"

#include <algorithm>
#include <memory>

// One byte: which element. One: its alignment. Then the rest of the section.

using namespace kessil;
using namespace kessil::test;

namespace {

constexpr std::size_t page = 4096;

// The rest of a section, `alignment` bytes behind a multiple of 8, in a block that ends with it.
class Tail
{
public:
    Tail(const Bytes &bytes, std::size_t alignment)
        : m_block(std::make_unique<unsigned char[]>(alignment + bytes.size())), m_alignment(alignment),
          m_size(bytes.size())
    {
        std::copy(bytes.begin(), bytes.end(), Data());
    }
    unsigned char *Data() const { return m_block.get() + m_alignment; }
    std::uint32_t Size() const { return static_cast<std::uint32_t>(m_size); }
    Bytes Content() const { return {Data(), Data() + m_size}; }

private:
    std::unique_ptr<unsigned char[]> m_block;
    std::size_t m_alignment;
    std::size_t m_size;
};

// What was read, written to the same place, leaves every byte as it is and takes the same step.
template <class Element>
void ReadAndWriteBack(const Bytes &bytes, std::size_t alignment)
{
    const Tail section(bytes, alignment);
    Element element;
    const std::uint32_t taken = element.ReadFromBuffer(section.Data(), section.Size());
    Require(section.Content() == bytes);
    if (taken == 0)
        return;
    Require(taken <= section.Size());
    Require(element.GetBufferSize() >= taken);
    Require(element.WriteToBuffer(section.Data(), section.Size()) == taken);
    Require(section.Content() == bytes);
}

// The same value into less and less room: never more than there is.
template <class Element>
void WriteIntoLess(const Bytes &bytes, std::size_t alignment)
{
    const Tail source(bytes, alignment);
    Element element;
    const std::uint32_t taken = element.ReadFromBuffer(source.Data(), source.Size());
    if (taken == 0)
        return;
    for (std::size_t room = 0; room < std::min<std::size_t>(taken, 64); ++room) {
        const Tail target(Repeat(0, room), alignment);
        const std::uint32_t written = element.WriteToBuffer(target.Data(), target.Size());
        Require(written == 0 || written == 0xFFFFFFFF || written <= room);
    }
}

template <class Element>
void Try(const Bytes &bytes, std::size_t alignment)
{
    ReadAndWriteBack<Element>(bytes, alignment);
    WriteIntoLess<Element>(bytes, alignment);
}

// A GUID may be read from another length than it is written with, so what is written back needn't be what was read. It
// fits into what it asks for, and every time the same bytes come out.
template <class Composite>
void TryComposite(const Bytes &bytes, std::size_t alignment)
{
    const Tail section(bytes, alignment);
    Composite composite;
    const std::uint32_t taken = composite.ReadFromBuffer(section.Data(), section.Size());
    Require(section.Content() == bytes);
    if (taken == 0)
        return;
    Require(taken <= section.Size());
    Composite copy = composite;
    const std::uint32_t bound = composite.GetBufferSize();
    const Tail first(Repeat(0, bound), alignment);
    const Tail second(Repeat(0, bound), alignment);
    const std::uint32_t written = composite.WriteToBuffer(first.Data(), first.Size());
    Require(written != 0 && written <= bound);
    Require(copy.WriteToBuffer(second.Data(), second.Size()) == written);
    Require(first.Content() == second.Content());
    WriteIntoLess<Composite>(bytes, alignment);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    const NoMemoryFrom limit(memory_limit);
    Input input(bytes, std::min(size, page));
    const std::uint8_t kind = input.Byte();
    const std::size_t alignment = input.Byte() % 8;
    const Bytes rest = input.Rest();
    switch (kind % 14) {
    case 0:
        Try<U8>(rest, alignment);
        break;
    case 1:
        Try<U16>(rest, alignment);
        break;
    case 2:
        Try<U32>(rest, alignment);
        break;
    case 3:
        Try<U64>(rest, alignment);
        break;
    case 4:
        Try<STR>(rest, alignment);
        break;
    case 5:
        Try<WSTR>(rest, alignment);
        break;
    case 6:
        Try<BUF>(rest, alignment);
        break;
    case 7:
        Try<IN>(rest, alignment);
        break;
    case 8:
        TryComposite<CGUIDWrapper>(rest, alignment);
        break;
    case 9:
        TryComposite<CESE_ICON_DESCRIPTIONWrapper>(rest, alignment);
        break;
    case 10:
        TryComposite<LIST>(rest, alignment);
        break;
    case 11:
        TryComposite<CDATABASE_BACKUP_INFOWrapper>(rest, alignment);
        break;
    case 12:
        TryComposite<INSTANCES>(rest, alignment);
        break;
    default:
        TryComposite<REGISTERED>(rest, alignment);
    }
    return 0;
}
