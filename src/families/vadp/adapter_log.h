#pragma once

namespace kessil {

class CIPCCommunication;

// The adapter's log lines wait in a queue and are sent ahead of the next answer. A line that comes while the
// queue is being sent waits for the answer after that.

/// What the adapter calls: copies the text and puts it into the queue. May run on any thread, at any time. A line that
/// finds no memory is lost.
void queueAdapterLogLine(const char *text, unsigned char level) noexcept;

/// Sends the queue as one 'M' frame a line, the text converted from the thread's ANSI code page, and empties it.
void flushAdapterLog(CIPCCommunication &channel);

/// Sends the queue as bare values, -99, the text's bytes and the level for each line, then -999 in any case, and
/// empties it.
void sendAdapterLogAlt(CIPCCommunication &channel);

} // namespace kessil
