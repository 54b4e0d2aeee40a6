#include "families/vorn/vorn.h"

#include "marshal/row.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace kessil {
namespace {

constexpr std::uint32_t supported_api_version = 2;
constexpr std::uint32_t unsupported_api_version = 0xFFFFFFFF;

// Stores the text as strncpy with the limit `size` would, which pads with zeros, and a zero byte at `size` - 1. The
// limit may pass the element's length, but what would lie behind the section, `room` bytes from `data` on, is left
// out. A limit of 0 puts the zero byte 4 GiB away: the run ends as that store's fault would end it.
void StoreErrorText(unsigned char *data, std::uint32_t room, const char *text, std::uint32_t size)
{
    if (size == 0)
        throw std::out_of_range("an error text needs room for its terminator");
    const std::uint32_t limit = std::min(size, room);
    std::size_t length = 0;
    while (length < limit && text[length] != '\0')
        ++length;
    std::memcpy(data, text, length);
    std::memset(data + length, 0, limit - length);
    if (size <= room)
        data[size - 1] = 0;
}

} // namespace

void Process_VornCreateSession(CIPCCommunication &channel, void *function)
{
    Row<Ignored<U32>(Out<U64> session)>::Run(channel, __func__, function, OutList::Results);
}

void Process_VornCloseSession(CIPCCommunication &channel, void *function)
{
    Row<Ignored<U32>(U64 session)>::Run(channel, __func__, function, OutList::Results);
}

void Process_VornCreateDir(CIPCCommunication &channel, void *function)
{
    Row<U32(U64 session, Out<U64> dir)>::Run(channel, __func__, function, OutList::Results);
}

void Process_VornOpenDir(CIPCCommunication &channel, void *function)
{
    Row<U32(U64 session, U64 dir, STR path)>::Run(channel, __func__, function, OutList::Results);
}

void Process_VornGetNextDirItem(CIPCCommunication &channel, void *function)
{
    Row<U32(U64 session, U64 dir, BUF item)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_VornCloseDir(CIPCCommunication &channel, void *function)
{
    Row<Ignored<U32>(U64 session, U64 dir)>::Run(channel, __func__, function, OutList::Results);
}

void Process_VornCreateFile(CIPCCommunication &channel, void *function)
{
    Row<U32(U64 session, Out<U64> file)>::Run(channel, __func__, function, OutList::Results);
}

void Process_VornOpenFile(CIPCCommunication &channel, void *function)
{
    Row<U32(U64 session, U64 file, STR path, U32 mode)>::Run(channel, __func__, function, OutList::Results);
}

void Process_VornReadFile(CIPCCommunication &channel, void *function)
{
    Row<U32(U64 session, U64 file, BUF block, U32 size, Out<U32> count)>::Run(channel, __func__, function,
                                                                              OutList::EchoAndResults);
}

void Process_VornWriteFile(CIPCCommunication &channel, void *function)
{
    Row<U32(U64 session, U64 file, IN block, U32 size, Out<U32> count)>::Run(channel, __func__, function,
                                                                             OutList::Results);
}

void Process_VornRestoreFile(CIPCCommunication &channel, void *function)
{
    Row<U32(U64 session, U64 file)>::Run(channel, __func__, function, OutList::Results);
}

void Process_VornCloseFile(CIPCCommunication &channel, void *function)
{
    Row<Ignored<U32>(U64 session, U64 file)>::Run(channel, __func__, function, OutList::Results);
}

// The target returns the text, which is copied into the BUF.
void Process_VornGetErrorText(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U64 session, object;
    U32 code;
    BUF text;
    U32 size;
    if (!call.Read(session, object, code, text, size))
        return;

    const auto target = AsTarget<const char *(std::uint64_t, std::uint64_t, std::uint32_t)>(function);
    const char *const message = target(session.value, object.value, code.value);

    const auto offset = static_cast<std::uint32_t>(text.data - channel.SharedView());
    const std::uint32_t room = channel.SharedSize() - offset;
    if (message != nullptr)
        StoreErrorText(text.data, room, message, size.value);
    else
        StoreErrorText(text.data, room, "", 1);

    call.Reply(session, object, code, text, size);
}

// What the target returns is not what the parent gets.
void Process_GetLibApiVersion(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);

    const auto target = AsTarget<std::uint32_t()>(function);
    const std::uint32_t version = target();

    call.Reply(U32(version == supported_api_version ? version : unsupported_api_version));
}

void Process_GetBackupType(CIPCCommunication &channel, void *function)
{
    Row<U32()>::Run(channel, __func__, function, OutList::Results);
}

} // namespace kessil
