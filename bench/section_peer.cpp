#include "bench/section_peer.h"

#include "bench/work.h"
#include "channel/big_endian.h"
#include "platform/private_section.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>

namespace kessil::bench {
namespace {

void Append(Bytes &bytes, std::u16string_view text)
{
    for (const char16_t unit : text) {
        bytes.push_back(static_cast<unsigned char>(unit & 0xFF));
        bytes.push_back(static_cast<unsigned char>(unit >> 8));
    }
    bytes.insert(bytes.end(), 2, 0);
}

void Append(Bytes &bytes, std::string_view text)
{
    bytes.insert(bytes.end(), text.begin(), text.end());
    bytes.push_back(0);
}

void Append(Bytes &bytes, std::uint64_t number)
{
    unsigned char stored[sizeof number];
    StoreBigEndian(stored, number);
    bytes.insert(bytes.end(), std::begin(stored), std::end(stored));
}

template <class... Fields>
Bytes Frame(char type, Fields... fields)
{
    Bytes frame = {static_cast<unsigned char>(type), 0, 0, 0, 0};
    (Append(frame, fields), ...);
    StoreBigEndian(frame.data() + 1, static_cast<std::uint32_t>(frame.size() - 5));
    return frame;
}

Bytes CallFrame(const Call &call)
{
    return Frame('F', std::u16string_view(LibraryPath()), std::string_view(call.function),
                 std::string_view(call.signature));
}

} // namespace

Section::Section(const Call &call, std::uint32_t block_size)
    : m_call(call), m_blockSize(block_size), m_name(FreshName())
{
    const std::uint32_t size = SectionSize(block_size);
    m_handle = platform::CreatePrivateSection(m_name, size);
    Require(m_handle != nullptr, "a section can't be created");
    m_view = platform::MapCreatedSection(m_handle, size);
    Require(m_view != nullptr, "a section can't be mapped");
    std::memset(Block(), written_byte, BufferSize(m_call, m_blockSize));
}

Section::~Section()
{
    platform::UnmapSection(m_view, SectionSize(m_blockSize));
    RemoveName();
    platform::CloseSection(m_handle);
}

void Section::WriteInList()
{
    if (m_call.work == Work::Answer)
        return;
    Store(m_view, m_call.front, m_blockSize);
    const std::uint32_t buffer_size = BufferSize(m_call, m_blockSize);
    StoreBigEndian(m_view + SizeOf(m_call.front), buffer_size);
    Store(Block() + buffer_size, m_call.back, m_blockSize);
}

void Section::CheckOutList() const
{
    const unsigned char *const block = m_view + BlockOffset(m_call);
    const bool delivered = m_call.work != Work::Read || std::all_of(block, block + m_blockSize, [](unsigned char byte) {
                               return byte == source_byte;
                           });
    Require(delivered, "a call delivered the wrong bytes");
    CheckValues(m_call.begin, 0, BufferSize(m_call, m_blockSize));
    CheckValues(m_call.results, ResultsOffset(m_call, m_blockSize), m_blockSize);
}

void Section::CheckValues(const Values &values, std::uint32_t offset, std::uint32_t block_size) const
{
    Bytes expected(SizeOf(values));
    Store(expected.data(), values, block_size);
    Require(std::equal(expected.begin(), expected.end(), m_view + offset), "a call returned the wrong results");
}

void Section::RemoveName()
{
    platform::RemoveSectionName(m_name);
}

SectionPeer::SectionPeer(Contender contender, const bench::Call &call, std::uint32_t block_size)
    : m_contender(contender), m_call(call), m_blockSize(block_size), m_section(call, block_size),
      m_request(CallFrame(call))
{}

void SectionPeer::Start()
{
    if (m_contender == Contender::Kessil)
        StartHelper();
    else
        StartBare();
    m_section.RemoveName();
}

void SectionPeer::StartBare()
{
    std::vector<WideString> arguments = {m_section.Name(), Decimal(static_cast<std::uint32_t>(m_request.size()))};
    if (m_contender == Contender::BareWithLibrary)
        arguments.push_back(LibraryPath());
    Launch(false, m_call, m_blockSize, arguments);
    Call();
}

void SectionPeer::StartHelper()
{
    Launch(true, m_call, m_blockSize);
    m_section.WriteInList();
    Bytes opening = Frame('L', std::u16string_view(LibraryPath()));
    const Bytes section = Frame('R', std::u16string_view(m_section.Name()), std::uint64_t{SectionSize(m_blockSize)});
    opening.insert(opening.end(), section.begin(), section.end());
    opening.insert(opening.end(), m_request.begin(), m_request.end());
    Send(opening.data(), static_cast<std::uint32_t>(opening.size()));
    ReceiveSuccess(3);
}

void SectionPeer::Call()
{
    m_section.WriteInList();
    Send(m_request.data(), static_cast<std::uint32_t>(m_request.size()));
    ReceiveSuccess(1);
}

void SectionPeer::ReceiveSuccess(int answers)
{
    constexpr unsigned char success[answer_size] = {'S', 0, 0, 0, 0};
    unsigned char answer[answer_size];
    while (answers-- > 0) {
        const std::uint32_t count = Receive(answer, answer_size);
        Require(count == answer_size && std::memcmp(answer, success, count) == 0,
                "a child process answered with something other than success");
    }
}

} // namespace kessil::bench
