#include "fakes/fake_message_table.h"

#include "fakes/call_log.h"
#include "platform/last_error.h"
#include "platform/message_table.h"

#include <cstdlib>
#include <string>

namespace kessil {
namespace test {

FakeMessageTable fake_message_table;

} // namespace test

namespace platform {

using test::fake_message_table;

MessageTable OpenMessageTable(const WideString &file)
{
    test::call_log.Add("OpenMessageTable " + ToUtf8(file));
    const auto found = fake_message_table.files.find(file);
    if (found == fake_message_table.files.end()) {
        SetLastError(fake_message_table.open_code);
        return nullptr;
    }
    ++fake_message_table.open;
    return &found->second;
}

bool ReadMessage(MessageTable table, std::uint32_t number, WideString &text)
{
    test::call_log.Add("ReadMessage " + std::to_string(number));
    const auto &messages = *static_cast<test::FakeMessageTable::Messages *>(table);
    const auto found = messages.find(number);
    if (found == messages.end()) {
        SetLastError(fake_message_table.read_code);
        return false;
    }
    text = found->second;
    return true;
}

void CloseMessageTable(MessageTable /*table*/)
{
    test::call_log.Add("CloseMessageTable");
    if (fake_message_table.open-- == 0)
        std::abort();
}

} // namespace platform
} // namespace kessil
