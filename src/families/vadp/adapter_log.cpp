#include "families/vadp/adapter_log.h"

#include "channel/pipe_primitives.h"
#include "marshal/replies.h"
#include "platform/code_page.h"
#include "platform/critical_section.h"

#include <list>
#include <mutex>
#include <new>
#include <string>

namespace kessil {
namespace {

constexpr std::int32_t log_line_follows = -99;
constexpr std::int32_t end_of_log = -999;
constexpr std::uint32_t lock_spin_count = 4000;

struct AdapterLogLine
{
    std::string text;
    unsigned char level;
};

platform::CriticalSection g_csAdapterLog(lock_spin_count);
std::list<AdapterLogLine> g_lAdapterLog; // oldest first

} // namespace

void queueAdapterLogLine(const char *text, unsigned char level) noexcept
{
    try {
        AdapterLogLine line{text != nullptr ? text : "", level};
        const std::lock_guard lock(g_csAdapterLog);
        g_lAdapterLog.push_back(std::move(line));
    } catch (const std::bad_alloc &) {
        return; // an exception must not end the adapter's thread
    }
}

void flushAdapterLog(CIPCCommunication &channel)
{
    const std::lock_guard lock(g_csAdapterLog);
    for (const AdapterLogLine &line : g_lAdapterLog)
        SendMessageReply(channel, platform::FromThreadCodePage(line.text), line.level);
    g_lAdapterLog.clear();
}

void sendAdapterLogAlt(CIPCCommunication &channel)
{
    const std::lock_guard lock(g_csAdapterLog);
    for (const AdapterLogLine &line : g_lAdapterLog) {
        static_cast<void>(WriteInt32ToPipe(channel, log_line_follows));
        static_cast<void>(WriteStringToPipe(channel, line.text));
        static_cast<void>(WriteInt32ToPipe(channel, line.level));
    }
    g_lAdapterLog.clear();
    static_cast<void>(WriteInt32ToPipe(channel, end_of_log));
}

} // namespace kessil
