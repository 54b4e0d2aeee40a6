#include "kessilctl/console/report.h"

#include "kessilctl/console/local_path.h"
#include "kessilctl/console/progress.h"

#include <algorithm>
#include <cstdio>
#include <iomanip>
#include <ostream>
#include <sstream>

namespace kessil::kessilctl {
namespace {

/// "2024-02-29 12:00:00Z", or the seconds where a calendar has no name for the year.
std::string ReadableMoment(const Modified &modified)
{
    using std::chrono::days;
    using std::chrono::seconds;
    constexpr std::int64_t day = 24 * 60 * 60;
    constexpr std::int64_t furthest = 11'000'000 * day;
    if (modified.seconds < -furthest || modified.seconds > furthest)
        return std::to_string(modified.seconds) + "s";
    const auto moment = std::chrono::sys_seconds(seconds(modified.seconds));
    const auto midnight = std::chrono::floor<days>(moment);
    const std::chrono::year_month_day date(midnight);
    const auto time = static_cast<int>((moment - midnight).count());
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u %02d:%02d:%02dZ", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), time / 3600, time / 60 % 60,
                  time % 60);
    return text;
}

/// "3.0 MB in 0.01 s (300 MB/s)"
std::string Pace(std::uint64_t bytes, std::chrono::microseconds elapsed)
{
    const double seconds = std::chrono::duration<double>(elapsed).count();
    const auto amount = static_cast<double>(bytes);
    std::ostringstream text;
    text << ReadableSize(amount) << " in " << std::fixed << std::setprecision(2) << seconds << " s ("
         << ReadableSize(seconds > 0 ? amount / seconds : 0) << "/s)";
    return text.str();
}

/// One line for each item: kind, size, time, name.
void PrintEntries(const std::vector<Entry> &entries, std::ostream &out)
{
    for (const Entry &entry : entries)
        out << std::left << std::setw(9) << NameOf(entry.kind) << ' ' << std::right << std::setw(14) << entry.bytes
            << ' ' << ReadableMoment(entry.modified) << ' ' << Printable(entry.name) << '\n';
}

void PrintMessage(const Message &message, std::ostream &out)
{
    std::istringstream text(message.text);
    for (std::string line; std::getline(text, line);) {
        if (line.ends_with('\r'))
            line.pop_back();
        out << Printable(line) << '\n';
    }
}

/// One line for each item: its numbers, its name.
void PrintItems(const std::vector<parent::AdapterItem> &items, std::ostream &out)
{
    std::size_t number = 0;
    std::size_t value = 0;
    std::size_t extra = 0;
    for (const parent::AdapterItem &item : items) {
        number = std::max(number, std::to_string(item.number).size());
        value = std::max(value, std::to_string(item.value).size());
        extra = std::max(extra, item.extra ? std::to_string(*item.extra).size() : 0);
    }
    for (const parent::AdapterItem &item : items) {
        out << std::right << std::setw(static_cast<int>(number)) << item.number << ' '
            << std::setw(static_cast<int>(value)) << item.value << ' ';
        if (item.extra)
            out << std::setw(static_cast<int>(extra)) << *item.extra << ' ';
        out << Printable(item.name) << '\n';
    }
}

void PrintDiskSummary(const Report &report, std::ostream &out)
{
    const AdapterReport &disk = *report.adapter;
    out << report.job << ": " << disk.bytes / parent::sector_size << " sectors, " << Pace(disk.bytes, report.elapsed)
        << '\n'
        << "sha256 " << disk.digest;
    if (disk.verified)
        out << (*disk.verified ? ", verified" : ", not verified: something else was read back");
    out << '\n';
}

void PrintTreeSummary(const Report &report, std::ostream &out)
{
    const TreeReport &tree = *report.tree;
    out << report.job << ": " << tree.files << " files, " << tree.directories << " directories, "
        << Pace(tree.bytes, report.elapsed) << ", " << report.figures.calls
        << " calls, sections: " << report.figures.sections_announced << " announced, "
        << report.figures.sections_grown_by_helper << " grown by the helper\n";
    if (!tree.skipped.empty())
        out << tree.skipped.size() << " skipped: neither file nor directory\n";
    const std::size_t failed = tree.failures.size() + tree.unusable.size();
    if (failed > 0)
        out << failed << " failed\n";
    if (!tree.differences.empty())
        out << tree.differences.size() << " differences\n";
}

} // namespace

ExitCode CodeOf(const Report &report)
{
    if (report.adapter && !report.adapter->verified.value_or(true))
        return ExitCode::Different;
    if (!report.tree)
        return ExitCode::Done;
    if (!report.tree->failures.empty())
        return ExitCode::LibraryFailed;
    if (!report.tree->unusable.empty())
        return ExitCode::LocalFailed;
    return report.tree->differences.empty() ? ExitCode::Done : ExitCode::Different;
}

void PrintText(const Report &report, std::ostream &out)
{
    if (report.tree && report.tree->entries)
        PrintEntries(*report.tree->entries, out);
    else if (report.message)
        PrintMessage(*report.message, out);
    else if (report.adapter && report.adapter->items)
        PrintItems(*report.adapter->items, out);
    else if (report.adapter && report.end.empty())
        PrintDiskSummary(report, out);
    else if (report.tree && report.end.empty())
        PrintTreeSummary(report, out);
}

} // namespace kessil::kessilctl
