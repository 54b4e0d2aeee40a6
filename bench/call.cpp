#include "bench/call.h"

#include "bench/work.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

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

constexpr Value length = {4, the_length};
constexpr Value success = {4, 0};

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
};

} // namespace

const Call &CallOf(std::string_view function)
{
    const auto found =
        std::find_if(calls.begin(), calls.end(), [&](const Call &call) { return call.function == function; });
    if (found == calls.end())
        throw std::out_of_range("no such call is measured");
    return *found;
}

std::uint32_t BlockOffset(const Call &call)
{
    return (SizeOf(call.front) + 4 + 7) / 8 * 8;
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
        std::uint32_t rest = number == the_length ? block_size : number;
        for (std::uint32_t at = bytes; at > 0; rest >>= 8)
            place[--at] = static_cast<unsigned char>(rest);
        place += bytes;
    }
}

} // namespace kessil::bench
