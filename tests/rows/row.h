#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kessil::test {

/// One row of a family: a call of `function` as a parent makes it, and what comes of it. Bytes are pairs of hexadecimal
/// digits, with blanks where they help the eye. Before the call the section is EE throughout, with the in-list at its
/// start, and an EE in the out-list is a byte that stays as it was.
struct Row
{
    std::string function;
    std::string signature;
    std::vector<std::string> in;   ///< the in-list, one text for each element, its padding included
    std::string script;            ///< what the stand-in library answers, as tests/targets/script.h has it
    std::string recorded;          ///< what the library saw: its line in the record, without the function's name
    std::string out;               ///< the section from its start on after the call; behind that it is as before
    std::u16string input_failure;  ///< empty where nothing is read
    std::u16string output_failure; ///< empty where nothing is written
    std::uint64_t room = 0;        ///< what a section is asked for when the library answers nothing: the out-list's
                                   ///< upper bounds added up
    std::uint64_t grown = 0;       ///< the same when it answers as scripted; 0 where that is no more
    bool writes_section = false;   ///< whether the handler itself writes into the in-list once the library has run
};

/// The row, with what it says as `grown`.
Row Growing(Row row, std::uint64_t grown);

/// "Failed to serialise input (Process_<name>)" and the same for the output: the texts of most rows.
std::u16string InputOf(const std::string &name);
std::u16string OutputOf(const std::string &name);

} // namespace kessil::test
