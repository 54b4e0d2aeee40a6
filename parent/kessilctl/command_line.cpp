#include "command_line.h"

#include "exit_code.h"
#include "local_path.h"
#include "platform/program_path.h"

#include <CLI/CLI.hpp>

namespace kessil::driver {
namespace {

constexpr const char *footer = R"(
The library must have the fifteen functions of a data-source plug-in, with the listing items of samples/vorn_fs. What it
serves is its own affair; vorn_fs serves the directory that VORN_FS_ROOT names.

A backup is a directory with the files in files/ and their digests in MANIFEST.sha256, which
`sha256sum -c MANIFEST.sha256` checks. The manifest is written last: a backup without one is not complete.

Exit codes:
  0  done
  1  the library reported a failure, for everything or for some of the files
  2  usage
  3  the helper refused: the library, a function or a signature is unknown to it
  4  the helper died, or broke the protocol
  5  a call took longer than --time-limit
  6  the helper did not start
  7  a file or directory on this side could not be read or written
  8  restore: something differs from what was backed up
  130  interrupted)";

std::string DefaultHelper()
{
    const std::filesystem::path program = platform::ProgramPath();
    std::filesystem::path helper = program.parent_path() / "kessil";
    helper += program.extension();
    return ToText(helper);
}

void AddCommonOptions(CLI::App &app, Command &command, double &seconds)
{
    app.add_option("-l,--library", command.library, "The library to host: a path, or a name to search for")->required();
    app.add_option("--helper", command.helper, "The helper's program (default: kessil beside kessilctl)");
    app.add_option("--log", command.log, "The helper appends its log to this file (default: none is kept)");
    app.add_flag("--debug", command.debug, "The helper's log tells everything");
    app.add_option("--time-limit", seconds, "Seconds that one call may take; 0 for no limit (default: 300)")
        ->check(CLI::Range(0.0, 1e6));
    app.add_flag("--json", command.json, "Print the result as JSON");
}

} // namespace

std::optional<Command> ParseCommandLine(const std::vector<WideString> &arguments, std::ostream &out, std::ostream &err,
                                        int &exit_code)
{
    Command command;
    double seconds = 300;
    command.helper = DefaultHelper();

    CLI::App app(
        "Lists, backs up and restores what a data-source library serves, with the library in a process of its own.",
        "kessilctl");
    app.footer(footer);
    app.set_version_flag("--version", "kessilctl " KESSIL_VERSION);
    app.require_subcommand(1);
    CLI::App *list = app.add_subcommand("ls", "List a directory");
    CLI::App *backup = app.add_subcommand("backup", "Copy files and directories into a new backup");
    CLI::App *restore = app.add_subcommand("restore", "Write a backup back, and verify what was written");
    for (CLI::App *task : {list, backup, restore})
        AddCommonOptions(*task, command, seconds);
    list->add_option("path", command.path, "The directory in the library's tree (default: the topmost)");
    list->add_flag("-r,--recursive", command.recursive, "And everything below it");
    backup->add_option("--path", command.path, "The directory in the library's tree (default: the topmost)");
    backup->add_option("--to", command.directory, "The backup: a directory that is empty or doesn't exist")->required();
    restore->add_option("--from", command.directory, "The backup")->required();
    restore->add_option("--path", command.path,
                        "The directory in the library's tree to restore to (default: the topmost)");

    std::vector<std::string> texts;
    for (std::size_t at = arguments.size(); at-- > 1;)
        texts.push_back(platform::ToUtf8(arguments[at]));
    try {
        app.parse(std::move(texts));
    } catch (const CLI::ParseError &error) {
        exit_code = app.exit(error, out, err) == 0 ? 0 : static_cast<int>(ExitCode::Usage);
        return std::nullopt;
    }
    command.task = *list ? Task::List : *backup ? Task::Backup : Task::Restore;
    command.time_limit = std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
    return command;
}

} // namespace kessil::driver
