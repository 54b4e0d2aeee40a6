#include "recorded_calls.h"

#include "platform/last_error.h"
#include "platform/thread.h"

#include <cstdio>

namespace kessil::test {

namespace {

using Names = std::map<const void *, std::string>;

struct Recording
{
    Calls calls;
    Failures failures;
    std::map<std::string, int> counts;
    Names names;
};

Recording *g_recording = nullptr;
std::uint32_t g_recorded_thread = 0;

Names &LastingNames()
{
    static Names names;
    return names;
}

template <class Unit>
std::string Quoted(const Unit *text)
{
    if (!text)
        return "null";
    std::string narrow = "\"";
    for (; *text; ++text)
        narrow += static_cast<char>(*text);
    return narrow + "\"";
}

} // namespace

Calls CallsDuring(const std::function<void()> &work, const Failures &failures)
{
    Recording recording;
    recording.failures = failures;
    g_recorded_thread = platform::CurrentThreadId();
    g_recording = &recording;
    work();
    g_recording = nullptr;
    return recording.calls;
}

bool Recorded()
{
    return g_recording && platform::CurrentThreadId() == g_recorded_thread;
}

void Name(const void *pointer, const std::string &name)
{
    (g_recording ? g_recording->names : LastingNames())[pointer] = name;
}

bool AddCall(const std::string &function, const std::string &arguments)
{
    g_recording->calls.push_back(function + "(" + arguments + ")");
    const int count = ++g_recording->counts[function];
    const auto failure = g_recording->failures.find(count == 1 ? function : function + " " + std::to_string(count));
    if (failure == g_recording->failures.end())
        return true;
    platform::SetLastError(failure->second);
    return false;
}

std::string Hex(std::uint64_t number)
{
    char text[32];
    std::snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(number));
    return text;
}

std::string Text(const std::string &text)
{
    return text;
}

std::string Text(const char *text)
{
    return Quoted(text);
}

std::string Text(const wchar_t *text)
{
    return Quoted(text);
}

std::string Text(const void *pointer)
{
    if (!pointer)
        return "null";
    if (reinterpret_cast<std::intptr_t>(pointer) == -1)
        return "invalid";
    for (const Names *names : {&g_recording->names, &LastingNames()}) {
        const auto found = names->find(pointer);
        if (found != names->end())
            return found->second;
    }
    return "some";
}

} // namespace kessil::test
