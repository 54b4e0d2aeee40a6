#pragma once

#include "kessilctl/console/exit_code.h"
#include "kessilctl/tree/vorn_library.h"
#include <kessil/adapter.h>

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace kessil::kessilctl {

/// Something about one file, or about a directory.
struct Remark
{
    std::string file;
    std::string text;
};

/// A message that the helper looked up. That the text is the message's isn't certain: it may tell why there is none.
struct Message
{
    std::uint32_t number = 0;
    std::string file;
    std::string text;
};

/// A line of an adapter's log.
struct LogLine
{
    std::uint8_t level = 0;
    std::string text;
};

/// What a run came to with an adapter.
struct AdapterReport
{
    std::optional<std::vector<parent::AdapterItem>> items; ///< none: the task is no listing
    /// Kept for JSON alone.
    std::vector<LogLine> log;
    std::string digest;           ///< of the sectors that were moved; empty: not all of them were
    std::optional<bool> verified; ///< whether they were read back the same; none: they weren't
};

/// What a run came to; filled as the run goes.
struct Report
{
    std::string task;
    std::uint64_t files = 0;
    std::uint64_t directories = 0;
    std::uint64_t bytes = 0;
    std::vector<Remark> failures;    ///< the library's
    std::vector<Remark> unusable;    ///< this side's
    std::vector<Remark> differences; ///< from what was backed up
    std::vector<Remark> skipped;     ///< what is neither file nor directory
    std::vector<Entry> entries;      ///< of a listing, each name with the way to it
    std::optional<Message> message;
    std::optional<AdapterReport> adapter;
    std::string end; ///< why the run ended early; empty when it didn't
    ExitCode exit_code = ExitCode::Done;
    std::chrono::microseconds elapsed{0};
    parent::Statistics figures;
};

/// The exit code of a run that came to its end.
ExitCode CodeOf(const Report &report);

/// The listing, one line an item: kind, size, time, name.
void PrintListing(const Report &report, std::ostream &out);

/// The message's text, line by line; nothing when there is none.
void PrintMessage(const Report &report, std::ostream &out);

/// An adapter's listing, one line an item: its numbers, its name.
void PrintItems(const std::vector<parent::AdapterItem> &items, std::ostream &out);

/// What was read or written, and its digest.
void PrintDiskSummary(const Report &report, std::ostream &out);

/// What was done, in one or two lines.
void PrintSummary(const Report &report, std::ostream &out);

/// All of it, as one JSON object. Names that aren't UTF-8 have U+FFFD in them; beside such a name stand its bytes.
void PrintJson(const Report &report, std::ostream &out);

} // namespace kessil::kessilctl
