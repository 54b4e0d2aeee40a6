#pragma once

#include <cstdint>
#include <iosfwd>
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
Value Number(const std::string &hex);
Value Flag(bool set);
Value Text(const std::string &characters);

/// The same text as an element of the section: its characters and a zero byte.
std::string Str(const std::string &characters);

/// What a bare answer begins with when the adapter logged nothing, and the answers that consist of a status.
inline const std::string no_log = "FFFFFC19";
inline const std::string status_okay = no_log + "00000001";
std::string StatusFailed(const std::string &text);

/// As many equal cuts as there are values.
std::vector<Cut> EachCut(std::size_t values, const Cut &cut);

/// The record of an error text that was taken, of a record at that address: "null" or as "0x99".
std::vector<std::string> ErrorTaken(const std::string &error);

std::vector<std::string> operator+(std::vector<std::string> left, const std::vector<std::string> &right);

/// How a failed test names the row.
void PrintTo(const AdapterRow &row, std::ostream *out);
void PrintTo(const CommandRow &row, std::ostream *out);

/// "Failed to serialise input (Process_VADP<name>)" and so on: the texts of most rows.
std::u16string AdapterInput(const std::string &name);
std::u16string AdapterError(const std::string &name);
std::u16string AdapterOutput(const std::string &name);

} // namespace kessil::test
