#include "kessilctl/run.h"

#include "kessilctl/console/command_line.h"
#include "kessilctl/console/local_path.h"
#include "kessilctl/console/password.h"
#include "kessilctl/console/report.h"
#include "kessilctl/disk/jobs.h"
#include "kessilctl/helper/error_text.h"
#include "kessilctl/tree/jobs.h"

namespace kessil::kessilctl {
namespace {

/// Gives the report the part that the job fills, so that it is there however the run ends.
struct PartOfReport
{
    void operator()(const ListOptions & /*options*/) const { report.tree.emplace().entries.emplace(); }
    void operator()(const BackupOptions & /*options*/) const { report.tree.emplace(); }
    void operator()(const RestoreOptions & /*options*/) const { report.tree.emplace(); }
    void operator()(const ErrorTextOptions & /*options*/) const {}
    void operator()(const InventoryOptions & /*options*/) const { report.adapter.emplace().items.emplace(); }
    void operator()(const DiskOptions & /*options*/) const { report.adapter.emplace(); }

    Report &report;
};

/// Passes the options of the job to its function.
struct Perform
{
    void operator()(const ListOptions &options) const { List(options, running, console, *report.tree); }
    void operator()(const BackupOptions &options) const { Backup(options, running, console, *report.tree); }
    void operator()(const RestoreOptions &options) const { Restore(options, running, console, *report.tree); }
    void operator()(const ErrorTextOptions &options) const { LookUpMessage(options, running, report.message); }
    void operator()(const InventoryOptions &options) const
    {
        ListInventory(options, running, credentials, console, *report.adapter);
    }
    void operator()(const ReadDiskOptions &options) const
    {
        ReadDisk(options, running, credentials, console, *report.adapter);
    }
    void operator()(const WriteDiskOptions &options) const
    {
        WriteDisk(options, running, credentials, console, *report.adapter);
    }

    const RunningHelper &running;
    Password &credentials;
    Console &console;
    Report &report;
};

parent::Options ParentOptions(const HelperOptions &options, Console &console)
{
    parent::Options parent;
    parent.program = ToPath(options.program);
    parent.log_file = ToPath(options.log);
    parent.log_level = options.debug ? parent::LogLevel::Debug : parent::LogLevel::Error;
    parent.request_limit = LimitOf(options);
    parent.on_slow = [&console](const parent::SlowRequest &request) {
        console.WriteMessage("still waiting for " + Printable(request.description) + " after " +
                             std::to_string(request.elapsed.count() / 1000) + " s");
    };
    return parent;
}

/// Those that are read before the helper starts.
struct Passwords
{
    Password logon;
    Password credentials;
};

void Read(Passwords &passwords, const CommandLine &command)
{
    if (const auto &logon = command.helper.logon)
        passwords.logon.Read(logon->domain.empty() ? logon->user : logon->domain + '\\' + logon->user,
                             command.password_descriptor);
    const AdapterOptions *adapter = AdapterOf(command.job);
    if (adapter && adapter->credentials)
        passwords.credentials.Read(*adapter->credentials, command.password_descriptor);
}

/// Runs `action`, and records in the report why it ended early if it did.
template <typename Action>
void RecordFailure(Report &report, const Action &action)
{
    try {
        action();
    } catch (const Failure &failure) {
        report.exit_code = failure.Code();
        report.end = failure.what();
    } catch (const std::exception &exception) {
        report.exit_code = ExitCode::LocalFailed;
        report.end = exception.what();
    }
}

void RunJob(const CommandLine &command, parent::Helper &helper, Passwords &passwords, Console &console, Report &report)
{
    const Interruption interruption(helper);
    RecordFailure(report, [&] {
        StartHelper(helper, command.helper, passwords.logon);
        interruption.Check();
        const RunningHelper running{helper, interruption, LimitOf(command.helper)};
        std::visit(Perform{running, passwords.credentials, console, report}, command.job);
        Require(helper.Stop());
        report.exit_code = CodeOf(report);
    });
    helper.Stop();
    // A request that was cancelled may have failed in many ways.
    if (interruption.Requested() && !report.end.empty()) {
        report.exit_code = ExitCode::Interrupted;
        report.end = "interrupted";
    }
}

/// On return the helper has ended and its files are removed: printing comes later, and a closed pipe may then end this
/// process.
void RunWithHelper(const CommandLine &command, Console &console, Report &report)
{
    Passwords passwords;
    RecordFailure(report, [&] { Read(passwords, command); });
    if (!report.end.empty())
        return;
    parent::Helper helper(ParentOptions(command.helper, console));
    RunJob(command, helper, passwords, console, report);
    report.figures = helper.Figures();
}

void Print(const Report &report, bool json, Console &console)
{
    if (!report.end.empty())
        console.WriteMessage(report.end);
    if (json)
        PrintJson(report, console.out);
    else
        PrintText(report, console.out);
    console.out << std::flush;
}

} // namespace

int Run(const std::vector<WideString> &arguments, Console &console)
{
    int exit_code = 0;
    const std::optional<CommandLine> command = ParseCommandLine(arguments, console.out, console.err, exit_code);
    if (!command)
        return exit_code;

    const auto start = std::chrono::steady_clock::now();
    Report report;
    report.job = command->name;
    std::visit(PartOfReport{report}, command->job);
    if (report.adapter && command->json)
        report.adapter->log.emplace();
    RunWithHelper(*command, console, report);
    report.elapsed = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
    Print(report, command->json, console);
    if (!console.out && report.exit_code == ExitCode::Done) {
        console.WriteMessage("the result could not be written");
        report.exit_code = ExitCode::LocalFailed;
    }
    return static_cast<int>(report.exit_code);
}

} // namespace kessil::kessilctl
