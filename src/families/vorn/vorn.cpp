#include "families/vorn/vorn.h"

#include "marshal/handler_call.h"

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
    HandlerCall call(channel, __func__);

    std::uint64_t session = 0;
    const auto target = AsTarget<std::uint32_t(std::uint64_t *)>(function);
    target(&session);

    call.Reply(U64(session));
}

void Process_VornCloseSession(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U64 session;
    if (!call.Read(session))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t)>(function);
    target(session.value);

    call.Succeed();
}

void Process_VornCreateDir(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U64 session;
    if (!call.Read(session))
        return;

    std::uint64_t dir = 0;
    const auto target = AsTarget<std::uint32_t(std::uint64_t, std::uint64_t *)>(function);
    const std::uint32_t result = target(session.value, &dir);

    call.Reply(U64(dir), U32(result));
}

void Process_VornOpenDir(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U64 session, dir;
    STR path;
    if (!call.Read(session, dir, path))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t, std::uint64_t, const char *)>(function);
    const std::uint32_t result = target(session.value, dir.value, path.Text());

    call.Reply(U32(result));
}

void Process_VornGetNextDirItem(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U64 session, dir;
    BUF item;
    if (!call.Read(session, dir, item))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t, std::uint64_t, void *)>(function);
    const std::uint32_t result = target(session.value, dir.value, item.data);

    call.Reply(session, dir, item, U32(result));
}

void Process_VornCloseDir(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U64 session, dir;
    if (!call.Read(session, dir))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t, std::uint64_t)>(function);
    target(session.value, dir.value);

    call.Succeed();
}

void Process_VornCreateFile(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U64 session;
    if (!call.Read(session))
        return;

    std::uint64_t file = 0;
    const auto target = AsTarget<std::uint32_t(std::uint64_t, std::uint64_t *)>(function);
    const std::uint32_t result = target(session.value, &file);

    call.Reply(U64(file), U32(result));
}

void Process_VornOpenFile(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U64 session, file;
    STR path;
    U32 mode;
    if (!call.Read(session, file, path, mode))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t, std::uint64_t, const char *, std::uint32_t)>(function);
    const std::uint32_t result = target(session.value, file.value, path.Text(), mode.value);

    call.Reply(U32(result));
}

void Process_VornReadFile(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U64 session, file;
    BUF block;
    U32 size;
    if (!call.Read(session, file, block, size))
        return;

    std::uint32_t count = 0;
    const auto target =
        AsTarget<std::uint32_t(std::uint64_t, std::uint64_t, void *, std::uint32_t, std::uint32_t *)>(function);
    const std::uint32_t result = target(session.value, file.value, block.data, size.value, &count);

    call.Reply(session, file, block, size, U32(count), U32(result));
}

void Process_VornWriteFile(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U64 session, file;
    IN block;
    U32 size;
    if (!call.Read(session, file, block, size))
        return;

    std::uint32_t count = 0;
    const auto target =
        AsTarget<std::uint32_t(std::uint64_t, std::uint64_t, void *, std::uint32_t, std::uint32_t *)>(function);
    const std::uint32_t result = target(session.value, file.value, block.Data(), size.value, &count);

    call.Reply(U32(count), U32(result));
}

void Process_VornRestoreFile(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U64 session, file;
    if (!call.Read(session, file))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t, std::uint64_t)>(function);
    const std::uint32_t result = target(session.value, file.value);

    call.Reply(U32(result));
}

void Process_VornCloseFile(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U64 session, file;
    if (!call.Read(session, file))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t, std::uint64_t)>(function);
    target(session.value, file.value);

    call.Succeed();
}

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

void Process_GetLibApiVersion(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);

    const auto target = AsTarget<std::uint32_t()>(function);
    const std::uint32_t version = target();

    call.Reply(U32(version == supported_api_version ? version : unsupported_api_version));
}

void Process_GetBackupType(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);

    const auto target = AsTarget<std::uint32_t()>(function);
    const std::uint32_t result = target();

    call.Reply(U32(result));
}

} // namespace kessil
