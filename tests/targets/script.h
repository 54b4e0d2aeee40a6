#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

/// What a scripted function does when it is called. Values that the script doesn't give are left alone.
struct Behaviour
{
    std::optional<std::uint64_t> result; ///< the return value
    std::optional<std::uint64_t> out;    ///< stored through the pointer to the out-value
    std::string fill;                    ///< bytes stored at the start of the data area
    std::uint64_t count_up = 0;          ///< as many bytes stored there instead: 0, 1, ... 255, 0, 1, ...
    std::optional<std::uint64_t> peek;   ///< how many bytes of the data area may be looked at
    std::optional<std::string> text;     ///< the error text; none means a null pointer

    std::map<std::string, std::string> words; ///< all of them but `text`, as they stand

    /// Any other word by its key: as a number in C notation, as pairs of hexadecimal digits, or as text in which `\xHH`
    /// stands for a byte. None where the script doesn't give it.
    std::optional<std::uint64_t> NumberOf(const std::string &key) const;
    std::optional<std::string> BytesOf(const std::string &key) const;
    std::optional<std::string> TextOf(const std::string &key) const;
};

/// The words of one line, the function's name left out.
Behaviour ParseBehaviour(const std::string &line);

/// The behaviour for this call of `function`, from the file that the environment variable KESSIL_SCRIPT names.
///
/// One line of the file is one call: the function's name, then `key=value` words. `result`, `out`, `count_up` and
/// `peek` take a number in C notation, `fill` takes pairs of hexadecimal digits, and `text`, always last, takes the
/// rest of the line. The first call of a function follows its first line, the second call its second line, and calls
/// beyond the last line follow the last one. A function without a line, or no file, gives a Behaviour without values.
/// A file whose text has changed since the last call is a new script, and begins anew.
Behaviour NextBehaviour(const std::string &function);
