#include "kessilctl/run.h"

#include "kessilctl/console/local_path.h"
#include "kessilctl/console/password.h"
#include "kessilctl/disk/adapter_job.h"
#include "kessilctl/helper/helper_requests.h"

#include <ostream>
#include <utility>

namespace kessil::kessilctl {
namespace {

parent::Options HelperOptions(const Command &command, const Screen &screen)
{
    parent::Options options;
    options.program = ToPath(command.helper);
    options.log_file = ToPath(command.log);
    options.log_level = command.debug ? parent::LogLevel::Debug : parent::LogLevel::Error;
    options.request_limit = LimitOf(command);
    options.on_slow = [&err = screen.err](const parent::SlowRequest &request) {
        err << "kessilctl: still waiting for " << Printable(request.description) << " after "
            << request.elapsed.count() / 1000 << " s\n";
    };
    return options;
}

const char *NameOf(Task task)
{
    switch (task) {
    case Task::List:
        return "ls";
    case Task::Backup:
        return "backup";
    case Task::Restore:
        return "restore";
    case Task::ErrorText:
        return "errtext";
    case Task::Hosts:
        return "adapter hosts";
    case Task::DataStores:
        return "adapter datastores";
    case Task::Folders:
        return "adapter folders";
    case Task::Machines:
        return "adapter machines";
    case Task::ReadDisk:
        return "adapter read-disk";
    case Task::WriteDisk:
        break;
    }
    return "adapter write-disk";
}

/// Those that are read before the helper starts.
struct Passwords
{
    Password logon;
    Password credentials;
};

void Read(Passwords &passwords, const Command &command)
{
    if (const auto &logon = command.logon)
        passwords.logon.Read(logon->domain.empty() ? logon->user : logon->domain + '\\' + logon->user,
                             command.password_descriptor);
    if (command.adapter.credentials)
        passwords.credentials.Read(*command.adapter.credentials, command.password_descriptor);
}

void LookUpMessage(const Command &command, parent::Helper &helper, Report &report)
{
    const WideString file = LibraryName(command.file);
    WideString text;
    Require(helper.ErrorText(command.message, file, text));
    report.message = Message{command.message, platform::ToUtf8(file), platform::ToUtf8(text)};
}

void WorkWithLibrary(const Command &command, parent::Helper &helper, const Interruption &interruption, Report &report,
                     const Screen &screen)
{
    VornLibrary library(helper, interruption, LibraryName(command.library), LimitOf(command));
    Job job(command, library, report, screen);
    if (command.task == Task::List)
        List(job);
    else if (command.task == Task::Backup)
        Backup(job);
    else
        Restore(job);
    library.Close();
}

void WorkWithAdapter(const Command &command, parent::Helper &helper, const Interruption &interruption, Report &report,
                     const Screen &screen, Password &password)
{
    AdapterJob job(command, helper, interruption, report, screen);
    job.GiveCredentials(password);
    PerformAdapterTask(job);
}

/// Runs `action`, and puts down why it ended early if it did.
template <typename Action>
void Settle(Report &report, const Action &action)
{
    try {
        action();
    } catch (const Failure &failure) {
        report.exit_code = failure.Code();
        report.end = failure.what();
    } catch (const LibraryError &error) {
        report.exit_code = ExitCode::LibraryFailed;
        report.end = error.what();
    } catch (const std::exception &exception) {
        report.exit_code = ExitCode::LocalFailed;
        report.end = exception.what();
    }
}

void RunTask(const Command &command, parent::Helper &helper, Passwords &passwords, Report &report, const Screen &screen)
{
    const Interruption interruption(helper);
    Settle(report, [&] {
        StartHelper(helper, command, passwords.logon);
        interruption.Check();
        if (command.task == Task::ErrorText)
            LookUpMessage(command, helper, report);
        else if (IsOfAdapter(command.task))
            WorkWithAdapter(command, helper, interruption, report, screen, passwords.credentials);
        else
            WorkWithLibrary(command, helper, interruption, report, screen);
        Require(helper.Stop());
        report.exit_code = CodeOf(report);
    });
    helper.Stop();
    // What was cancelled in the end shows itself in many ways.
    if (interruption.Requested() && !report.end.empty()) {
        report.exit_code = ExitCode::Interrupted;
        report.end = "interrupted";
    }
}

/// The helper and its files are gone when this returns, before anything is printed, which a closed pipe may end this
/// process over.
void RunWithHelper(const Command &command, Report &report, const Screen &screen)
{
    Passwords passwords;
    Settle(report, [&] { Read(passwords, command); });
    if (!report.end.empty())
        return;
    parent::Helper helper(HelperOptions(command, screen));
    RunTask(command, helper, passwords, report, screen);
    report.figures = helper.Figures();
}

void Print(const Command &command, const Report &report, const Screen &screen)
{
    if (!report.end.empty())
        screen.err << "kessilctl: " << report.end << '\n';
    if (command.json)
        PrintJson(report, screen.out);
    else if (command.task == Task::List)
        PrintListing(report, screen.out);
    else if (command.task == Task::ErrorText)
        PrintMessage(report, screen.out);
    else if (report.adapter && report.adapter->items)
        PrintItems(*report.adapter->items, screen.out);
    else if (report.adapter && report.end.empty())
        PrintDiskSummary(report, screen.out);
    else if (report.end.empty())
        PrintSummary(report, screen.out);
    screen.out << std::flush;
}

} // namespace

std::string Job::Place(const std::string &path) const
{
    const std::string whole = path.empty() ? command.path : path;
    return whole.empty() ? "the topmost directory" : Printable(whole);
}

std::string Job::InLibrary(const std::string &path) const
{
    return path.empty() ? command.path : Join(command.path, path);
}

std::vector<Found> Job::Walk(bool recursive)
{
    std::vector<Found> tree;
    std::vector<std::string> directories = {""};
    while (!directories.empty()) {
        const std::string directory = std::move(directories.back());
        directories.pop_back();
        std::vector<Entry> entries;
        try {
            entries = library.List(InLibrary(directory));
        } catch (const LibraryError &error) {
            // Without the topmost directory there is no task.
            if (directory.empty())
                throw LibraryError(error.Code(), Place(directory) + ": " + error.what());
            Note(report.failures, directory, error.what());
        }
        for (Entry &entry : entries) {
            const std::string path = Join(directory, entry.name);
            if (!entry.failure.empty()) {
                Note(report.failures, path, entry.failure);
                continue;
            }
            if (recursive && entry.kind == Kind::Directory)
                directories.push_back(path);
            tree.push_back({path, std::move(entry)});
        }
    }
    return tree;
}

void Job::Note(std::vector<Remark> &list, const std::string &file, const std::string &text)
{
    list.push_back({file, text});
    if (progress)
        progress->MakeRoom();
    screen.err << "kessilctl: " << Place(file) << ": " << Printable(text) << '\n';
}

int Run(const std::vector<WideString> &arguments, const Screen &screen)
{
    int exit_code = 0;
    const std::optional<Command> command = ParseCommandLine(arguments, screen.out, screen.err, exit_code);
    if (!command)
        return exit_code;

    const auto start = std::chrono::steady_clock::now();
    Report report;
    report.task = NameOf(command->task);
    if (IsOfAdapter(command->task))
        report.adapter.emplace();
    if (IsInventory(command->task))
        report.adapter->items.emplace();
    RunWithHelper(*command, report, screen);
    report.elapsed = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
    Print(*command, report, screen);
    if (!screen.out && report.exit_code == ExitCode::Done) {
        screen.err << "kessilctl: the result could not be written\n";
        report.exit_code = ExitCode::LocalFailed;
    }
    return static_cast<int>(report.exit_code);
}

} // namespace kessil::kessilctl
