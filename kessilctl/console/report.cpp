#include "kessilctl/console/report.h"

#include "kessilctl/console/local_path.h"
#include "kessilctl/console/progress.h"
#include "platform/text.h"

#include <algorithm>
#include <cstdio>
#include <iomanip>
#include <ostream>
#include <sstream>

#include <nlohmann/json.hpp>

namespace kessil::kessilctl {
namespace {

using Json = nlohmann::ordered_json;

const char *NameOf(Kind kind)
{
    switch (kind) {
    case Kind::File:
        return "file";
    case Kind::Directory:
        return "directory";
    case Kind::Link:
        return "link";
    case Kind::Other:
        break;
    }
    return "other";
}

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

bool IsUtf8(const std::string &text)
{
    // Bytes that are no UTF-8 become lone low surrogates.
    const WideString wide = platform::FromUtf8(text);
    for (std::size_t at = 0; at < wide.size(); ++at) {
        const bool pair = wide[at] >= 0xD800 && wide[at] < 0xDC00;
        if (!pair && wide[at] >= 0xDC00 && wide[at] < 0xE000)
            return false;
        at += pair ? 1 : 0;
    }
    return true;
}

void AddName(Json &object, const char *key, const std::string &name)
{
    object[key] = name;
    if (IsUtf8(name))
        return;
    Json bytes = Json::array();
    for (const char byte : name)
        bytes.push_back(static_cast<unsigned char>(byte));
    object[std::string(key) + "_bytes"] = bytes;
}

Json ToJson(const std::vector<Remark> &remarks)
{
    Json array = Json::array();
    for (const Remark &remark : remarks) {
        Json object;
        AddName(object, "file", remark.file);
        object["text"] = remark.text;
        array.push_back(object);
    }
    return array;
}

Json ToJson(const std::vector<Entry> &entries)
{
    Json array = Json::array();
    for (const Entry &entry : entries) {
        Json object;
        AddName(object, "name", entry.name);
        object["kind"] = NameOf(entry.kind);
        object["bytes"] = entry.bytes;
        object["seconds"] = entry.modified.seconds;
        object["nanoseconds"] = entry.modified.nanoseconds;
        array.push_back(object);
    }
    return array;
}

void AddEnd(Json &object, const Report &report)
{
    object["exit_code"] = static_cast<int>(report.exit_code);
    if (!report.end.empty())
        object["end"] = report.end;
}

void AddMessage(Json &object, const Message &message)
{
    object["number"] = message.number;
    AddName(object, "file", message.file);
    object["text"] = message.text;
}

void AddNumbers(Json &object, const parent::AdapterItem &item)
{
    object["number"] = item.number;
    object["value"] = item.value;
    if (item.extra)
        object["extra"] = *item.extra;
}

Json ToJson(const std::vector<parent::AdapterItem> &items)
{
    Json array = Json::array();
    for (const parent::AdapterItem &item : items) {
        Json object;
        AddName(object, "name", item.name);
        AddNumbers(object, item);
        array.push_back(object);
    }
    return array;
}

Json ToJson(const std::vector<LogLine> &log)
{
    Json array = Json::array();
    for (const LogLine &line : log)
        array.push_back({{"level", line.level}, {"text", line.text}});
    return array;
}

void AddDisk(Json &object, const Report &report)
{
    object["bytes"] = report.bytes;
    if (!report.adapter->digest.empty())
        object["sha256"] = report.adapter->digest;
    if (report.adapter->verified)
        object["verified"] = *report.adapter->verified;
}

void AddAdapter(Json &object, const Report &report)
{
    if (report.adapter->items)
        object["items"] = ToJson(*report.adapter->items);
    else
        AddDisk(object, report);
    object["log"] = ToJson(report.adapter->log);
}

void AddFiles(Json &object, const Report &report)
{
    if (report.task == "ls")
        object["entries"] = ToJson(report.entries);
    object["files"] = report.files;
    object["directories"] = report.directories;
    object["bytes"] = report.bytes;
    object["failures"] = ToJson(report.failures);
    object["unusable"] = ToJson(report.unusable);
    object["differences"] = ToJson(report.differences);
    object["skipped"] = ToJson(report.skipped);
    object["calls"] = report.figures.calls;
    object["sections_announced"] = report.figures.sections_announced;
    object["sections_grown_by_helper"] = report.figures.sections_grown_by_helper;
}

/// "3.0 MB in 0.01 s (300 MB/s)"
std::string Pace(const Report &report)
{
    const double seconds = std::chrono::duration<double>(report.elapsed).count();
    const auto bytes = static_cast<double>(report.bytes);
    std::ostringstream text;
    text << ReadableSize(bytes) << " in " << std::fixed << std::setprecision(2) << seconds << " s ("
         << ReadableSize(seconds > 0 ? bytes / seconds : 0) << "/s)";
    return text.str();
}

} // namespace

ExitCode CodeOf(const Report &report)
{
    if (!report.failures.empty())
        return ExitCode::LibraryFailed;
    if (!report.unusable.empty())
        return ExitCode::LocalFailed;
    return report.differences.empty() ? ExitCode::Done : ExitCode::Different;
}

void PrintListing(const Report &report, std::ostream &out)
{
    for (const Entry &entry : report.entries)
        out << std::left << std::setw(9) << NameOf(entry.kind) << ' ' << std::right << std::setw(14) << entry.bytes
            << ' ' << ReadableMoment(entry.modified) << ' ' << Printable(entry.name) << '\n';
}

void PrintMessage(const Report &report, std::ostream &out)
{
    if (!report.message)
        return;
    std::istringstream text(report.message->text);
    for (std::string line; std::getline(text, line);) {
        if (line.ends_with('\r'))
            line.pop_back();
        out << Printable(line) << '\n';
    }
}

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
    out << report.task << ": " << report.bytes / parent::sector_size << " sectors, " << Pace(report) << '\n'
        << "sha256 " << report.adapter->digest;
    if (report.adapter->verified)
        out << (*report.adapter->verified ? ", verified" : ", not what is read back");
    out << '\n';
}

void PrintSummary(const Report &report, std::ostream &out)
{
    out << report.task << ": " << report.files << " files, " << report.directories << " directories, " << Pace(report)
        << ", " << report.figures.calls << " calls, sections: " << report.figures.sections_announced << " announced, "
        << report.figures.sections_grown_by_helper << " grown by the helper\n";
    if (!report.skipped.empty())
        out << report.skipped.size() << " skipped: neither file nor directory\n";
    const std::size_t failed = report.failures.size() + report.unusable.size();
    if (failed > 0)
        out << failed << " failed\n";
    if (!report.differences.empty())
        out << report.differences.size() << " differences\n";
}

void PrintJson(const Report &report, std::ostream &out)
{
    Json object;
    object["task"] = report.task;
    AddEnd(object, report);
    if (report.message)
        AddMessage(object, *report.message);
    if (report.adapter)
        AddAdapter(object, report);
    else if (report.task != "errtext")
        AddFiles(object, report);
    object["seconds"] = std::chrono::duration<double>(report.elapsed).count();
    out << object.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

} // namespace kessil::kessilctl
