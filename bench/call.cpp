#include "bench/call.h"

#include "bench/work.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace kessil::bench {
namespace {

template <class Function>
Function *As(void *function)
{
    return reinterpret_cast<Function *>(function);
}

void CallAnswer(void *function, unsigned char * /*block*/, std::uint32_t /*size*/)
{
    As<std::uint32_t()>(function)();
}

void CallOnTwo(void *function, unsigned char *block, std::uint32_t size)
{
    std::uint32_t count = 0;
    As<std::uint32_t(std::uint64_t, std::uint64_t, void *, std::uint32_t, std::uint32_t *)>(function)(1, 2, block, size,
                                                                                                      &count);
}

void CallOnOne(void *function, unsigned char *block, std::uint32_t size)
{
    std::uint32_t count = 0;
    As<std::uint32_t(std::uint64_t, void *, std::uint32_t, std::uint32_t *)>(function)(1, block, size, &count);
}

void CallForPointer(void *function, unsigned char *block, std::uint32_t size)
{
    const unsigned char *pointer = nullptr;
    As<std::uint32_t(std::uint32_t, const unsigned char **, std::uint32_t)>(function)(1, &pointer, 2);
    std::memcpy(block, pointer, size);
}

// No byte of it is 0, so that the results show that they replaced it.
constexpr std::uint32_t first_sector = 0x01020304;

void CallOnSectors(void *function, unsigned char *block, std::uint32_t size)
{
    void *error = nullptr;
    As<bool(void *, std::uint64_t, std::uint64_t, void *, void **)>(function)(nullptr, first_sector, size / sector_size,
                                                                              block, &error);
}

// The handler's block, filled with zeros, is the one that the library reads into, or that was filled from the pipe.
void CallByCommand(void *function, unsigned char * /*block*/, std::uint32_t size)
{
    std::vector<unsigned char> data(size);
    CallOnSectors(function, data.data(), size);
}

constexpr Value length = {4, the_length};
constexpr Value success = {4, 0};
constexpr Value no_text = {1, 0};

constexpr std::array calls = {
    Call{"GetBackupType", "SIGNATURE_GetBackupType", Work::Answer, {}, {}, {{{4, backup_type}}}, CallAnswer},
    Call{"VornReadFile",
         "SIGNATURE_VornReadFile",
         Work::Read,
         {{{8, 1}, {8, 2}}},
         {{length}},
         {{length, length, success}},
         CallOnTwo},
    Call{"VornWriteFile",
         "SIGNATURE_VornWriteFile",
         Work::Write,
         {{{8, 1}, {8, 2}}},
         {{length}},
         {{length, success}},
         CallOnTwo},
    Call{"HrESEBackupReadFile",
         "SIGNATURE_ESE_BACKUP_READ_FILE",
         Work::Read,
         {{{4, 1}, {4, 2}}},
         {},
         {{length, success, {4, 0}}},
         CallOnTwo},
    Call{"MapiReadMail", "SIGNATURE_MapiReadMail", Work::Read, {{{4, 1}}}, {}, {{length, success}}, CallOnOne},
    Call{"cwbDB_GetDataPointer",
         "SIGNATURE_CWBDB_GETDATAPOINTER",
         Work::Read,
         {{{4, 1}}},
         {{{4, 2}}},
         {{success}},
         CallForPointer},
    // The out-list begins with the buffer, which is therefore 8 bytes before the place that the data was read to. With
    // spare bytes the text comes after the data, and not inside it.
    Call{"ReadSectors",
         "SIGNATURE_VADPReadSectors",
         Work::Read,
         {{{4, first_sector}, {4, the_sectors}}},
         {},
         {{no_text}},
         CallOnSectors,
         {{length}},
         8,
         57,
         CallByCommand},
    Call{"WriteSectors",
         "SIGNATURE_VADPWriteSectors",
         Work::Write,
         {{{4, first_sector}, {4, the_sectors}}},
         {},
         {{no_text}},
         CallOnSectors,
         {},
         0,
         58,
         CallByCommand},
};

} // namespace

const Call &CallOf(std::string_view function)
{
    const auto found =
        std::find_if(calls.begin(), calls.end(), [&](const Call &call) { return call.function == function; });
    if (found == calls.end())
        throw std::out_of_range("this call is not measured");
    return *found;
}

std::uint32_t BlockOffset(const Call &call)
{
    return (SizeOf(call.front) + 4 + 7) / 8 * 8;
}

std::uint32_t BufferSize(const Call &call, std::uint32_t block_size)
{
    return block_size + call.spare;
}

std::uint32_t ResultsOffset(const Call &call, std::uint32_t block_size)
{
    return call.work == Work::Read ? BlockOffset(call) + block_size : 0;
}

std::uint32_t SizeOf(const Values &values)
{
    std::uint32_t size = 0;
    for (const Value &value : values)
        size += value.bytes;
    return size;
}

void Store(unsigned char *place, const Values &values, std::uint32_t block_size)
{
    for (const auto &[bytes, number] : values) {
        std::uint32_t rest = number;
        if (number == the_length)
            rest = block_size;
        else if (number == the_sectors)
            rest = block_size / sector_size;
        for (std::uint32_t at = bytes; at > 0; rest >>= 8)
            place[--at] = static_cast<unsigned char>(rest);
        place += bytes;
    }
}

std::uint32_t RequestSize(const Call &call, std::uint32_t block_size)
{
    return request_head + (call.work == Work::Write ? block_size : 0);
}

std::uint32_t ReplySize(const Call &call, std::uint32_t block_size)
{
    return reply_head + (call.work == Work::Read ? block_size : 0);
}

// A read sends an empty block.
void StoreRequestHead(unsigned char *place, const Call &call, std::uint32_t block_size)
{
    place[0] = 'f';
    place[1] = call.command;
    Store(place + 2, {{{8, first_sector}, {8, the_sectors}, {4, call.work == Work::Write ? the_length : 0}}},
          block_size);
}

// The end of the log lines, of which there are none, and the block's length or a success.
void StoreReplyHead(unsigned char *place, const Call &call, std::uint32_t block_size)
{
    constexpr std::uint32_t end_of_log = static_cast<std::uint32_t>(-999);
    Store(place, {{{4, end_of_log}, {4, call.work == Work::Read ? the_length : 1}}}, block_size);
}

} // namespace kessil::bench
