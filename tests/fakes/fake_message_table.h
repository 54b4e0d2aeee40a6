#pragma once

#include "platform/text.h"

#include <cstddef>
#include <cstdint>
#include <map>

namespace kessil::test {

/// In the place of platform/message_table.h: files of messages. Misuse, such as closing what isn't open, aborts.
/// `fake_message_table = FakeMessageTable()` begins anew.
struct FakeMessageTable
{
    using Messages = std::map<std::uint32_t, WideString>;

    std::map<WideString, Messages> files;
    std::uint32_t open_code = 126; ///< what opening a file that isn't there leaves behind
    std::uint32_t read_code = 317; ///< what asking for a number that isn't there leaves behind
    std::size_t open = 0;          ///< tables open now
};

extern FakeMessageTable fake_message_table;

} // namespace kessil::test
