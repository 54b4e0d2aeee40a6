#include "kessilctl/console/command_line.h"

#include "kessilctl/console/adapter_options.h"
#include "kessilctl/console/exit_code.h"
#include "kessilctl/console/local_path.h"
#include "platform/program_path.h"

#include <charconv>

#include <CLI/CLI.hpp>

namespace kessil::kessilctl {
namespace {

constexpr const char *footer = R"(
For ls, backup and restore the library must have the fifteen functions of a data-source plug-in, with the listing items
of samples/vorn_fs. What it serves is its own affair; vorn_fs serves the directory that VORN_FS_ROOT names.
`kessilctl adapter --help` tells of adapters.

The helper logs on first, then takes the directories to search, then loads the library. A password is asked for on the
terminal, or is the first line of --password-fd; it is never an argument, and no variable of the environment.

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

/// What stands behind the domain, if there is one.
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

/// What CLI11 fills and Command has in another form.
struct Words
{
    double seconds = 300;
    std::vector<std::string> directories;
    std::string user;
    Logon logon;
};

void AddLibrary(CLI::App &app, Command &command)
{
    app.add_option("-l,--library", command.library, "The library to host: a path, or a name to search for")->required();
}

void AddLogonOptions(CLI::App &app, Command &command, Words &words)
{
    CLI::Option *const logon =
        app.add_option("--logon", words.user, "The helper logs on as this user: USER or DOMAIN\\USER")
            ->check([](const std::string &user) { return LastName(user).empty() ? "a user has a name" : ""; });
    app.add_option("--password-fd", command.password_descriptor,
                   "The password is the first line of this open descriptor; 0 is standard input (default: the terminal "
                   "asks)")
        ->check(CLI::NonNegativeNumber);
    app.add_flag("--credentials-only", words.logon.credentials_only, "Log on for outgoing connections alone (Windows)")
        ->needs(logon);
}

void AddCommonOptions(CLI::App &app, Command &command, Words &words)
{
    app.add_option("--path", words.directories,
                   "Directories, separated as in PATH, that the helper searches before all others; may be given again")
        ->allow_extra_args(false);
    AddLogonOptions(app, command, words);
    app.add_option("--helper", command.helper, "The helper's program (default: kessil beside kessilctl)");
    app.add_option("--log", command.log, "The helper appends its log to this file (default: none is kept)");
    app.add_flag("--debug", command.debug, "The helper's log tells everything");
    app.add_option("--time-limit", words.seconds, "Seconds that one call may take; 0 for no limit (default: 300)")
        ->check(CLI::Range(0.0, 1e6));
    app.add_flag("--json", command.json, "Print the result as JSON");
}

/// Decimal, or hexadecimal behind 0x. None when it isn't a number of 32 bits.
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

void AddErrorText(CLI::App &app, Command &command)
{
    app.add_option("file", command.file, "The file with the messages: a path, or a name to search for")->required();
    app.add_option_function<std::string>(
           "number", [&command](const std::string &text) { command.message = ParseNumber(text).value_or(0); },
           "The message: decimal, or hexadecimal behind 0x")
        ->check([](const std::string &text) { return ParseNumber(text) ? "" : "not a number of 32 bits: " + text; })
        ->required();
}

/// One list, in which what was given first is searched first.
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

std::optional<Logon> LogonOf(Words words)
{
    if (words.user.empty())
        return std::nullopt;
    words.logon.user = LastName(words.user);
    const std::size_t domain_and_separator = words.user.size() - words.logon.user.size();
    words.logon.domain = words.user.substr(0, std::max<std::size_t>(domain_and_separator, 1) - 1);
    return std::move(words.logon);
}

void Complete(Command &command, const Words &words)
{
    if (command.password_descriptor && words.user.empty() && !command.adapter.credentials)
        throw CLI::RequiresError("--password-fd", IsOfAdapter(command.task) ? "--logon or --credentials" : "--logon");
    command.time_limit = std::chrono::milliseconds(static_cast<std::int64_t>(words.seconds * 1000));
    command.search_path = SearchPath(words.directories);
    command.logon = LogonOf(words);
}

} // namespace

std::optional<Command> ParseCommandLine(const std::vector<WideString> &arguments, std::ostream &out, std::ostream &err,
                                        int &exit_code)
{
    Command command;
    Words words;
    command.helper = DefaultHelper();

    CLI::App app(
        "Lists, backs up and restores what a data-source library serves, with the library in a process of its own.\n"
        "Works with an adapter's virtual machines and disks. Looks up messages.",
        "kessilctl");
    app.footer(footer);
    app.set_version_flag("--version", "kessilctl " KESSIL_VERSION);
    app.require_subcommand(1);
    CLI::App *list = app.add_subcommand("ls", "List a directory");
    CLI::App *backup = app.add_subcommand("backup", "Copy files and directories into a new backup");
    CLI::App *restore = app.add_subcommand("restore", "Write a backup back, and verify what was written");
    CLI::App *error_text = app.add_subcommand("errtext", "Print the text that a file has for a message's number");
    for (CLI::App *task : {list, backup, restore})
        AddLibrary(*task, command);
    for (CLI::App *task : {list, backup, restore, error_text})
        AddCommonOptions(*task, command, words);
    AddAdapterTasks(app, command, [&](CLI::App &task) {
        AddLibrary(task, command);
        AddCommonOptions(task, command, words);
    });
    for (const auto &[task, meaning] : {std::pair(list, Task::List), std::pair(backup, Task::Backup),
                                        std::pair(restore, Task::Restore), std::pair(error_text, Task::ErrorText)})
        task->callback([&command, wanted = meaning] { command.task = wanted; });
    AddErrorText(*error_text, command);
    list->add_option("subtree", command.path, "The directory in the library's tree (default: the topmost)");
    list->add_flag("-r,--recursive", command.recursive, "And everything below it");
    backup->add_option("--subtree", command.path, "The directory in the library's tree (default: the topmost)");
    backup->add_option("--to", command.directory, "The backup: a directory that is empty or doesn't exist")->required();
    restore->add_option("--from", command.directory, "The backup")->required();
    restore->add_option("--subtree", command.path,
                        "The directory in the library's tree to restore to (default: the topmost)");

    std::vector<std::string> texts;
    for (std::size_t at = arguments.size(); at-- > 1;)
        texts.push_back(platform::ToUtf8(arguments[at]));
    try {
        app.parse(std::move(texts));
        Complete(command, words);
    } catch (const CLI::ParseError &error) {
        exit_code = app.exit(error, out, err) == 0 ? 0 : static_cast<int>(ExitCode::Usage);
        return std::nullopt;
    }
    return command;
}

} // namespace kessil::kessilctl
