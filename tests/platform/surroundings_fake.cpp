#include "surroundings.h"

#include "child.h"
#include "fakes/call_log.h"
#include "fakes/fake_code_page.h"
#include "fakes/fake_critical_section.h"
#include "fakes/fake_environment.h"
#include "fakes/fake_file_time.h"
#include "fakes/fake_guard.h"
#include "fakes/fake_last_error.h"
#include "fakes/fake_logon.h"
#include "fakes/fake_measurement.h"
#include "fakes/fake_message_table.h"
#include "fakes/fake_module.h"
#include "fakes/fake_pipe.h"
#include "fakes/fake_pipe_server.h"
#include "fakes/fake_process.h"
#include "fakes/fake_program_path.h"
#include "fakes/fake_secret.h"
#include "fakes/fake_section.h"
#include "fakes/fake_terminal.h"
#include "platform/guard.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace kessil::test {
namespace {

// The error codes that differ between the systems: Windows first.
constexpr std::uint32_t Code(std::uint32_t windows, std::uint32_t linux_code)
{
    return on_windows ? windows : linux_code;
}

constexpr std::uint32_t own_process = 42;

std::uint32_t Plain()
{
    return 42;
}

std::uint32_t One()
{
    return 1;
}

std::uint32_t Two()
{
    return 2;
}

std::uint32_t WriteNull()
{
    RaiseFakeFault();
}

std::uint32_t ThrowOwn()
{
    throw std::runtime_error("thrown by a hosted library");
}

void AddLibrary(const std::string &name, const char *function, std::uint32_t (*implementation)())
{
    fake_module.Add(TargetLibrary(name), {{function, reinterpret_cast<void *>(implementation)}});
}

std::string WithLength(const WideString &text)
{
    const auto length = static_cast<std::uint32_t>(text.size());
    std::string bytes(reinterpret_cast<const char *>(&length), sizeof length);
    return bytes.append(reinterpret_cast<const char *>(text.data()), text.size() * sizeof(char16_t));
}

/// The tasks of child.cpp that can be done without a process.
FakeRun RunChild(const FakeStart &start)
{
    const WideString &task = start.arguments.at(0);
    if (task == u"exit")
        return {.exit_code = static_cast<std::uint32_t>(std::stoul(platform::ToUtf8(start.arguments.at(1))))};

    const auto client = std::make_shared<FakePipeClient>(start.process_id);
    EXPECT_TRUE(fake_pipe_server.Connect(start.arguments.at(1), client));
    if (task == u"hang")
        return {.on_death = [client] { client->Leave(); }};
    if (task == u"directory") {
        const WideString here = platform::FromUtf8(std::filesystem::current_path().string());
        client->Send(WithLength(start.directory.empty() ? here : start.directory));
    } else if (task == u"arguments") {
        for (std::size_t i = 2; i < start.arguments.size(); ++i)
            client->Send(WithLength(start.arguments[i]));
    } else {
        ADD_FAILURE() << "no such task: " << platform::ToUtf8(task);
    }
    client->Leave();
    return {.exit_code = 0U};
}

void ResetFakes()
{
    call_log = {};
    fake_code_page = {};
    fake_critical_section = {};
    fake_environment = {};
    fake_guard = {};
    fake_logon = {};

    fake_file_time = {};
    fake_last_error = {};
    fake_last_error.line_end = on_windows ? u"\r\n" : u"";

    fake_measurement = {};
    fake_measurement.processes[own_process].private_bytes = 1 << 20;

    const WideString line_end = on_windows ? u"\r\n" : u"\n";
    fake_message_table = {};
    fake_message_table.open_code = Code(126, 2);
    fake_message_table.files[MessageFile()] = {{1, u"Tape %1 is missing in drive %2." + line_end},
                                               {1234, u"Kein Zugriff f\u00FCr \u20AC." + line_end}};

    fake_module = {};
    fake_module.load_code = Code(126, 2);
    AddLibrary("plain", "Answer", Plain);
    AddLibrary("first_answer", "GetBackupType", One);
    AddLibrary("second_answer", "GetBackupType", Two);
    AddLibrary("null_write", "Answer", WriteNull);
    AddLibrary("throws_own", "Answer", ThrowOwn);

    fake_pipe = {};
    fake_pipe.name.emplace();
    fake_pipe.end_code = Code(109, 32);
    fake_pipe_server = {};
    fake_process = {};
    fake_process.programs[ChildProgram()] = RunChild;
    fake_program_path = OwnProgram();

    fake_secret = {};

    fake_section = {};
    fake_section.taken_code = Code(183, 17);
    fake_section.too_small_code = Code(5, 22);
    fake_section.empty_code = Code(87, 22);
    fake_section.opens_taken = on_windows;
    fake_section.open_checks_size = !on_windows;

    fake_terminal = {};
}

/// Resets the fakes before every test, to a system of this program's kind.
class FakeReset : public testing::EmptyTestEventListener
{
    void OnTestStart(const testing::TestInfo &) override { ResetFakes(); }
};

[[maybe_unused]] const bool at_work = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new FakeReset);
    return true;
}();

} // namespace

std::uint32_t OwnProcessId()
{
    return own_process;
}

WideString ChildProgram()
{
    return u"the fake child";
}

WideString TargetLibrary(const std::string &name)
{
    return platform::FromUtf8("fake/" + name);
}

WideString MessageFile()
{
    return u"fake/messages";
}

struct RawServer::Native
{};

RawServer::RawServer(const WideString &name)
{
    fake_pipe.name = name;
}

RawServer::~RawServer() = default;

void RawServer::Accept()
{
    EXPECT_TRUE(fake_pipe.is_open);
}

void RawServer::Write(const std::string &bytes)
{
    fake_pipe.Deliver({bytes.begin(), bytes.end()});
}

void RawServer::EndStream()
{
    fake_pipe.DeliverNothing();
}

void RawServer::Close()
{
    fake_pipe.FailRead(fake_pipe.end_code);
    fake_pipe.FailWrite(Code(232, 32));
}

struct PipeClient::Native
{
    std::shared_ptr<FakePipeClient> client = std::make_shared<FakePipeClient>(own_process);
    bool connected = false;
};

PipeClient::PipeClient(const WideString &name, bool) : m_native(std::make_unique<Native>())
{
    m_native->connected = fake_pipe_server.Connect(name, m_native->client);
}

PipeClient::~PipeClient()
{
    Leave();
}

bool PipeClient::IsConnected() const
{
    return m_native->connected;
}

void PipeClient::Write(const std::string &bytes)
{
    m_native->client->Send(bytes);
}

std::string PipeClient::ReadByte()
{
    return m_native->client->Receive(1);
}

void PipeClient::Leave()
{
    m_native->client->Leave();
}

RedirectedOutput::RedirectedOutput(const std::string &) : m_kept(fake_terminal.output.columns)
{
    fake_terminal.output.is_terminal = false;
}

RedirectedOutput::~RedirectedOutput()
{
    fake_terminal.output.is_terminal = m_kept != 0;
}

Input::Input(const std::string &bytes) : m_descriptor(3 + static_cast<int>(fake_secret.descriptors.size()))
{
    fake_secret.descriptors[m_descriptor] = bytes;
}

Input::~Input()
{
    fake_secret.descriptors.erase(m_descriptor);
}

std::uint32_t ExitCodeOfAHangingProcess(const std::vector<Ending> &calls)
{
    for (const Ending &call : calls)
        platform::EndWithin(call.milliseconds, call.exit_code);
    return static_cast<std::uint32_t>(fake_guard.ending.value().exit_code);
}

} // namespace kessil::test
