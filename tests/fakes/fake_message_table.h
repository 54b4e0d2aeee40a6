#pragma once

#include "platform/text.h"

#include <cstddef>
#include <cstdint>
#include <map>

namespace kessil::test {

/// Replaces platform/message_table.h: files of messages. Misuse, such as closing a table that isn't open, aborts.
/// `fake_message_table = FakeMessageTable()` resets it.
struct FakeMessageTable
{
    using Messages = std::map<std::uint32_t, WideString>;

    std::map<WideString, Messages> files;
    std::uint32_t open_code = 126; ///< the last error after opening a file that doesn't exist
    std::uint32_t read_code = 317; ///< the last error after reading a number that doesn't exist
    std::size_t open = 0;          ///< tables open now
};

extern FakeMessageTable fake_message_table;

} // namespace kessil::test
