#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

/// Replaced functions of the system, and the arguments that the platform passed to them. A program with
/// windows_calls.cpp or posix_calls.cpp among its sources calls the fakes there instead of the system's functions. They
/// forward their calls, except during CallsDuring.
namespace kessil::test {

using Calls = std::vector<std::string>;

/// Which calls fail, and with which last error: "open" for the first call of that function, "open 2" for the second.
using Failures = std::map<std::string, std::uint32_t>;

/// Runs `work` and returns what this thread called during it, one text for each call, such as `MapViewOfFile(section,
/// 0x6, 0, 0, 4096)`. Masks and flags are hexadecimal, counts are decimal. Handles and pointers have names, `some`
/// where the value doesn't matter.
Calls CallsDuring(const std::function<void()> &work, const Failures &failures = {});

/// For the fakes: whether the call under way is to be recorded.
bool Recorded();

/// For the fakes: names a pointer until the current recording ends, or permanently when there is none.
void Name(const void *pointer, const std::string &name);

/// For the fakes: adds a call. False when it is to fail; the last error is then set.
bool AddCall(const std::string &function, const std::string &arguments);

std::string Hex(std::uint64_t number);
std::string Text(const std::string &text);
std::string Text(const char *text);
std::string Text(const wchar_t *text);
std::string Text(const void *pointer);

template <class Argument>
std::string AsText(const Argument &argument)
{
    if constexpr (std::is_integral_v<Argument>)
        return std::to_string(argument);
    else
        return Text(argument);
}

/// For the fakes: records a call. False when it is to fail; the last error is then set.
template <class... Arguments>
bool Record(const std::string &function, const Arguments &...arguments)
{
    std::string joined;
    ((joined += (joined.empty() ? "" : ", ") + AsText(arguments)), ...);
    return AddCall(function, joined);
}

} // namespace kessil::test
