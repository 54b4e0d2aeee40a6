#include "kessilctl/console/command_line.h"

#include "kessilctl/console/exit_code.h"
#include "kessilctl/console/job_parser.h"
#include "kessilctl/console/local_path.h"
#include "platform/program_path.h"

#include <charconv>
#include <filesystem>

namespace kessil::kessilctl {
namespace {

constexpr const char *footer = R"(
ls, backup and restore work with a data source: a library with the fifteen functions and the layouts of
kessil/data_source.h. samples/vorn_fs is one; it serves the directory that VORN_FS_ROOT names. `kessilctl adapter --help`
describes the jobs with an adapter.

The helper logs on first, then adds the directories to its search path, then loads the library. A password is asked for
on the terminal, or is the first line of --password-fd; it is never taken from an argument or the environment.

A backup is a directory with the files in files/ and their digests in MANIFEST.sha256, which
`sha256sum -c MANIFEST.sha256` checks. The manifest is written last: a backup without one is not complete.

Exit codes:
  0  done
  1  the library or the adapter reported a failure, for everything or for some of the files
  2  usage
  3  the helper refused: the logon, the directories, the library, a function or a signature
  4  the helper died, or broke the protocol
  5  a call took longer than --time-limit
  6  the helper did not start
  7  a file or directory on this side could not be read or written
  8  restore, write-disk: something differs from what was backed up or written
  130  interrupted)";

/// The user's name without the domain.
std::string LastName(const std::string &user)
{
    return user.substr(user.find('\\') + 1);
}

std::string DefaultHelper()
{
    const std::filesystem::path program = platform::ProgramPath();
    std::filesystem::path helper = program.parent_path() / "kessil";
    helper += program.extension();
    return ToText(helper);
}

/// Options in the form in which they are given.
struct Given
{
    double seconds = 300;
    std::vector<std::string> directories;
    std::string user;
    Logon logon;
};

void AddLogonOptions(CLI::App &app, CommandLine &command, Given &given)
{
    CLI::Option *const logon =
        app.add_option("--logon", given.user, "The helper logs on as this user: USER or DOMAIN\\USER")
            ->check([](const std::string &user) { return LastName(user).empty() ? "the user name is empty" : ""; });
    app.add_option("--password-fd", command.password_descriptor,
                   "The password is the first line of this open descriptor; 0 is standard input (default: it is asked "
                   "for on the terminal)")
        ->check(CLI::NonNegativeNumber);
    app.add_flag("--credentials-only", given.logon.credentials_only, "Log on for outgoing connections only (Windows)")
        ->needs(logon);
}

void AddCommon(CLI::App &app, CommandLine &command, Given &given)
{
    app.add_option("--path", given.directories,
                   "Directories, separated as in PATH, that the helper searches before all others; may be repeated")
        ->allow_extra_args(false);
    AddLogonOptions(app, command, given);
    app.add_option("--helper", command.helper.program, "The helper's program (default: kessil beside kessilctl)");
    app.add_option("--log", command.helper.log, "The helper appends its log to this file (default: none is kept)");
    app.add_flag("--debug", command.helper.debug, "The helper logs everything");
    app.add_option("--time-limit", given.seconds, "Seconds that one call may take; 0 for no limit (default: 300)")
        ->check(CLI::Range(0.0, 1e6));
    app.add_flag("--json", command.json, "Print the result as JSON");
}

/// Decimal, or hexadecimal with 0x in front. None when it isn't a number of 32 bits.
std::optional<std::uint32_t> ParseNumber(std::string_view text)
{
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    text.remove_prefix(hexadecimal ? 2 : 0);
    std::uint32_t number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number, hexadecimal ? 16 : 10);
    if (failure != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

void AddList(CLI::App &app, CommandLine &command, const AddCommonOptions &add_common)
{
    const auto [job, options] = AddJob<ListOptions>(app, command, "", "ls", "List a directory");
    AddLibrary(job, options.library);
    add_common(job);
    job.add_option("subtree", options.subtree, "The directory in the library's tree (default: the topmost)");
    job.add_flag("-r,--recursive", options.recursive, "List everything below it as well");
}

void AddBackup(CLI::App &app, CommandLine &command, const AddCommonOptions &add_common)
{
    const auto [job, options] =
        AddJob<BackupOptions>(app, command, "", "backup", "Copy files and directories into a new backup");
    AddLibrary(job, options.library);
    add_common(job);
    job.add_option("--subtree", options.subtree, "The directory in the library's tree (default: the topmost)");
    job.add_option("--to", options.directory, "The backup: a directory that is empty or doesn't exist")->required();
}

void AddRestore(CLI::App &app, CommandLine &command, const AddCommonOptions &add_common)
{
    const auto [job, options] =
        AddJob<RestoreOptions>(app, command, "", "restore", "Write a backup back, and verify what was written");
    AddLibrary(job, options.library);
    add_common(job);
    job.add_option("--from", options.directory, "The backup")->required();
    job.add_option("--subtree", options.subtree,
                   "The directory in the library's tree to restore to (default: the topmost)");
}

void AddErrorText(CLI::App &app, CommandLine &command, const AddCommonOptions &add_common)
{
    const auto parser = AddJob<ErrorTextOptions>(app, command, "", "errtext", "Print the text of a message in a file");
    ErrorTextOptions &options = parser.options;
    add_common(parser.app);
    parser.app.add_option("file", options.file, "The file with the messages: a path, or a name to search for")
        ->required();
    parser.app
        .add_option_function<std::string>(
            "number", [&options](const std::string &text) { options.message = ParseNumber(text).value_or(0); },
            "The message's number: decimal, or hexadecimal with 0x in front")
        ->check([](const std::string &text) { return ParseNumber(text) ? "" : "not a number of 32 bits: " + text; })
        ->required();
}

/// One list, in the order in which its parts were given.
std::string SearchPath(const std::vector<std::string> &directories)
{
    constexpr char separator = std::filesystem::path::preferred_separator == '/' ? ':' : ';';
    std::string all;
    for (const std::string &some : directories) {
        if (!all.empty() && !some.empty())
            all += separator;
        all += some;
    }
    return all;
}

std::optional<Logon> LogonOf(const Given &given)
{
    if (given.user.empty())
        return std::nullopt;
    Logon logon = given.logon;
    logon.user = LastName(given.user);
    const std::size_t domain_and_separator = given.user.size() - logon.user.size();
    logon.domain = given.user.substr(0, std::max<std::size_t>(domain_and_separator, 1) - 1);
    return logon;
}

void Complete(CommandLine &command, const Given &given)
{
    const AdapterOptions *adapter = AdapterOf(command.job);
    if (command.password_descriptor && given.user.empty() && !(adapter && adapter->credentials))
        throw CLI::RequiresError("--password-fd", adapter ? "--logon or --credentials" : "--logon");
    command.helper.time_limit = std::chrono::milliseconds(static_cast<std::int64_t>(given.seconds * 1000));
    command.helper.search_path = SearchPath(given.directories);
    command.helper.logon = LogonOf(given);
}

} // namespace

void AddLibrary(CLI::App &app, std::string &library)
{
    app.add_option("-l,--library", library, "The library to host: a path, or a name to search for")->required();
}

std::optional<CommandLine> ParseCommandLine(const std::vector<WideString> &arguments, std::ostream &out,
                                            std::ostream &err, int &exit_code)
{
    CommandLine command;
    Given given;
    command.helper.program = DefaultHelper();

    CLI::App app("Lists, backs up and restores what a data source serves, with the library in a process of its own.\n"
                 "Works with an adapter's virtual machines and disks. Looks up messages.",
                 "kessilctl");
    app.footer(footer);
    app.set_version_flag("--version", "kessilctl " KESSIL_VERSION);
    app.require_subcommand(1);
    const AddCommonOptions add_common = [&](CLI::App &job) { AddCommon(job, command, given); };
    AddList(app, command, add_common);
    AddBackup(app, command, add_common);
    AddRestore(app, command, add_common);
    AddErrorText(app, command, add_common);
    AddAdapterJobs(app, command, add_common);

    std::vector<std::string> texts;
    for (std::size_t at = arguments.size(); at-- > 1;)
        texts.push_back(platform::ToUtf8(arguments[at]));
    try {
        app.parse(std::move(texts));
        Complete(command, given);
    } catch (const CLI::ParseError &error) {
        exit_code = app.exit(error, out, err) == 0 ? 0 : static_cast<int>(ExitCode::Usage);
        return std::nullopt;
    }
    return command;
}

} // namespace kessil::kessilctl
