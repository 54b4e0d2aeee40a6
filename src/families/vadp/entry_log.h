#pragma once

namespace kessil {

/// Whether a handler tells the log that it runs. Those that move data in bulk don't.
enum class EntryLog
{
    Line,
    None
};

void LogEntry(const char *handler, EntryLog entry);

} // namespace kessil
