#pragma once

#include "script.h"

#include <cstddef>
#include <cstdint>
#include <string>

/// One call of a scripted function while it runs: collects what it was called with in one line of the record, and knows
/// what the script has it answer. The line is the function's name and ` name=value` for each argument.
class RecordedCall
{
public:
    explicit RecordedCall(const char *function) : m_line(function), m_behaviour(NextBehaviour(function)) {}

    RecordedCall &Number(const char *name, std::uint64_t value); ///< decimal
    RecordedCall &Handle(const char *name, std::uint64_t value); ///< hexadecimal behind 0x
    RecordedCall &Pointer(const char *name, const void *value);  ///< `null` or `some`

    /// In quotes, or `null`. Every byte outside printable ASCII, and `"` and `\`, is \xHH; a wide unit is \uHHHH.
    RecordedCall &Text(const char *name, const char *value);
    RecordedCall &WideText(const char *name, const char16_t *value);

    /// Pairs of hexadecimal digits, or `null`.
    RecordedCall &Data(const char *name, const void *data, std::size_t size);

    /// In a form of the library's own.
    RecordedCall &Word(const char *name, const std::string &value);

    /// Writes the line, before the function does anything else.
    RecordedCall &Done();

    /// What the script has it return: 0 where it says nothing.
    std::uint64_t Result() const { return m_behaviour.result.value_or(0); }
    std::uint32_t Result32() const { return static_cast<std::uint32_t>(Result()); }

    /// Stores the number that the script has under that name, or leaves the value alone.
    template <class T>
    void Out(const char *name, T *out) const
    {
        if (const auto number = m_behaviour.NumberOf(name))
            *out = static_cast<T>(*number);
    }

    /// Stores the bytes that the script has under that name at the start of `data`, or leaves it alone.
    void Fill(const char *name, void *data) const;

    const Behaviour &Script() const { return m_behaviour; }

private:
    std::string m_line;
    Behaviour m_behaviour;
};
