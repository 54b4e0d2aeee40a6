// The program that the platform's tests start: its first argument selects what it does, and the exit code reports the
// result.

#include "child.h"

#include "native.h"
#include "platform/entry_point.h"
#include "platform/guard.h"
#include "platform/module.h"
#include "platform/pipe.h"
#include "platform/process.h"

#include <cstdio>
#include <filesystem>
#include <functional>
#include <map>
#include <string>

namespace kessil::test {

namespace {

using Arguments = std::vector<WideString>;

int Number(const WideString &text)
{
    return std::stoi(platform::ToUtf8(text));
}

platform::PipeHandle Connect(const WideString &name)
{
    return platform::ConnectPipe(name, 30000);
}

void Send(platform::PipeHandle pipe, const void *data, std::size_t size)
{
    std::uint32_t count = 0;
    platform::WritePipe(pipe, data, static_cast<std::uint32_t>(size), count);
}

void SendText(platform::PipeHandle pipe, const WideString &text)
{
    const auto length = static_cast<std::uint32_t>(text.size());
    Send(pipe, &length, sizeof length);
    Send(pipe, text.data(), text.size() * sizeof(char16_t));
}

/// Returns when the other end is gone.
void WaitForEnd(platform::PipeHandle pipe)
{
    unsigned char byte = 0;
    std::uint32_t count = 0;
    while (platform::ReadPipe(pipe, &byte, 1, count) && count > 0) {
    }
}

int Exit(const Arguments &arguments)
{
    return Number(arguments.at(2));
}

int SendArguments(const Arguments &arguments)
{
    const platform::PipeHandle pipe = Connect(arguments.at(2));
    for (std::size_t i = 3; i < arguments.size(); ++i)
        SendText(pipe, arguments[i]);
    platform::ClosePipe(pipe);
    return 0;
}

int SendDirectory(const Arguments &arguments)
{
    const platform::PipeHandle pipe = Connect(arguments.at(2));
    SendText(pipe, platform::FromUtf8(std::filesystem::current_path().string()));
    platform::ClosePipe(pipe);
    return 0;
}

int Print(const Arguments &)
{
    return std::printf("printed\n") == 8 ? 0 : child_failed;
}

int ReadInput(const Arguments &)
{
    return std::getchar() == EOF ? 0 : child_failed;
}

int ProbeHandle(const Arguments &arguments)
{
    return IsOpen(std::stoull(platform::ToUtf8(arguments.at(2)))) ? child_yes : child_no;
}

int Hang(const Arguments &arguments)
{
    WaitForEnd(Connect(arguments.at(2)));
    return child_failed;
}

/// Starts a child of its own, sends that child's id, and ends without releasing it when the pipe's other end is gone.
int StartAnother(const Arguments &arguments)
{
    const platform::PipeHandle pipe = Connect(arguments.at(2));
    const platform::Process *const other = platform::StartProcess(arguments.at(0), {u"hang", arguments.at(3)}, {});
    if (!other)
        return child_failed;
    SendText(pipe, platform::FromUtf8(std::to_string(platform::ProcessId(*other))));
    WaitForEnd(pipe);
    return 0;
}

/// Sends back every byte that it receives.
int Echo(const Arguments &arguments)
{
    const platform::PipeHandle pipe = Connect(arguments.at(2));
    unsigned char byte = 0;
    std::uint32_t count = 0;
    while (platform::ReadPipe(pipe, &byte, 1, count) && count > 0)
        Send(pipe, &byte, 1);
    return 0;
}

/// Starts an echo and sends that child's id. When it is sent a byte, it interrupts itself with all of its group and
/// sends the byte back.
int StartAnotherAndBeInterrupted(const Arguments &arguments)
{
    const platform::PipeHandle pipe = Connect(arguments.at(2));
    const platform::Process *const other = platform::StartProcess(arguments.at(0), {u"echo", arguments.at(3)}, {});
    if (!other)
        return child_failed;
    SendText(pipe, platform::FromUtf8(std::to_string(platform::ProcessId(*other))));
    unsigned char byte = 0;
    std::uint32_t count = 0;
    platform::ReadPipe(pipe, &byte, 1, count);
    if (!InterruptOwnGroup())
        return child_failed;
    Send(pipe, &byte, 1);
    WaitForEnd(pipe);
    return 0;
}

void CallAnswer(void *library)
{
    const platform::ModuleHandle module = platform::LoadModule(*static_cast<const WideString *>(library));
    if (void *const answer = platform::FindExport(module, "Answer"))
        reinterpret_cast<std::uint32_t (*)()>(answer)();
}

/// Calls the library's answer in a guard as many times as given: a fault must leave the guard usable.
int CallGuarded(const Arguments &arguments)
{
    if (!platform::PrepareGuard())
        return child_failed;
    WideString library = arguments.at(2);
    bool returned = true;
    for (int left = Number(arguments.at(3)); left > 0; --left)
        returned = platform::GuardedRun(CallAnswer, &library);
    return returned ? child_returned : child_abandoned;
}

int CatchForeignThrow(const Arguments &arguments)
{
    if (!platform::PrepareGuard())
        return child_failed;
    WideString library = arguments.at(2);
    try {
        return platform::GuardedRun(CallAnswer, &library) ? child_returned : child_abandoned;
    } catch (...) {
        return child_caught;
    }
}

/// Calls EndWithin with one or more pairs of a time and an exit code, and hangs: the time limit may end it only after
/// that.
int EndHanging(const Arguments &arguments)
{
    if (!platform::PrepareGuard())
        return child_failed;
    const platform::PipeHandle pipe = Connect(arguments.at(2));
    for (std::size_t i = 3; i + 1 < arguments.size(); i += 2)
        platform::EndWithin(static_cast<std::uint32_t>(Number(arguments[i])), Number(arguments[i + 1]));
    WaitForEnd(pipe);
    return child_failed;
}

int EndInTime(const Arguments &)
{
    if (!platform::PrepareGuard())
        return child_failed;
    platform::EndWithin(60000, 7);
    return 5;
}

int EndAfterFault(const Arguments &arguments)
{
    WideString library = arguments.at(2);
    if (!platform::PrepareGuard() || platform::GuardedRun(CallAnswer, &library))
        return child_failed;
    const platform::PipeHandle pipe = Connect(arguments.at(3));
    platform::EndWithin(300, 7);
    WaitForEnd(pipe);
    return child_failed;
}

#ifdef _WIN32
int EndMainThread(const Arguments &)
{
    if (!platform::PrepareGuard())
        return child_failed;
    EndThisThread(9);
}
#endif

const std::map<WideString, std::function<int(const Arguments &)>> modes = {
    {u"exit", Exit},
    {u"arguments", SendArguments},
    {u"directory", SendDirectory},
    {u"print", Print},
    {u"read_input", ReadInput},
    {u"probe", ProbeHandle},
    {u"hang", Hang},
    {u"start_another", StartAnother},
    {u"echo", Echo},
    {u"start_another_and_be_interrupted", StartAnotherAndBeInterrupted},
    {u"call", CallGuarded},
    {u"call_and_catch", CatchForeignThrow},
    {u"end_hanging", EndHanging},
    {u"end_in_time", EndInTime},
    {u"end_after_fault", EndAfterFault},
#ifdef _WIN32
    {u"end_main_thread", EndMainThread},
#endif
};

} // namespace

} // namespace kessil::test

int kessil::platform::Main(const std::vector<WideString> &arguments)
{
    return test::modes.at(arguments.at(1))(arguments);
}
