#include "fakes/fake_pipe_server.h"

#include "platform/last_error.h"

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <optional>

namespace kessil {

test::FakePipeServer test::fake_pipe_server;

struct platform::PipeServer
{
    std::deque<std::shared_ptr<test::FakePipeClient>> waiting{};
    std::shared_ptr<test::FakePipeClient> client{};
    bool interrupted = false;
};

namespace {

using platform::Deadline;
using platform::PipeStatus;
using test::fake_pipe_server;
using test::FakePipeServer;
using Lock = std::unique_lock<std::mutex>;

std::mutex mutex;
std::condition_variable changed;

// Waits until `ready` returns true; false when the deadline passes first.
template <typename Ready>
bool Await(Lock &lock, Deadline deadline, Ready ready)
{
    const auto longest = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    const bool done = changed.wait_until(lock, std::min(deadline, longest), ready);
    if (!done && longest < deadline)
        std::abort();
    return done;
}

std::string TakeFront(std::string &bytes, std::size_t size)
{
    std::string front = bytes.substr(0, size);
    bytes.erase(0, size);
    return front;
}

std::optional<PipeStatus> TakeFate(std::deque<FakePipeServer::Fate> &fates)
{
    if (fates.empty())
        return std::nullopt;
    const FakePipeServer::Fate fate = fates.front();
    fates.pop_front();
    platform::SetLastError(fate.code);
    return fate.status;
}

} // namespace

namespace test {

void FakePipeClient::Send(std::string_view bytes)
{
    const std::lock_guard lock(mutex);
    m_state.to_server += bytes;
    changed.notify_all();
}

void FakePipeClient::Answer(std::string_view bytes)
{
    const std::lock_guard lock(mutex);
    m_state.answers.emplace_back(bytes);
}

std::string FakePipeClient::Receive(std::size_t size)
{
    Lock lock(mutex);
    Await(lock, Deadline::max(), [this, size] { return m_state.to_client.size() >= size || m_state.alone; });
    changed.notify_all();
    return TakeFront(m_state.to_client, size);
}

void FakePipeClient::Leave()
{
    const std::lock_guard lock(mutex);
    m_state.left = true;
    changed.notify_all();
}

bool FakePipeClient::IsAlone() const
{
    const std::lock_guard lock(mutex);
    return m_state.alone;
}

bool FakePipeServer::Connect(const WideString &name, const std::shared_ptr<FakePipeClient> &client)
{
    const std::lock_guard lock(mutex);
    const auto server = servers.find(name);
    if (server == servers.end() || server->second->client)
        return false;
    server->second->waiting.push_back(client);
    changed.notify_all();
    return true;
}

} // namespace test

namespace platform {

WideString RandomPipeName()
{
    if (!fake_pipe_server.has_names) {
        SetLastError(fake_pipe_server.names_code);
        return {};
    }
#ifdef _WIN32
    const std::string start = R"(\\.\pipe\kessil-)";
#else
    const std::string start = "/fake/kessil-";
#endif
    char digits[33];
    std::snprintf(digits, sizeof digits, "%032llx", static_cast<unsigned long long>(fake_pipe_server.next_name++));
    return FromUtf8(start + digits);
}

PipeServer *CreatePipeServer(const WideString &name)
{
    const std::lock_guard lock(mutex);
    std::uint32_t code = fake_pipe_server.create_code;
    if (code == 0 && name.empty())
        code = fake_pipe_server.invalid_code;
    if (code == 0 && fake_pipe_server.servers.contains(name))
        code = fake_pipe_server.taken_code;
    if (code != 0) {
        SetLastError(code);
        return nullptr;
    }
    return fake_pipe_server.servers[name] = new PipeServer;
}

PipeStatus AcceptPipeClient(PipeServer &server, std::uint32_t client_process_id, Deadline deadline)
{
    Lock lock(mutex);
    if (const auto fate = TakeFate(fake_pipe_server.accept_fates))
        return *fate;
    if (!Await(lock, deadline, [&server] { return server.interrupted || !server.waiting.empty(); }))
        return PipeStatus::TimedOut;
    if (server.interrupted)
        return PipeStatus::Interrupted;
    const auto client = server.waiting.front();
    server.waiting.pop_front();
    if (client->ProcessId() != client_process_id) {
        client->Shared().alone = true;
        changed.notify_all();
        return PipeStatus::WrongClient;
    }
    server.client = client;
    return PipeStatus::Done;
}

PipeStatus ReadServedPipe(PipeServer &server, void *buffer, std::uint32_t size, std::uint32_t &count, Deadline deadline)
{
    count = 0;
    Lock lock(mutex);
    if (const auto fate = TakeFate(fake_pipe_server.read_fates))
        return *fate;
    test::FakePipeClient::State &client = server.client->Shared();
    const bool passed = deadline <= std::chrono::steady_clock::now();
    const auto over = [&] { return server.interrupted || (!passed && (client.left || !client.to_server.empty())); };
    if (!Await(lock, deadline, over))
        return PipeStatus::TimedOut;
    if (server.interrupted)
        return PipeStatus::Interrupted;
    const std::string bytes = TakeFront(client.to_server, size);
    std::memcpy(buffer, bytes.data(), bytes.size());
    count = static_cast<std::uint32_t>(bytes.size());
    return bytes.empty() ? PipeStatus::Closed : PipeStatus::Done;
}

PipeStatus WriteServedPipe(PipeServer &server, const void *data, std::uint32_t size, Deadline deadline)
{
    Lock lock(mutex);
    if (const auto fate = TakeFate(fake_pipe_server.write_fates))
        return *fate;
    test::FakePipeClient::State &client = server.client->Shared();
    std::string_view rest(static_cast<const char *>(data), size);
    const auto room = [&client] { return fake_pipe_server.capacity - client.to_client.size(); };
    while (!rest.empty()) {
        if (!Await(lock, deadline, [&] { return server.interrupted || client.left || room() > 0; }))
            return PipeStatus::TimedOut;
        if (server.interrupted)
            return PipeStatus::Interrupted;
        if (client.left)
            return PipeStatus::Closed;
        const std::string_view part = rest.substr(0, room());
        client.to_client += part;
        rest.remove_prefix(part.size());
        changed.notify_all();
    }
    if (!client.answers.empty()) {
        client.to_server += client.answers.front();
        client.answers.pop_front();
    }
    return PipeStatus::Done;
}

void InterruptPipeServer(PipeServer &server)
{
    const std::lock_guard lock(mutex);
    server.interrupted = true;
    changed.notify_all();
}

void DestroyPipeServer(PipeServer *server)
{
    if (server == nullptr)
        return;
    const std::lock_guard lock(mutex);
    if (server->client)
        server->waiting.push_back(server->client);
    for (const auto &client : server->waiting)
        client->Shared().alone = true;
    std::erase_if(fake_pipe_server.servers, [server](const auto &entry) { return entry.second == server; });
    changed.notify_all();
    delete server;
}

} // namespace platform
} // namespace kessil
