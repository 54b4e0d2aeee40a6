#pragma once

#include "kessilctl/console/console.h"
#include "kessilctl/console/report.h"
#include "kessilctl/helper/running_helper.h"

/// The jobs with a data source. Each loads the library that its options name, opens a session, and fills the report as
/// it proceeds. What fails for a single file is noted in the report and on the console, and the job continues; anything
/// else throws Failure.
namespace kessil::kessilctl {

/// `kessilctl ls`
void List(const ListOptions &options, const RunningHelper &running, Console &console, TreeReport &report);

/// `kessilctl backup`
void Backup(const BackupOptions &options, const RunningHelper &running, Console &console, TreeReport &report);

/// `kessilctl restore`
void Restore(const RestoreOptions &options, const RunningHelper &running, Console &console, TreeReport &report);

} // namespace kessil::kessilctl
