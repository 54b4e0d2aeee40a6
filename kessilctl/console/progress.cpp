#include "kessilctl/console/progress.h"

#include <algorithm>
#include <cstdio>
#include <ostream>
#include <utility>

namespace kessil::kessilctl {
namespace {

constexpr std::chrono::milliseconds between_bars{100};
constexpr std::chrono::milliseconds between_lines{2000};

std::string Bar(double done, unsigned width)
{
    const auto filled = static_cast<unsigned>(done * width);
    return std::string("[").append(filled, '#').append(width - filled, '.').append("] ");
}

} // namespace

std::string ReadableSize(double bytes)
{
    constexpr const char *units[] = {"B", "kB", "MB", "GB", "TB", "PB"};
    std::size_t unit = 0;
    for (; bytes >= 999.5 && unit + 1 < std::size(units); ++unit)
        bytes /= 1000;
    char text[32];
    std::snprintf(text, sizeof text, unit > 0 && bytes < 99.95 ? "%.1f %s" : "%.0f %s", bytes, units[unit]);
    return text;
}

std::string ReadableTime(std::chrono::seconds time)
{
    const auto all = static_cast<long long>(time.count());
    char text[48];
    if (all < 3600)
        std::snprintf(text, sizeof text, "%lld:%02lld", all / 60, all % 60);
    else
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", all / 3600, all / 60 % 60, all % 60);
    return text;
}

Progress::Progress(Console &console, std::string verb, std::uint64_t total_files, std::uint64_t total_bytes,
                   Clock::time_point now)
    : m_console(console), m_verb(std::move(verb)), m_total_files(total_files), m_total_bytes(total_bytes), m_start(now),
      m_next(now)
{
    m_console.m_progress = this;
}

Progress::~Progress()
{
    ClearBar();
    m_console.m_progress = nullptr;
}

void Progress::Advance(std::uint64_t files, std::uint64_t bytes, Clock::time_point now)
{
    if (now < m_next)
        return;
    m_next = now + (m_console.columns > 0 ? between_bars : between_lines);
    Draw(files, bytes, now);
}

void Progress::ClearBar()
{
    if (m_bar_shown)
        m_console.err << '\r' << std::string(m_console.columns - 1, ' ') << '\r' << std::flush;
    m_bar_shown = false;
}

void Progress::Finish(std::uint64_t files, std::uint64_t bytes, Clock::time_point now)
{
    Draw(files, bytes, now);
    if (m_bar_shown)
        m_console.err << '\n' << std::flush;
    m_bar_shown = false;
}

void Progress::Draw(std::uint64_t files, std::uint64_t bytes, Clock::time_point now)
{
    // Empty files have no bytes to count.
    const bool by_bytes = m_total_bytes > 0;
    const double total = static_cast<double>(by_bytes ? m_total_bytes : m_total_files);
    const double so_far = static_cast<double>(by_bytes ? bytes : files);
    const double done = total > 0 ? std::min(1.0, so_far / total) : 1.0;
    const double seconds = std::chrono::duration<double>(now - m_start).count();

    std::string text = m_verb + " " + std::to_string(static_cast<int>(done * 100)) + "%, " + std::to_string(files) +
                       " of " + std::to_string(m_total_files) + " files, " + ReadableSize(static_cast<double>(bytes));
    if (seconds > 0 && bytes > 0)
        text += ", " + ReadableSize(static_cast<double>(bytes) / seconds) + "/s";
    if (seconds >= 1 && done > 0 && done < 1) {
        const std::chrono::duration<double> left(seconds * (1 - done) / done);
        text += ", " + ReadableTime(std::chrono::ceil<std::chrono::seconds>(left)) + " left";
    }

    if (m_console.columns == 0) {
        m_console.err << text << '\n' << std::flush;
        return;
    }
    constexpr unsigned widest_bar = 40;
    constexpr unsigned narrowest_bar = 5;
    const std::size_t taken = text.size() + 4; // the bar's brackets, a space, and the last column
    if (m_console.columns >= taken + narrowest_bar)
        text = Bar(done, std::min(widest_bar, static_cast<unsigned>(m_console.columns - taken))).append(text);
    text.resize(m_console.columns - 1, ' ');
    m_console.err << '\r' << text << std::flush;
    m_bar_shown = true;
}

} // namespace kessil::kessilctl
