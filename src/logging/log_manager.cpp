#include "logging/log_manager.h"

#include "platform/local_time.h"

#include <array>
#include <cstdio>
#include <mutex>
#include <utility>

namespace kessil {
namespace {

constexpr std::uint32_t spin_count = 1024;

} // namespace

const char *LevelName(std::int32_t level)
{
    constexpr std::array names = {"none", "error", "debug", "warning", "info", "trace"};
    return level >= 0 && level < static_cast<std::int32_t>(names.size()) ? names[static_cast<std::size_t>(level)]
                                                                         : "invalid";
}

const char *FormatTimeStamp()
{
    static char text[80];
    const platform::LocalTime now = platform::Now();
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%03d", now.year, now.month, now.day, now.hour,
                  now.minute, now.second, now.millisecond);
    return text;
}

std::string FormatLine(std::int32_t level, const std::string &text, const LogRecordInfo &info)
{
    char thread[16];
    char line[16];
    std::snprintf(thread, sizeof thread, "T%08x ", static_cast<unsigned>(info.thread_id));
    std::snprintf(line, sizeof line, ":%d", static_cast<int>(info.line));
    return std::string(thread) + FormatTimeStamp() + " " + info.file + line + " " + LevelName(level) + ": " + text;
}

ILogSink::ILogSink() : m_lock(spin_count) {}

bool ILogSink::WriteRecord(std::int32_t /*level*/, std::ostringstream & /*stream*/, const LogRecordInfo & /*info*/)
{
    const std::lock_guard lock(m_lock);
    return WriteRaw("") && WriteEol();
}

bool ILogSink::WriteEol()
{
    WriteRaw("\n");
    return true;
}

bool FormattedSink::WriteRecord(std::int32_t level, std::ostringstream &stream, const LogRecordInfo &info)
{
    stream.flush();
    if (!WriteRaw(FormatLine(level, stream.str(), info)))
        return false;
    return WriteEol();
}

bool ConsoleLogSink::WriteRaw(const std::string &text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
    return true;
}

LogManager::LogManager() : m_config(std::make_shared<LogConfig>()), m_lock(spin_count)
{
    AddSink(std::make_shared<ConsoleLogSink>());
}

void LogManager::Log(std::int32_t level, std::ostringstream &stream, const LogRecordInfo &info)
{
    const std::shared_ptr<LogConfig> config = m_config;
    if (!config || level > config->level)
        return;
    const std::lock_guard lock(m_lock);
    for (const std::shared_ptr<ILogSink> &sink : m_sinks)
        sink->WriteRecord(level, stream, info);
}

void LogManager::AddSink(std::shared_ptr<ILogSink> sink)
{
    if (!sink)
        return;
    const std::lock_guard lock(m_lock);
    m_sinks.insert(std::move(sink));
}

std::shared_ptr<LogManager> GetLogManager()
{
    static const auto manager = std::make_shared<LogManager>();
    return manager;
}

} // namespace kessil
