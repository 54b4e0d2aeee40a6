#include "platform/process.h"

#include "platform/windows/handle.h"

#include <memory>
#include <mutex>

namespace kessil::platform {

struct Process
{
    Handle process;
    Handle job;
    DWORD id = 0;
};

namespace {

/// The exit code of a killed process, the same as on Linux: 128 plus the number of the signal.
constexpr UINT killed_exit_code = 128 + 9;

constexpr DWORD creation_flags =
    CREATE_NO_WINDOW | CREATE_NEW_PROCESS_GROUP | CREATE_SUSPENDED | EXTENDED_STARTUPINFO_PRESENT;

/// Appends one argument, quoted so that the program's start-up code reads it back unchanged: with a backslash before
/// each quote, and with the backslashes before a quote doubled.
void AppendQuoted(WideString &line, const WideString &argument)
{
    line += u'"';
    std::size_t backslashes = 0;
    for (const char16_t unit : argument) {
        if (unit == u'"')
            line.append(backslashes + 1, u'\\');
        backslashes = unit == u'\\' ? backslashes + 1 : 0;
        line += unit;
    }
    line.append(backslashes, u'\\');
    line += u'"';
}

WideString CommandLine(const WideString &program, const std::vector<WideString> &arguments)
{
    WideString line;
    line += u'"';
    line += program;
    line += u'"';
    for (const WideString &argument : arguments) {
        line += u' ';
        AppendQuoted(line, argument);
    }
    return line;
}

bool HoldsZero(const WideString &text)
{
    return text.find(u'\0') != WideString::npos;
}

/// An inheritable copy of one of this process's standard streams, or of the null device if it has none.
Handle InheritableStream(DWORD stream)
{
    const HANDLE own = GetStdHandle(stream);
    HANDLE copy = nullptr;
    if (own && own != INVALID_HANDLE_VALUE &&
        DuplicateHandle(GetCurrentProcess(), own, GetCurrentProcess(), &copy, 0, TRUE, DUPLICATE_SAME_ACCESS))
        return Handle(copy);
    SECURITY_ATTRIBUTES inheritable = {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return Handle(CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable,
                              OPEN_EXISTING, 0, nullptr));
}

/// The three streams that a child inherits, and the list that prevents it from inheriting anything else.
class Inheritance
{
public:
    Inheritance()
    {
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        m_storage.resize(size);
        if (InitializeProcThreadAttributeList(List(), 1, 0, &size))
            m_initialized = true;
        m_ready = m_initialized && m_handles[0] && m_handles[1] && m_handles[2] &&
                  UpdateProcThreadAttribute(List(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, m_handles, sizeof m_handles,
                                            nullptr, nullptr);
    }
    ~Inheritance()
    {
        if (m_initialized)
            DeleteProcThreadAttributeList(List());
    }
    Inheritance(const Inheritance &) = delete;
    Inheritance &operator=(const Inheritance &) = delete;

    bool Ready() const { return m_ready; }

    STARTUPINFOEXW StartupInfo()
    {
        STARTUPINFOEXW info = {};
        info.StartupInfo.cb = sizeof info;
        info.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
        info.StartupInfo.hStdInput = m_handles[0];
        info.StartupInfo.hStdOutput = m_handles[1];
        info.StartupInfo.hStdError = m_handles[2];
        info.lpAttributeList = List();
        return info;
    }

private:
    PPROC_THREAD_ATTRIBUTE_LIST List() { return reinterpret_cast<PPROC_THREAD_ATTRIBUTE_LIST>(m_storage.data()); }

    Handle m_input = InheritableStream(STD_INPUT_HANDLE);
    Handle m_output = InheritableStream(STD_OUTPUT_HANDLE);
    Handle m_error = InheritableStream(STD_ERROR_HANDLE);
    HANDLE m_handles[3] = {m_input.Get(), m_output.Get(), m_error.Get()};
    std::vector<unsigned char> m_storage;
    bool m_initialized = false;
    bool m_ready = false;
};

/// While it exists, child processes inherit an error mode in which the system opens no error dialogs. The mode belongs
/// to the whole process, so only one such object exists at a time.
class NoErrorDialogs
{
public:
    NoErrorDialogs() : m_lock(s_mutex), m_mode(GetErrorMode())
    {
        SetErrorMode(m_mode | SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    }
    ~NoErrorDialogs() { SetErrorMode(m_mode); }
    NoErrorDialogs(const NoErrorDialogs &) = delete;
    NoErrorDialogs &operator=(const NoErrorDialogs &) = delete;

private:
    static std::mutex s_mutex;
    std::lock_guard<std::mutex> m_lock;
    UINT m_mode;
};

std::mutex NoErrorDialogs::s_mutex;

/// A job whose processes end when its last handle closes, which happens at the latest when this process ends.
Handle CreateBoundJob()
{
    Handle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags =
        JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE | JOB_OBJECT_LIMIT_DIE_ON_UNHANDLED_EXCEPTION;
    if (job && SetInformationJobObject(job.Get(), JobObjectExtendedLimitInformation, &limits, sizeof limits))
        return job;
    return {};
}

/// What one start needs, so that it can be attempted twice.
struct Launch
{
    const WideString &program;
    WideString command_line;
    const WideString &directory;
    Inheritance inheritance;
};

/// Starts the program in `job`. Null on failure.
std::unique_ptr<Process> StartInJob(Launch &launch, Handle &job, DWORD extra_flags)
{
    STARTUPINFOEXW startup = launch.inheritance.StartupInfo();
    PROCESS_INFORMATION started = {};
    auto *const line = reinterpret_cast<wchar_t *>(launch.command_line.data());
    const wchar_t *const directory = launch.directory.empty() ? nullptr : Wide(launch.directory);
    auto process = std::make_unique<Process>();
    {
        const NoErrorDialogs no_dialogs;
        if (!CreateProcessW(Wide(launch.program), line, nullptr, nullptr, TRUE, creation_flags | extra_flags, nullptr,
                            directory, &startup.StartupInfo, &started))
            return nullptr;
    }
    const Handle thread(started.hThread);
    process->process = Handle(started.hProcess);
    process->id = started.dwProcessId;
    if (AssignProcessToJobObject(job.Get(), started.hProcess) && ResumeThread(started.hThread) != ~DWORD{0}) {
        process->job = std::move(job);
        return process;
    }
    const LastErrorKeeper keeper;
    TerminateProcess(started.hProcess, killed_exit_code);
    return nullptr;
}

} // namespace

Process *StartProcess(const WideString &program, const std::vector<WideString> &arguments,
                      const WideString &working_directory)
{
    Launch launch = {program, CommandLine(program, arguments), working_directory, {}};
    if (HoldsZero(launch.command_line) || HoldsZero(working_directory)) {
        ::SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    Handle job = CreateBoundJob();
    if (!job || !launch.inheritance.Ready())
        return nullptr;
    std::unique_ptr<Process> process = StartInJob(launch, job, 0);
    // Before Windows 8 a process is in at most one job: the child of a process in a job has to break away from that job
    // first.
    if (!process && GetLastError() == ERROR_ACCESS_DENIED)
        process = StartInJob(launch, job, CREATE_BREAKAWAY_FROM_JOB);
    return process.release();
}

std::uint32_t ProcessId(const Process &process)
{
    return process.id;
}

bool WaitForProcess(Process &process, Deadline deadline, std::uint32_t &exit_code)
{
    DWORD waited = WAIT_TIMEOUT;
    do
        waited = WaitForSingleObject(process.process.Get(), MillisecondsUntil(deadline));
    while (waited == WAIT_TIMEOUT && !HasPassed(deadline));
    DWORD code = 0;
    if (waited != WAIT_OBJECT_0 || !GetExitCodeProcess(process.process.Get(), &code))
        return false;
    exit_code = code;
    return true;
}

void KillProcess(Process &process)
{
    TerminateJobObject(process.job.Get(), killed_exit_code);
}

void ReleaseProcess(Process *process)
{
    const LastErrorKeeper keeper;
    delete process;
}

} // namespace kessil::platform
