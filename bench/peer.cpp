#include "bench/peer.h"

#include "bench/work.h"
#include "channel/big_endian.h"
#include "platform/last_error.h"
#include "platform/private_section.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <system_error>

namespace kessil::bench {
namespace {

using platform::PipeStatus;

constexpr unsigned char written_byte = 0x5A;

void Require(bool condition, const char *failure)
{
    if (!condition)
        throw std::runtime_error(std::string(failure) + ", last error " + std::to_string(platform::LastError()));
}

WideString Program(const char *name)
{
#ifdef _WIN32
    constexpr const char *suffix = ".exe";
#else
    constexpr const char *suffix = "";
#endif
    return platform::FromUtf8(std::string(KESSIL_BENCH_PROGRAMS "/") + name + suffix);
}

WideString Decimal(std::uint32_t number)
{
    return platform::FromUtf8(std::to_string(number));
}

WideString FreshSectionName()
{
    static std::random_device random;
    return u"kessil-bench-" + Decimal(random()) + u"-" + Decimal(random());
}

// The helpers' common log, which goes with this process. Each of them writes to it when its pipe is closed.
const WideString &LogFile()
{
    struct File
    {
        ~File()
        {
            std::error_code ignored;
            std::filesystem::remove(path, ignored);
        }
        std::filesystem::path path =
            std::filesystem::temp_directory_path() / (platform::ToUtf8(FreshSectionName()) + ".log");
        WideString name = platform::FromUtf8(path.string());
    };
    static const File file;
    return file.name;
}

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

WideString LibraryPath()
{
#ifdef _WIN32
    return platform::FromUtf8(KESSIL_BENCH_LIBRARIES "/bench_target.dll");
#else
    return platform::FromUtf8(KESSIL_BENCH_LIBRARIES "/bench_target.so");
#endif
}

Section::Section(const Call &call, std::uint32_t block_size)
    : m_call(call), m_blockSize(block_size), m_name(FreshSectionName())
{
    const std::uint32_t size = SectionSize(block_size);
    m_handle = platform::CreatePrivateSection(m_name, size);
    Require(m_handle != nullptr, "a section can't be created");
    m_view = platform::MapCreatedSection(m_handle, size);
    Require(m_view != nullptr, "a section can't be mapped");
    std::memset(Block(), written_byte, m_blockSize);
}

Section::~Section()
{
    platform::UnmapSection(m_view, SectionSize(m_blockSize));
    RemoveName();
    platform::CloseSection(m_handle);
}

void Section::LayInList()
{
    if (m_call.work == Work::Answer)
        return;
    Store(m_view, m_call.front, m_blockSize);
    StoreBigEndian(m_view + SizeOf(m_call.front), m_blockSize);
    Store(Block() + m_blockSize, m_call.back, m_blockSize);
}

void Section::CheckOutList() const
{
    const unsigned char *const block = m_view + BlockOffset(m_call);
    const bool delivered = m_call.work != Work::Read || std::all_of(block, block + m_blockSize, [](unsigned char byte) {
                               return byte == source_byte;
                           });
    Require(delivered, "a call delivered other bytes");
    Bytes results(SizeOf(m_call.results));
    Store(results.data(), m_call.results, m_blockSize);
    Require(std::equal(results.begin(), results.end(), m_view + ResultsOffset(m_call, m_blockSize)),
            "a call gave other results");
}

void Section::RemoveName()
{
    platform::RemoveSectionName(m_name);
}

Peer::Peer(Contender contender, Section &section)
    : m_contender(contender), m_section(section), m_request(CallFrame(section.Function())),
      m_pipeName(platform::RandomPipeName()), m_server(platform::CreatePipeServer(m_pipeName))
{
    Require(m_server != nullptr, "a pipe can't be created");
}

Peer::~Peer()
{
    platform::DestroyPipeServer(m_server);
    platform::ReleaseProcess(m_process);
}

void Peer::Start()
{
    const bool helper = m_contender == Contender::Kessil;
    std::vector<WideString> arguments = {m_pipeName};
    if (helper)
        arguments.insert(arguments.end(), {u"--out_file", LogFile()});
    else
        arguments.insert(arguments.end(),
                         {platform::FromUtf8(m_section.Function().function), m_section.Name(),
                          Decimal(m_section.BlockSize()), Decimal(static_cast<std::uint32_t>(m_request.size()))});
    if (m_contender == Contender::BareWithLibrary)
        arguments.push_back(LibraryPath());

    m_process = platform::StartProcess(Program(helper ? "kessil" : "bare_child"), arguments, u"");
    Require(m_process != nullptr, "a child process can't be started");
    const PipeStatus accepted = platform::AcceptPipeClient(*m_server, ProcessId(), platform::Deadline::max());
    Require(accepted == PipeStatus::Done, "a child process didn't attach");

    m_section.LayInList();
    if (!helper) {
        Call();
        return;
    }
    Bytes opening = Frame('L', std::u16string_view(LibraryPath()));
    const Bytes section =
        Frame('R', std::u16string_view(m_section.Name()), std::uint64_t{SectionSize(m_section.BlockSize())});
    opening.insert(opening.end(), section.begin(), section.end());
    opening.insert(opening.end(), m_request.begin(), m_request.end());
    Send(opening);
    ReceiveAnswers(3);
}

void Peer::Call()
{
    m_section.LayInList();
    Send(m_request);
    ReceiveAnswers(1);
}

void Peer::Send(const Bytes &frames)
{
    const auto size = static_cast<std::uint32_t>(frames.size());
    const PipeStatus sent = platform::WriteServedPipe(*m_server, frames.data(), size, platform::Deadline::max());
    Require(sent == PipeStatus::Done, "a child process took no request");
}

void Peer::ReceiveAnswers(std::uint32_t answers)
{
    constexpr unsigned char success[answer_size] = {'S', 0, 0, 0, 0};
    unsigned char answer[answer_size];
    while (answers-- > 0) {
        std::uint32_t count = 0;
        const PipeStatus received =
            platform::ReadServedPipe(*m_server, answer, answer_size, count, platform::Deadline::max());
        Require(received == PipeStatus::Done && count == answer_size && std::memcmp(answer, success, count) == 0,
                "a child process gave another answer than success");
    }
}

} // namespace kessil::bench
