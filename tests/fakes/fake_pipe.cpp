#include "fakes/fake_pipe.h"

#include "fakes/call_log.h"
#include "platform/last_error.h"
#include "platform/pipe.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

namespace kessil {
namespace test {

FakePipe fake_pipe;

void FakePipe::Deliver(std::vector<unsigned char> bytes)
{
    if (!bytes.empty())
        AddStep().bytes = std::move(bytes);
}

void FakePipe::DeliverInChunks(const std::vector<unsigned char> &bytes, std::size_t chunk)
{
    for (std::size_t i = 0; i < bytes.size(); i += chunk) {
        const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(i);
        AddStep().bytes.assign(first, first + static_cast<std::ptrdiff_t>(std::min(chunk, bytes.size() - i)));
    }
}

void FakePipe::DeliverNothing()
{
    AddStep();
}

void FakePipe::FailRead(std::uint32_t code)
{
    AddStep().code = code;
}

void FakePipe::Do(std::function<void()> action)
{
    AddStep().action = std::move(action);
}

FakePipe::Step &FakePipe::AddStep()
{
    return m_steps.emplace_back();
}

void FakePipe::FailWrite(std::uint32_t code)
{
    m_fates.push_back({code, 0});
}

void FakePipe::ShortenWrite(std::uint32_t count)
{
    m_fates.push_back({0, count});
}

bool FakePipe::Read(void *buffer, std::uint32_t size, std::uint32_t &count)
{
    ++reads;
    if (call_log.recording)
        sizes.push_back(size);
    while (m_next < m_steps.size() && m_steps[m_next].action)
        m_steps[m_next++].action();
    if (m_next == m_steps.size()) {
        if (ends_with_nothing) {
            count = 0;
            return true;
        }
        platform::SetLastError(end_code);
        return false;
    }
    Step &step = m_steps[m_next];
    count = static_cast<std::uint32_t>(std::min<std::size_t>(size, step.bytes.size() - step.taken));
    if (count != 0)
        std::memcpy(buffer, step.bytes.data() + step.taken, count);
    step.taken += count;
    if (step.taken == step.bytes.size())
        ++m_next;
    if (step.code == 0)
        return true;
    platform::SetLastError(step.code);
    return false;
}

bool FakePipe::Write(const void *data, std::uint32_t size, std::uint32_t &count)
{
    if (before_write)
        std::exchange(before_write, nullptr)();
    const Fate fate = m_nextFate < m_fates.size() ? m_fates[m_nextFate++] : Fate{0, size};
    if (fate.code != 0) {
        platform::SetLastError(fate.code);
        return false;
    }
    count = std::min(size, fate.count);
    const auto *bytes = static_cast<const unsigned char *>(data);
    written.insert(written.end(), bytes, bytes + count);
    writes.push_back(count);
    return true;
}

} // namespace test

namespace platform {
namespace {

bool IsUsable(PipeHandle pipe)
{
    if (test::fake_pipe.is_open && pipe == test::fake_pipe_handle)
        return true;
    SetLastError(test::fake_pipe.bad_handle_code);
    return false;
}

} // namespace

PipeHandle ConnectPipe(const WideString &name, std::uint32_t wait_milliseconds)
{
    test::call_log.Add("ConnectPipe " + ToUtf8(name) + " " + std::to_string(wait_milliseconds));
    std::uint32_t code = test::fake_pipe.connect_code;
    if (code == 0 && test::fake_pipe.name && *test::fake_pipe.name != name)
        code = test::fake_pipe.missing_code;
    if (code != 0) {
        SetLastError(code);
        return invalid_pipe;
    }
    test::fake_pipe.is_open = true;
    return test::fake_pipe_handle;
}

bool ReadPipe(PipeHandle pipe, void *buffer, std::uint32_t size, std::uint32_t &count)
{
    count = 0;
    return IsUsable(pipe) && test::fake_pipe.Read(buffer, size, count);
}

bool WritePipe(PipeHandle pipe, const void *data, std::uint32_t size, std::uint32_t &count)
{
    if (test::call_log.recording)
        test::call_log.Add("WritePipe " + std::to_string(size));
    count = 0;
    return IsUsable(pipe) && test::fake_pipe.Write(data, size, count);
}

void ClosePipe(PipeHandle pipe)
{
    test::call_log.Add("ClosePipe");
    const std::uint32_t code = LastError();
    if (IsUsable(pipe))
        test::fake_pipe.is_open = false;
    SetLastError(code);
}

} // namespace platform
} // namespace kessil
