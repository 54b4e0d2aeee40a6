#pragma once

#include "kessilctl/console/entry.h"
#include "kessilctl/console/exit_code.h"

#include <kessil/adapter.h>

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace kessil::kessilctl {

/// A text about one file or directory.
struct Remark
{
    std::string file;
    std::string text;
};

/// The result of a job with a data source.
struct TreeReport
{
    std::uint64_t files = 0;
    std::uint64_t directories = 0;
    std::uint64_t bytes = 0;
    std::vector<Remark> failures;              ///< that the library reported
    std::vector<Remark> unusable;              ///< what this side could not take
    std::vector<Remark> differences;           ///< from what was backed up
    std::vector<Remark> skipped;               ///< what is neither a file nor a directory
    std::optional<std::vector<Entry>> entries; ///< each with its path for a name; none: the job is no listing
};

/// The answer to the lookup of a message. The text may be the message's, or the reason why there is none.
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

/// The result of a job with an adapter.
struct AdapterReport
{
    std::optional<std::vector<parent::AdapterItem>> items; ///< none: the job is no listing
    std::optional<std::vector<LogLine>> log;               ///< none: it isn't kept, since a long job may log for hours
    std::uint64_t bytes = 0;                               ///< of the sectors that were read or written
    std::string digest;           ///< of all sectors that were asked for; empty: some were not read or written
    std::optional<bool> verified; ///< whether what was written was read back the same; none: it wasn't read back
};

/// The result of a run. It has the part of its job from the start; the job fills it as it proceeds.
struct Report
{
    std::string job; ///< its name, such as "adapter hosts"
    std::optional<TreeReport> tree;
    std::optional<Message> message;
    std::optional<AdapterReport> adapter;
    std::string end; ///< why the run ended early; empty: it didn't
    ExitCode exit_code = ExitCode::Done;
    std::chrono::microseconds elapsed{0};
    parent::Statistics figures;
};

/// The exit code of a run that didn't end early.
ExitCode CodeOf(const Report &report);

/// Prints the result of the run for a person: a listing, a text, or a summary. After an early end only what a listing
/// or a lookup had by then.
void PrintText(const Report &report, std::ostream &out);

/// Prints all of it as one JSON object. Names that aren't UTF-8 have U+FFFD in them; their bytes follow in a field of
/// their own.
void PrintJson(const Report &report, std::ostream &out);

} // namespace kessil::kessilctl
