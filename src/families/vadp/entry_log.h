#pragma once

namespace kessil {

/// Whether a handler logs that it runs. Those that move data in bulk don't.
enum class EntryLog
{
    Line,
    None
};

/// Logs, at the level debug, that the handler of that name runs, unless `entry` is None.
void LogEntry(const char *handler, EntryLog entry);

} // namespace kessil
