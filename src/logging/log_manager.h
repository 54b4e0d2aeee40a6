#pragma once

#include "platform/critical_section.h"
#include "platform/thread.h"

#include <cstdint>
#include <memory>
#include <new>
#include <set>
#include <sstream>
#include <string>

// The log has one line for each record:
//   T<thread, 8 hex digits> <local time, YYYY-MM-DDThh:mm:ss.mmm> <component>:<line> <level>: <text>
// Nothing here reports a failure: a log that can't be written never stops the work.

namespace kessil {

/// A record passes when its level is at most the configured one.
inline constexpr std::int32_t log_none = 0;
inline constexpr std::int32_t log_error = 1;
inline constexpr std::int32_t log_debug = 2;

/// The level's name in a line: "none", "error", "debug", "warning", "info", "trace" for 0 to 5, else "invalid".
const char *LevelName(std::int32_t level);

/// Where and by which thread a record was made.
struct LogRecordInfo
{
    std::string file;     ///< the component's name, in place of a source file's
    std::int32_t line;    ///< line in the source
    std::string function; ///< the function's full signature
    std::string date;     ///< build date of the source, as __DATE__ gives it
    std::string time;     ///< build time of the source, as __TIME__ gives it
    std::uint32_t thread_id;
};

/// Local time as "YYYY-MM-DDThh:mm:ss.mmm", in one static buffer: the caller holds the manager's lock.
const char *FormatTimeStamp();

/// The whole line without its end. The caller holds the manager's lock.
std::string FormatLine(std::int32_t level, const std::string &text, const LogRecordInfo &info);

struct LogConfig
{
    std::int32_t level = log_none;
};

/// A destination of records.
class ILogSink
{
public:
    ILogSink();
    virtual ~ILogSink() = default;
    ILogSink(const ILogSink &) = delete;
    ILogSink &operator=(const ILogSink &) = delete;

    /// Writes the text unchanged. False when the sink could not write it.
    virtual bool WriteRaw(const std::string &text) = 0;

    /// Writes one record. A sink that doesn't format writes an empty line, under its own lock.
    virtual bool WriteRecord(std::int32_t level, std::ostringstream &stream, const LogRecordInfo &info);

protected:
    /// Writes a line end and returns true, even if that failed.
    bool WriteEol();

private:
    platform::CriticalSection m_lock;
};

/// A sink whose records are lines of FormatLine. The manager's lock orders them.
class FormattedSink : public ILogSink
{
public:
    bool WriteRecord(std::int32_t level, std::ostringstream &stream, const LogRecordInfo &info) override;
};

/// The process's standard output, flushed after each write.
class ConsoleLogSink : public FormattedSink
{
public:
    bool WriteRaw(const std::string &text) override;
};

/// Owns the configuration and the sinks. Its lock keeps the lines of several threads apart.
class LogManager
{
public:
    LogManager();

    /// True when a record of that level would not be logged.
    bool IsDisabled(std::int32_t level) const { return !m_config || level > m_config->level; }

    /// Passes the record to every sink, if its level passes.
    void Log(std::int32_t level, std::ostringstream &stream, const LogRecordInfo &info);

    void AddSink(std::shared_ptr<ILogSink> sink);

    LogConfig &Config() { return *m_config; }

private:
    std::set<std::shared_ptr<ILogSink>> m_sinks;
    std::shared_ptr<LogConfig> m_config;
    platform::CriticalSection m_lock;
};

/// The process's only manager, with a ConsoleLogSink. The first call creates it; that call comes from the entry point,
/// before any other thread can exist.
std::shared_ptr<LogManager> GetLogManager();

} // namespace kessil

// The enclosing function's full signature, by whichever name the compiler has for it.
#ifdef _MSC_VER
#define KESSIL_FUNCTION __FUNCSIG__
#else
#define KESSIL_FUNCTION __PRETTY_FUNCTION__
#endif

// Logs `message`, a chain of stream insertions, as a record of `component`. Builds nothing when the level is off: a
// function would evaluate its arguments all the same, and would not know its caller's line and build time.
#define KESSIL_LOG(level, component, message)                                                                          \
    do {                                                                                                               \
        if (!::kessil::GetLogManager()->IsDisabled(level)) {                                                           \
            try {                                                                                                      \
                std::ostringstream kessilLogStream;                                                                    \
                kessilLogStream << message;                                                                            \
                const ::kessil::LogRecordInfo kessilLogInfo{(component),     __LINE__,                                 \
                                                            KESSIL_FUNCTION, __DATE__,                                 \
                                                            __TIME__,        ::kessil::platform::CurrentThreadId()};   \
                ::kessil::GetLogManager()->Log((level), kessilLogStream, kessilLogInfo);                               \
            } catch (const std::bad_alloc &) {                                                                         \
                static_cast<void>(0); /* without memory the record is lost, and the work goes on */                    \
            }                                                                                                          \
        }                                                                                                              \
    } while (false)
