#pragma once

#include <cstdint>
#include <string>
#include <vector>

// The rows of the virtual-machine adapter. Bytes are pairs of hexadecimal digits, with blanks where they help the eye;
// scripts and records are those of tests/targets/adapter_record.h.

namespace kessil::test {

/// An earlier call, with its arguments in the section, that makes what a row's call works on. It succeeds.
struct Step
{
    std::string function;
    std::string signature;
    std::vector<std::string> in;
    std::string script;
};

/// A call with its arguments in the section, as a parent makes it with the signature, and what comes of it. Before the
/// call the section is EE throughout, with the in-list at its start.
struct AdapterRow
{
    std::string function;
    std::string signature;
    std::vector<Step> before;
    std::vector<std::string> in;   ///< the in-list, one text for each element, its padding included
    std::string script;            ///< what the function does
    std::string error_text;        ///< what GetErrorMessage answers, if it is asked
    std::vector<std::string> seen; ///< what the adapter saw: the record, line by line, that of the steps left out
    std::string frames;            ///< what stands on the pipe ahead of the 'S' frame
    std::string out;               ///< the section from its start on after the call; behind that it is as before

    std::vector<std::string> logged; ///< the handler's log, each record as "<level>: <text>"
    std::u16string input_failure;    ///< empty where nothing is read
    std::u16string error_failure;    ///< what a failing call is answered with first when no adapter is bound; empty
                                     ///< where nobody asks for an error text in this row
    std::u16string output_failure;   ///< empty where nothing is written
    std::uint64_t room = 0;          ///< what a section is asked for that can't be had: the upper bounds of the
                                     ///< out-list's elements added up, 2 more than its characters for a text
};

/// What comes of a command one of whose values can't be read.
struct Cut
{
    std::vector<std::string> seen;
    std::string reply;
};

/// One value of a command, and whether it is a text.
struct Value
{
    std::string bytes;
    bool is_text = false;
};

/// A call by command, with its arguments as bare values on the pipe, and what comes of it.
struct CommandRow
{
    std::string function;
    std::uint8_t command;
    std::string signature;
    std::vector<Step> before;
    std::vector<Value> in;
    std::string script;
    std::string error_text;
    std::vector<std::string> seen;
    std::string reply;               ///< all that comes back
    std::vector<std::string> logged; ///< as in AdapterRow
    std::vector<Cut> cuts;           ///< for each value: what comes of it when that one can't be read
};

/// Values of commands: numbers, and text as its length and its characters.
inline Value Number(const std::string &hex)
{
    return {hex};
}
inline Value Flag(bool set)
{
    return {set ? "00000001" : "00000000"};
}
inline Value Text(const std::string &characters)
{
    static const char digits[] = "0123456789ABCDEF";
    std::string bytes = "000000";
    const auto length = static_cast<unsigned char>(characters.size());
    bytes += {digits[length >> 4], digits[length & 15]};
    for (const char character : characters) {
        const auto byte = static_cast<unsigned char>(character);
        bytes += {digits[byte >> 4], digits[byte & 15]};
    }
    return {bytes, true};
}

/// The same text as an element of the section: its characters and a zero byte.
inline std::string Str(const std::string &characters)
{
    return Text(characters).bytes.substr(8) + "00";
}

/// What a bare answer begins with when the adapter logged nothing, and the answers that say little.
inline const std::string no_log = "FFFFFC19";
inline const std::string status_okay = no_log + "00000001";
inline std::string StatusFailed(const std::string &text)
{
    return no_log + "FFFFFFFF" + Text(text).bytes;
}

/// As many equal cuts as there are values.
inline std::vector<Cut> EachCut(std::size_t values, const Cut &cut)
{
    return std::vector<Cut>(values, cut);
}

/// The record of an error text that was taken, of a record at that address: "null" or as "0x99".
inline std::vector<std::string> ErrorTaken(const std::string &error)
{
    return {"GetErrorMessage error=" + error, "FreeErrorInfo error=" + error};
}

inline std::vector<std::string> operator+(std::vector<std::string> left, const std::vector<std::string> &right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

/// "Failed to serialise input (Process_VADP<name>)" and its like: what most rows say.
inline std::u16string AdapterInput(const std::string &name)
{
    return u"Failed to serialise input (Process_VADP" + std::u16string(name.begin(), name.end()) + u")";
}
inline std::u16string AdapterError(const std::string &name)
{
    return u"Failed to get error message (Process_VADP" + std::u16string(name.begin(), name.end()) + u")";
}
inline std::u16string AdapterOutput(const std::string &name)
{
    return u"Failed to serialise output (Process_VADP" + std::u16string(name.begin(), name.end()) + u")";
}

template <class Row>
std::vector<Row> RowsWithInValues(std::vector<Row> rows)
{
    std::erase_if(rows, [](const Row &row) { return row.in.empty(); });
    return rows;
}

inline std::vector<AdapterRow> RowsWithErrorText(std::vector<AdapterRow> rows)
{
    std::erase_if(rows, [](const AdapterRow &row) { return row.error_failure.empty(); });
    return rows;
}

} // namespace kessil::test
