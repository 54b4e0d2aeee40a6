#include "run.h"

#include "local_path.h"

#include <algorithm>
#include <ostream>
#include <utility>

namespace kessil::driver {
namespace {

constexpr std::chrono::milliseconds first_warning{10000};

/// A file by its full path, so that the helper's directory doesn't matter; anything else is a name to search for.
WideString LibraryName(const std::string &given)
{
    std::error_code ignored;
    const std::filesystem::path path = ToPath(given);
    if (!std::filesystem::exists(path, ignored))
        return platform::FromUtf8(given);
    return platform::FromUtf8(ToText(std::filesystem::absolute(path)));
}

parent::TimeLimit Limit(const Command &command)
{
    const auto whole = command.time_limit;
    return {whole.count() > 0 ? std::min(first_warning, whole / 2) : first_warning, whole};
}

parent::Options HelperOptions(const Command &command, const Screen &screen)
{
    parent::Options options;
    options.program = ToPath(command.helper);
    options.log_file = ToPath(command.log);
    options.log_level = command.debug ? parent::LogLevel::Debug : parent::LogLevel::Error;
    options.request_limit = Limit(command);
    options.on_slow = [&err = screen.err](const parent::SlowRequest &request) {
        err << "kessilctl: still waiting for " << Printable(request.description) << " after "
            << request.elapsed.count() / 1000 << " s\n";
    };
    return options;
}

const char *NameOf(Task task)
{
    return task == Task::List ? "ls" : task == Task::Backup ? "backup" : "restore";
}

void Perform(Job &job)
{
    switch (job.command.task) {
    case Task::List:
        return List(job);
    case Task::Backup:
        return Backup(job);
    case Task::Restore:
        return Restore(job);
    }
}

void RunTask(const Command &command, parent::Helper &helper, Report &report, const Screen &screen)
{
    const Interruption interruption(helper);
    try {
        VornLibrary library(helper, LibraryName(command.library), Limit(command));
        Job job(command, library, report, screen);
        Perform(job);
        library.Close();
        report.exit_code = CodeOf(report);
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
    // A terminal interrupts the helper as well, which may then be seen to have died.
    if (interruption.Requested() && !report.end.empty()) {
        report.exit_code = ExitCode::Interrupted;
        report.end = "interrupted";
    }
}

void Print(const Command &command, const Report &report, const Screen &screen)
{
    if (!report.end.empty())
        screen.err << "kessilctl: " << report.end << '\n';
    if (command.json)
        PrintJson(report, screen.out);
    else if (command.task == Task::List)
        PrintListing(report, screen.out);
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
    {
        // The helper and its files are gone before anything is printed, which a closed pipe may end this process over.
        parent::Helper helper(HelperOptions(*command, screen));
        RunTask(*command, helper, report, screen);
        report.figures = helper.Figures();
    }
    report.elapsed = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
    Print(*command, report, screen);
    if (!screen.out && report.exit_code == ExitCode::Done) {
        screen.err << "kessilctl: the result could not be written\n";
        report.exit_code = ExitCode::LocalFailed;
    }
    return static_cast<int>(report.exit_code);
}

} // namespace kessil::driver
