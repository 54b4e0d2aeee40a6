#include "kessilctl/console/report.h"

#include "platform/text.h"

#include <ostream>

#include <nlohmann/json.hpp>

namespace kessil::kessilctl {
namespace {

using Json = nlohmann::ordered_json;

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

void AddAdapter(Json &object, const AdapterReport &report)
{
    if (report.items) {
        object["items"] = ToJson(*report.items);
    } else {
        object["bytes"] = report.bytes;
        if (!report.digest.empty())
            object["sha256"] = report.digest;
        if (report.verified)
            object["verified"] = *report.verified;
    }
    object["log"] = report.log ? ToJson(*report.log) : Json::array();
}

void AddTree(Json &object, const TreeReport &report)
{
    if (report.entries)
        object["entries"] = ToJson(*report.entries);
    object["files"] = report.files;
    object["directories"] = report.directories;
    object["bytes"] = report.bytes;
    object["failures"] = ToJson(report.failures);
    object["unusable"] = ToJson(report.unusable);
    object["differences"] = ToJson(report.differences);
    object["skipped"] = ToJson(report.skipped);
}

void AddFigures(Json &object, const parent::Statistics &figures)
{
    object["calls"] = figures.calls;
    object["sections_announced"] = figures.sections_announced;
    object["sections_grown_by_helper"] = figures.sections_grown_by_helper;
}

} // namespace

void PrintJson(const Report &report, std::ostream &out)
{
    Json object;
    object["task"] = report.job;
    AddEnd(object, report);
    if (report.message)
        AddMessage(object, *report.message);
    if (report.adapter)
        AddAdapter(object, *report.adapter);
    if (report.tree) {
        AddTree(object, *report.tree);
        AddFigures(object, report.figures);
    }
    object["seconds"] = std::chrono::duration<double>(report.elapsed).count();
    out << object.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

} // namespace kessil::kessilctl
