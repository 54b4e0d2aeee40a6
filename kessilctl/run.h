#pragma once

#include "kessilctl/console/command_line.h"
#include "kessilctl/console/interruption.h"
#include "kessilctl/console/progress.h"
#include "kessilctl/console/report.h"
#include "kessilctl/tree/vorn_library.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace kessil::kessilctl {

/// Where a run shows itself. `columns` is the width of the terminal that `err` is, 0 when it is none.
struct Screen
{
    std::ostream &out;
    std::ostream &err;
    unsigned columns = 0;
};

/// The whole program: does what the arguments say (the program's own name first) and returns the exit code.
int Run(const std::vector<WideString> &arguments, const Screen &screen);

/// One item of a tree, and the way to it from the task's topmost directory.
struct Found
{
    std::string path;
    Entry entry;
};

/// What a task works with.
class Job
{
public:
    Job(const Command &asked, VornLibrary &hosted, Report &filled, const Screen &shown)
        : command(asked), library(hosted), report(filled), screen(shown)
    {}

    /// The tree below the command's path in the library, every directory ahead of what is in it. What can't be listed
    /// is noted as a failure, and the rest goes on.
    std::vector<Found> Walk(bool recursive);

    /// How a path of the task is shown to a person; the task's own for an empty one.
    std::string Place(const std::string &path) const;

    /// The path within the library of something in the task's tree.
    std::string InLibrary(const std::string &path) const;

    /// Puts a remark into one of the report's lists, and on the screen.
    void Note(std::vector<Remark> &list, const std::string &file, const std::string &text);

    const Command &command;
    VornLibrary &library;
    Report &report;
    Screen screen;
    Progress *progress = nullptr; ///< while one is shown
};

void List(Job &job);
void Backup(Job &job);
void Restore(Job &job);

} // namespace kessil::kessilctl
