#pragma once

#include "rows/adapter_row.h"

namespace kessil::test {

/// Earlier calls, by what they leave behind.
Step BackupOptions(const std::string &object);
Step BackupSession(const std::string &object);
Step BackupFile(const std::string &object);
std::vector<Step> ThreeSessions(); ///< 0x501 to 0x503
std::vector<Step> ThreeFiles();    ///< 0x601 to 0x603

/// Disk library, snapshots, sessions and backup files, with the arguments in the section. A block's data lie 8 bytes
/// into the section before and after the call.
const std::vector<AdapterRow> &BackupRows();

/// The same by command, with bare values on the pipe.
const std::vector<CommandRow> &BackupCommands();

} // namespace kessil::test
