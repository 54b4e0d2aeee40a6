#include "bench/peer.h"

#include "bench/section_peer.h"
#include "bench/stream_peer.h"
#include "platform/last_error.h"

#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <system_error>

namespace kessil::bench {
namespace {

using platform::PipeStatus;

WideString Program(const char *name)
{
#ifdef _WIN32
    constexpr const char *suffix = ".exe";
#else
    constexpr const char *suffix = "";
#endif
    return platform::FromUtf8(std::string(KESSIL_BENCH_PROGRAMS "/") + name + suffix);
}

// The log that the helpers share, deleted when this process ends. Each helper writes to it when its pipe is closed.
const WideString &LogFile()
{
    struct File
    {
        ~File()
        {
            std::error_code ignored;
            std::filesystem::remove(path, ignored);
        }
        std::filesystem::path path = std::filesystem::temp_directory_path() / (platform::ToUtf8(FreshName()) + ".log");
        WideString name = platform::FromUtf8(path.string());
    };
    static const File file;
    return file.name;
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

WideString Decimal(std::uint32_t number)
{
    return platform::FromUtf8(std::to_string(number));
}

WideString FreshName()
{
    static std::random_device random;
    return u"kessil-bench-" + Decimal(random()) + u"-" + Decimal(random());
}

void Require(bool condition, const char *failure)
{
    if (!condition)
        throw std::runtime_error(std::string(failure) + ", last error " + std::to_string(platform::LastError()));
}

Peer::Peer() : m_pipeName(platform::RandomPipeName()), m_server(platform::CreatePipeServer(m_pipeName))
{
    Require(m_server != nullptr, "a pipe can't be created");
}

Peer::~Peer()
{
    platform::DestroyPipeServer(m_server);
    platform::ReleaseProcess(m_process);
}

void Peer::Launch(bool helper, const bench::Call &call, std::uint32_t block_size,
                  const std::vector<WideString> &arguments)
{
    std::vector<WideString> all = {m_pipeName};
    if (helper) {
        all.insert(all.end(), {u"--out_file", LogFile()});
    } else {
        all.insert(all.end(), {platform::FromUtf8(call.function), Decimal(block_size)});
        all.insert(all.end(), arguments.begin(), arguments.end());
    }
    m_process = platform::StartProcess(Program(helper ? "kessil" : "bare_child"), all, u"");
    Require(m_process != nullptr, "a child process can't be started");
    const PipeStatus accepted = platform::AcceptPipeClient(*m_server, ProcessId(), platform::Deadline::max());
    Require(accepted == PipeStatus::Done, "a child process didn't attach");
}

void Peer::Send(const unsigned char *bytes, std::uint32_t size)
{
    const PipeStatus sent = platform::WriteServedPipe(*m_server, bytes, size, platform::Deadline::max());
    Require(sent == PipeStatus::Done, "a child process did not read a request");
}

std::uint32_t Peer::Receive(unsigned char *bytes, std::uint32_t size)
{
    std::uint32_t count = 0;
    const PipeStatus received = platform::ReadServedPipe(*m_server, bytes, size, count, platform::Deadline::max());
    Require(received == PipeStatus::Done, "a child process sent no answer");
    return count;
}

std::unique_ptr<Peer> MakePeer(Contender contender, const Call &call, std::uint32_t block_size)
{
    if (contender == Contender::KessilByCommand || contender == Contender::BareStream)
        return std::make_unique<StreamPeer>(contender, call, block_size);
    return std::make_unique<SectionPeer>(contender, call, block_size);
}

} // namespace kessil::bench
