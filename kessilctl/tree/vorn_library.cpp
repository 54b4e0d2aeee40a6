#include "kessilctl/tree/vorn_library.h"

#include <kessil/data_source.h>

#include <algorithm>
#include <utility>

namespace kessil::kessilctl {
namespace {

constexpr std::uint32_t interface_version = 2;
constexpr std::uint32_t error_text_room = 1024;
constexpr std::uint32_t list_overhead = 256; ///< at least what the numbers and paddings around a block take

std::uint64_t LittleEndian(std::span<const std::byte> item, std::size_t offset, std::size_t bytes)
{
    std::uint64_t value = 0;
    for (std::size_t at = bytes; at-- > 0;)
        value = (value << 8) | std::to_integer<std::uint64_t>(item[offset + at]);
    return value;
}

void StoreLittleEndian(std::span<std::byte> block, std::size_t offset, std::uint64_t value, std::size_t bytes)
{
    for (std::size_t at = 0; at < bytes; ++at)
        block[offset + at] = static_cast<std::byte>(value >> (8 * at));
}

Kind KindOf(std::uint64_t code)
{
    switch (code) {
    case VORN_KIND_FILE:
        return Kind::File;
    case VORN_KIND_DIRECTORY:
        return Kind::Directory;
    case VORN_KIND_LINK:
        return Kind::Link;
    default:
        return Kind::Other;
    }
}

Entry Decode(std::span<const std::byte> item)
{
    Entry entry;
    entry.kind = KindOf(LittleEndian(item, VORN_ITEM_KIND, 4));
    entry.bytes = LittleEndian(item, VORN_ITEM_BYTES, 8);
    entry.modified.seconds = static_cast<std::int64_t>(LittleEndian(item, VORN_ITEM_SECONDS, 8));
    entry.modified.nanoseconds = static_cast<std::uint32_t>(LittleEndian(item, VORN_ITEM_NANOSECONDS, 4));
    const auto length = LittleEndian(item, VORN_ITEM_NAME_LENGTH, 4);
    const auto name = item.subspan(VORN_ITEM_NAME);
    entry.name.assign(reinterpret_cast<const char *>(name.data()), std::min<std::size_t>(length, name.size()));
    return entry;
}

std::uint32_t ModeBits(VornFile::Mode mode)
{
    switch (mode) {
    case VornFile::Mode::Write:
        return VORN_MODE_WRITE | VORN_MODE_WITH_TIME;
    case VornFile::Mode::Directory:
        return VORN_MODE_DIRECTORY | VORN_MODE_WITH_TIME;
    case VornFile::Mode::Read:
        break;
    }
    return VORN_MODE_READ;
}

/// For destructors. If the helper has ended, the next request reports it.
template <typename Action>
void IgnoreFailure(const Action &action) noexcept
{
    try {
        action();
    } catch (const std::exception &) {
        return;
    }
}

} // namespace

VornLibrary::VornLibrary(const RunningHelper &running, WideString library)
    : m_running(running), m_library(std::move(library))
{
    Require(m_running.helper.Load(m_library));
    std::uint32_t version = 0;
    m_running.helper.Begin();
    Require(Call("GetLibApiVersion").U32(version).Complete());
    if (version != interface_version)
        throw Failure(ExitCode::LibraryFailed, "the library doesn't have version 2 of the data-source interface");
    m_running.helper.Begin();
    Require(Call("VornCreateSession").U64(m_session).Complete());
    m_open = true;
}

VornLibrary::~VornLibrary()
{
    IgnoreFailure([this] { Close(); });
}

parent::OutList &VornLibrary::Call(const char *function)
{
    m_running.interruption.Check();
    return CallUninterrupted(function);
}

parent::OutList &VornLibrary::CallUninterrupted(const char *function)
{
    Require(m_running.helper.Call(m_library, function, std::string("SIGNATURE_") + function, m_running.limit));
    return m_running.helper.Results();
}

void VornLibrary::Check(std::uint32_t result, std::uint64_t object)
{
    if (result != VORN_OK)
        throw LibraryError(ErrorText(object, result));
}

std::string VornLibrary::ErrorText(std::uint64_t object, std::uint32_t code)
{
    std::uint64_t ignored_handle = 0;
    std::uint32_t ignored_code = 0;
    std::span<const std::byte> text;
    m_running.helper.Begin().U64(m_session).U64(object).U32(code).Room(error_text_room).U32(error_text_room);
    Require(Call("VornGetErrorText").U64(ignored_handle).U64(ignored_handle).U32(ignored_code).Buffer(text).Complete());
    const auto end = std::find(text.begin(), text.end(), std::byte{0});
    const std::string found(reinterpret_cast<const char *>(text.data()), static_cast<std::size_t>(end - text.begin()));
    return (found.empty() ? "no text" : found) + " (code " + std::to_string(code) + ")";
}

std::uint64_t VornLibrary::Create(const char *function)
{
    std::uint64_t object = 0;
    std::uint32_t result = 0;
    m_running.helper.Begin().U64(m_session);
    Require(Call(function).U64(object).U32(result).Complete());
    Check(result, 0);
    return object;
}

std::vector<Entry> VornLibrary::List(const std::string &path)
{
    const VornObject dir(*this, "VornCreateDir", "VornCloseDir");
    std::uint32_t result = 0;
    m_running.helper.Begin().U64(m_session).U64(dir.Handle()).Str(path);
    Require(Call("VornOpenDir").U32(result).Complete());
    Check(result, dir.Handle());
    std::vector<Entry> entries;
    for (Entry entry; NextItem(dir.Handle(), entry);)
        entries.push_back(std::move(entry));
    return entries;
}

bool VornLibrary::NextItem(std::uint64_t dir, Entry &entry)
{
    std::uint64_t ignored = 0;
    std::uint32_t result = 0;
    std::span<const std::byte> item;
    parent::InList &arguments = m_running.helper.Begin(VORN_ITEM_SIZE + list_overhead).U64(m_session).U64(dir);
    // Zeros, so that a name in an item that failed can't be that of another one.
    std::ranges::fill(arguments.Block(VORN_ITEM_SIZE), std::byte{0});
    Require(Call("VornGetNextDirItem").U64(ignored).U64(ignored).Buffer(item).U32(result).Complete());
    if (result == VORN_END)
        return false;
    if (item.size() != VORN_ITEM_SIZE)
        Require(m_running.helper.RejectResults("VornGetNextDirItem returned an item of another size"));
    entry = Decode(item);
    if (result == VORN_OK)
        return true;
    if (entry.name.empty())
        Check(result, dir);
    entry.failure = ErrorText(dir, result);
    return true;
}

void VornLibrary::Close()
{
    if (!std::exchange(m_open, false))
        return;
    m_running.helper.Begin().U64(m_session);
    CallUninterrupted("VornCloseSession");
}

VornObject::~VornObject()
{
    IgnoreFailure([this] {
        m_library.m_running.helper.Begin().U64(m_library.m_session).U64(m_object);
        m_library.CallUninterrupted(m_closer);
    });
}

VornFile::VornFile(VornLibrary &library, const std::string &path, Mode mode)
    : m_library(library), m_file(library, "VornCreateFile", "VornCloseFile")
{
    std::uint32_t result = 0;
    m_library.m_running.helper.Begin().U64(m_library.m_session).U64(m_file.Handle()).Str(path).U32(ModeBits(mode));
    Require(m_library.Call("VornOpenFile").U32(result).Complete());
    m_library.Check(result, m_file.Handle());
}

std::span<const std::byte> VornFile::Read()
{
    std::uint64_t ignored_handle = 0;
    std::uint32_t ignored_size = 0;
    std::uint32_t count = 0;
    std::uint32_t result = 0;
    std::span<const std::byte> block;
    m_library.m_running.helper.Begin(VornLibrary::block_size + list_overhead)
        .U64(m_library.m_session)
        .U64(m_file.Handle())
        .Room(VornLibrary::block_size)
        .U32(VornLibrary::block_size);
    Require(m_library.Call("VornReadFile")
                .U64(ignored_handle)
                .U64(ignored_handle)
                .Buffer(block)
                .U32(ignored_size)
                .U32(count)
                .U32(result)
                .Complete());
    m_library.Check(result, m_file.Handle());
    if (count > block.size())
        Require(m_library.m_running.helper.RejectResults("VornReadFile reported more bytes than it had room for"));
    return block.first(count);
}

void VornFile::WriteTime(const Modified &modified)
{
    const std::span<std::byte> block = Room(VORN_TIME_SIZE);
    std::ranges::fill(block, std::byte{0});
    if (block.size() == VORN_TIME_SIZE) {
        StoreLittleEndian(block, VORN_TIME_SECONDS, static_cast<std::uint64_t>(modified.seconds), 8);
        StoreLittleEndian(block, VORN_TIME_NANOSECONDS, modified.nanoseconds, 4);
    }
    Write(VORN_TIME_SIZE);
}

std::span<std::byte> VornFile::Room(std::uint32_t size)
{
    m_arguments = &m_library.m_running.helper.Begin(size + list_overhead).U64(m_library.m_session).U64(m_file.Handle());
    return m_arguments->Block(size);
}

void VornFile::Write(std::uint32_t size)
{
    std::uint32_t count = 0;
    std::uint32_t result = 0;
    m_arguments->U32(size);
    Require(m_library.Call("VornWriteFile").U32(count).U32(result).Complete());
    m_library.Check(result, m_file.Handle());
    if (count != size)
        throw LibraryError("only " + std::to_string(count) + " of " + std::to_string(size) +
                           " bytes were taken, and no failure was reported");
}

void VornFile::Commit()
{
    std::uint32_t result = 0;
    m_library.m_running.helper.Begin().U64(m_library.m_session).U64(m_file.Handle());
    Require(m_library.Call("VornRestoreFile").U32(result).Complete());
    m_library.Check(result, m_file.Handle());
}

} // namespace kessil::kessilctl
