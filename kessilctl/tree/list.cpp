#include "kessilctl/tree/jobs.h"
#include "kessilctl/tree/subtree.h"

#include <algorithm>

namespace kessil::kessilctl {

void List(const ListOptions &options, const RunningHelper &running, Console &console, TreeReport &report)
{
    VornLibrary library(running, LibraryName(options.library));
    Subtree subtree(library, options.subtree, console, report);
    std::vector<Found> tree = subtree.Walk(options.recursive);
    const Totals totals = TotalsOf(tree);
    report.files = totals.files;
    report.bytes = totals.bytes;
    std::vector<Entry> &entries = report.entries.value();
    for (Found &found : tree) {
        report.directories += found.entry.kind == Kind::Directory ? 1 : 0;
        found.entry.name = found.path;
        entries.push_back(std::move(found.entry));
    }
    std::ranges::sort(entries, {}, &Entry::name);
    library.Close();
}

} // namespace kessil::kessilctl
