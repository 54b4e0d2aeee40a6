#include "report.h"

#include "local_path.h"
#include "platform/text.h"
#include "progress.h"

#include <cstdio>
#include <iomanip>
#include <ostream>
#include <sstream>

#include <nlohmann/json.hpp>

namespace kessil::driver {
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

void PrintSummary(const Report &report, std::ostream &out)
{
    const double seconds = std::chrono::duration<double>(report.elapsed).count();
    const auto bytes = static_cast<double>(report.bytes);
    out << report.task << ": " << report.files << " files, " << report.directories << " directories, "
        << ReadableSize(bytes) << " in " << std::fixed << std::setprecision(2) << seconds << " s ("
        << ReadableSize(seconds > 0 ? bytes / seconds : 0) << "/s), " << report.figures.calls
        << " calls, sections: " << report.figures.sections_announced << " announced, "
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
    if (report.task != "errtext")
        AddFiles(object, report);
    object["seconds"] = std::chrono::duration<double>(report.elapsed).count();
    out << object.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

} // namespace kessil::driver
