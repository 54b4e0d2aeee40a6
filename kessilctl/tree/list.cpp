#include "kessilctl/console/local_path.h"
#include "kessilctl/run.h"

#include <algorithm>

namespace kessil::kessilctl {

void List(Job &job)
{
    for (Found &found : job.Walk(job.command.recursive)) {
        Report &report = job.report;
        report.files += found.entry.kind == Kind::File ? 1 : 0;
        report.directories += found.entry.kind == Kind::Directory ? 1 : 0;
        report.bytes += found.entry.kind == Kind::File ? found.entry.bytes : 0;
        found.entry.name = found.path;
        report.entries.push_back(std::move(found.entry));
    }
    std::ranges::sort(job.report.entries, {}, &Entry::name);
}

} // namespace kessil::kessilctl
