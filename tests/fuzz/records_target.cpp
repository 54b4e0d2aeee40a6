#include "channel/records.h"

#include "channel/ipc_communication.h"
#include "fuzz/fuzz_support.h"

#include <algorithm>
#include <memory>

// One byte: which record. Then the payload.

using namespace kessil;
using namespace kessil::test;

namespace {

// What was parsed, put together again, must be what the payload begins with.
void RequirePrefix(const Bytes &parsed, const Bytes &payload)
{
    Require(parsed.size() <= payload.size());
    Require(std::equal(parsed.begin(), parsed.end(), payload.begin()));
}

Bytes Again(const IPCStruct_Auth &record)
{
    return Wide(record.user) + Wide(record.domain) + Wide(record.password) + Wide(record.system_name) +
           Be32(record.logon_flag);
}

Bytes Again(const IPCStruct_ErrDLL &record)
{
    return Be32(record.message_number) + Wide(record.dll_name);
}

Bytes Again(const IPCStruct_FunctionCall &record)
{
    return Wide(record.library) + Narrow(record.function) + Narrow(record.signature);
}

Bytes Again(const IPCStruct_Error &record)
{
    return Be32(static_cast<std::uint32_t>(record.return_code)) +
           Be32(static_cast<std::uint32_t>(record.system_error)) + Wide(record.text);
}

Bytes Again(const IPCStruct_Resize &record)
{
    return Wide(record.name) + Be64(record.size);
}

template <class Record>
void Parse(const unsigned char *exact, const Bytes &payload)
{
    Record record;
    WideString error;
    if (record.Parse(exact, static_cast<std::uint32_t>(payload.size()), error))
        RequirePrefix(Again(record), payload);
    else
        Require(error == u"Failed to serialise data");
}

void ParseStrings(const unsigned char *exact, const Bytes &payload)
{
    const auto size = static_cast<std::uint32_t>(payload.size());
    WideString wide;
    if (const std::uint32_t taken = DeserialiseWideString(wide, exact, size)) {
        Require(taken == 2 * wide.size() + 2);
        RequirePrefix(Wide(wide), payload);
    }
    std::string narrow;
    if (const std::uint32_t taken = DeserialiseString(narrow, exact, size)) {
        Require(taken == narrow.size() + 1);
        RequirePrefix(Narrow(narrow), payload);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    const NoMemoryFrom limit(memory_limit);
    Input input(bytes, size);
    const std::uint8_t kind = input.Byte();
    const Bytes payload = input.Rest();
    // A block of exactly that size, so that a byte read behind it is seen.
    const auto exact = std::make_unique<unsigned char[]>(payload.size());
    std::copy(payload.begin(), payload.end(), exact.get());
    switch (kind % 6) {
    case 0:
        Parse<IPCStruct_FunctionCall>(exact.get(), payload);
        break;
    case 1:
        Parse<IPCStruct_Error>(exact.get(), payload);
        break;
    case 2:
        Parse<IPCStruct_Resize>(exact.get(), payload);
        break;
    case 3:
        Parse<IPCStruct_Auth>(exact.get(), payload);
        break;
    case 4:
        Parse<IPCStruct_ErrDLL>(exact.get(), payload);
        break;
    default:
        ParseStrings(exact.get(), payload);
    }
    return 0;
}
