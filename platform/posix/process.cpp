#include "platform/process.h"

#include "platform/posix/handles.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <mutex>
#include <poll.h>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

// Some versions of this header don't declare its functions as C.
extern "C" {
#include <sys/pidfd.h>
}

namespace kessil::platform {

struct Process
{
    pid_t id = -1;
    int handle = -1;
    bool ended = false;
    std::uint32_t exit_code = 0;
};

namespace {

// Everything the child needs, prepared before the fork: between fork and exec nothing may be allocated.
struct Launch
{
    std::string program;
    std::vector<std::string> texts;
    std::vector<char *> arguments;
    std::string directory;
    pid_t parent = getpid();
    int report[2] = {-1, -1};
};

void OpenStandardStreams()
{
    for (int stream = 0; stream < 3; ++stream) {
        if (fcntl(stream, F_SETFD, 0) != 0)
            open("/dev/null", O_RDWR);
    }
}

void ResetSignals()
{
    for (int signal = 1; signal < NSIG; ++signal) {
        struct sigaction plain
        {};
        plain.sa_handler = SIG_DFL;
        sigaction(signal, &plain, nullptr);
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

// A terminal interrupts the processes of the group in its foreground. A background process that uses the terminal is
// stopped, which nothing here expects, unless it ignores the signal: then the use fails.
void LeaveForeground()
{
    setpgid(0, 0);
    for (const int signal : {SIGTTIN, SIGTTOU}) {
        struct sigaction ignoring
        {};
        ignoring.sa_handler = SIG_IGN;
        sigaction(signal, &ignoring, nullptr);
    }
}

// Runs in the child, in the parent's memory: only system calls are allowed.
[[noreturn]] void RunChild(const Launch &launch)
{
    ResetSignals();
    LeaveForeground();
    // The parent may have died before the death signal was requested.
    const bool bound = prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && getppid() == launch.parent;
    if (bound && (launch.directory.empty() || chdir(launch.directory.c_str()) == 0)) {
        OpenStandardStreams();
        if (close_range(3, ~0U, CLOSE_RANGE_CLOEXEC) == 0)
            execv(launch.program.c_str(), launch.arguments.data());
    }
    const int code = errno;
    [[maybe_unused]] const ssize_t reported = write(launch.report[1], &code, sizeof code);
    _exit(127);
}

// Starts the child. Returns 0, or the error code.
int Spawn(Launch &launch, pid_t &id)
{
    if (pipe2(launch.report, O_CLOEXEC) != 0)
        return errno;
    for (int &end : launch.report)
        end = posix::AboveStandardStreams(end);
    const pid_t child = vfork(); // NOLINT(clang-analyzer-security.insecureAPI.vfork)
    if (child == 0)
        RunChild(launch); // NOLINT(clang-analyzer-unix.Vfork)
    int code = child < 0 ? errno : 0;
    id = child;
    close(launch.report[1]);
    while (id > 0 && read(launch.report[0], &code, sizeof code) < 0 && errno == EINTR) {
    }
    close(launch.report[0]);
    if (id > 0 && code != 0) {
        while (waitpid(id, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    return code;
}

// The thread that starts all children. The system kills a child when the thread that started it ends, not when the
// process does, so this thread lives as long as the process.
class Launcher
{
public:
    Launcher() : m_owner(getpid())
    {
        std::thread([this] { Run(); }).detach();
    }

    pid_t Owner() const { return m_owner; }

    int Start(Launch &launch, pid_t &id)
    {
        Job job{launch, id};
        std::unique_lock lock(m_mutex);
        m_jobs.push_back(&job);
        m_arrived.notify_one();
        m_finished.wait(lock, [&job] { return job.done; });
        return job.code;
    }

private:
    struct Job
    {
        Launch &launch;
        pid_t &id;
        int code = 0;
        bool done = false;
    };

    [[noreturn]] void Run()
    {
        // No handler of the parent may run in the child, which shares the parent's memory.
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, nullptr);
        std::unique_lock lock(m_mutex);
        for (;;) {
            m_arrived.wait(lock, [this] { return !m_jobs.empty(); });
            Job &job = *m_jobs.front();
            m_jobs.erase(m_jobs.begin());
            lock.unlock();
            job.code = Spawn(job.launch, job.id);
            lock.lock();
            job.done = true;
            m_finished.notify_all();
        }
    }

    const pid_t m_owner;
    std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::condition_variable m_finished;
    std::vector<Job *> m_jobs;
};

// Never destroyed: its thread ends with the process. A forked copy of this process gets one of its own.
Launcher &TheLauncher()
{
    static std::atomic<Launcher *> current{nullptr};
    static std::mutex creation;
    Launcher *launcher = current;
    if (launcher != nullptr && launcher->Owner() == getpid())
        return *launcher;
    const std::lock_guard lock(creation);
    launcher = current;
    if (launcher == nullptr || launcher->Owner() != getpid())
        current = launcher = new Launcher;
    return *launcher;
}

int PollTime(Deadline deadline)
{
    if (deadline == Deadline::max())
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
    return static_cast<int>(std::clamp<decltype(left)>(left, 0, 1 << 30));
}

bool HasEnded(Process &process, Deadline deadline)
{
    for (;;) {
        pollfd ended{process.handle, POLLIN, 0};
        if (poll(&ended, 1, PollTime(deadline)) > 0)
            return true;
        if (deadline <= std::chrono::steady_clock::now())
            return false;
    }
}

void Collect(Process &process)
{
    siginfo_t info{};
    while (waitid(P_PID, static_cast<id_t>(process.id), &info, WEXITED) != 0 && errno == EINTR) {
    }
    process.ended = true;
    process.exit_code = static_cast<std::uint32_t>(info.si_code == CLD_EXITED ? info.si_status : 128 + info.si_status);
}

} // namespace

Process *StartProcess(const WideString &program, const std::vector<WideString> &arguments,
                      const WideString &working_directory)
{
    Launch launch;
    launch.program = ToUtf8(program);
    launch.directory = ToUtf8(working_directory);
    if (!launch.directory.empty() && !launch.program.empty())
        launch.program = std::filesystem::absolute(launch.program).string();
    launch.texts.push_back(launch.program);
    for (const WideString &argument : arguments)
        launch.texts.push_back(ToUtf8(argument));
    for (std::string &text : launch.texts)
        launch.arguments.push_back(text.data());
    launch.arguments.push_back(nullptr);

    auto process = std::make_unique<Process>();
    int code = TheLauncher().Start(launch, process->id);
    if (code == 0) {
        process->handle = posix::AboveStandardStreams(pidfd_open(process->id, 0));
        if (process->handle >= 0)
            return process.release();
        code = errno;
        kill(process->id, SIGKILL);
        Collect(*process);
    }
    errno = code;
    return nullptr;
}

std::uint32_t ProcessId(const Process &process)
{
    return static_cast<std::uint32_t>(process.id);
}

bool WaitForProcess(Process &process, Deadline deadline, std::uint32_t &exit_code)
{
    if (!process.ended) {
        if (!HasEnded(process, deadline))
            return false;
        Collect(process);
    }
    exit_code = process.exit_code;
    return true;
}

void KillProcess(Process &process)
{
    pidfd_send_signal(process.handle, SIGKILL, nullptr, 0);
}

void ReleaseProcess(Process *process)
{
    if (process == nullptr)
        return;
    if (!process->ended) {
        KillProcess(*process);
        Collect(*process);
    }
    close(process->handle);
    delete process;
}

} // namespace kessil::platform
