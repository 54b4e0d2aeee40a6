#include "families/mapi/mapi.h"

#include "marshal/handler_call.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace kessil {
namespace {

// Where the target puts a text. No size goes with the address: the library stays within this room.
using TextRoom = std::array<char16_t, 264>;

WSTR TextIn(const TextRoom &room)
{
    return WSTR(WideString(room.begin(), std::find(room.begin(), room.end(), u'\0')));
}

} // namespace

void Process_MapiCreate(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 unused;
    if (!call.Read(unused))
        return;

    // The handle loses its upper half. The value read is echoed, but the target doesn't get it.
    std::uint64_t mapi = 0;
    const auto target = AsTarget<std::uint32_t(std::uint64_t *)>(function);
    const std::uint32_t result = target(&mapi);

    call.Reply(unused, U32(static_cast<std::uint32_t>(mapi)), U32(result));
}

void Process_MapiDelete(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 mapi;
    if (!call.Read(mapi))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t)>(function);
    const std::uint32_t result = target(mapi.value);

    call.Reply(mapi, U32(result));
}

void Process_MapiRestore(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 mapi;
    WSTR text;
    if (!call.Read(mapi, text))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t, const char16_t *)>(function);
    const std::uint32_t result = target(mapi.value, text.Text());

    call.Reply(mapi, text, U32(result));
}

void Process_MapiFindFolder(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 mapi;
    WSTR name;
    U16 flag;
    if (!call.Read(mapi, name, flag))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t, const char16_t *, std::uint16_t)>(function);
    const std::uint32_t result = target(mapi.value, name.Text(), flag.value);

    call.Reply(mapi, name, flag, U32(result));
}

void Process_MapiOpenFolderSearch(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 mapi;
    if (!call.Read(mapi))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t)>(function);
    const std::uint32_t result = target(mapi.value);

    call.Reply(mapi, U32(result));
}

void Process_MapiGetNextFolder(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 mapi;
    BUF block;
    if (!call.Read(mapi, block))
        return;

    std::uint32_t count = 0;
    const auto target = AsTarget<std::uint32_t(std::uint64_t, void *, std::uint32_t, std::uint32_t *)>(function);
    const std::uint32_t result = target(mapi.value, block.data, block.size, &count);

    call.Reply(mapi, block, U32(count), U32(result));
}

void Process_MapiCloseSearch(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 mapi;
    if (!call.Read(mapi))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t)>(function);
    const std::uint32_t result = target(mapi.value);

    call.Reply(mapi, U32(result));
}

void Process_MapiOpenMailSearch(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 mapi;
    WSTR text1, text2;
    U32 value;
    if (!call.Read(mapi, text1, text2, value))
        return;

    const auto target =
        AsTarget<std::uint32_t(std::uint64_t, const char16_t *, const char16_t *, std::uint32_t)>(function);
    const std::uint32_t result = target(mapi.value, text1.Text(), text2.Text(), value.value);

    call.Reply(mapi, text1, text2, value, U32(result));
}

void Process_MapiGetNextMail(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 mapi;
    if (!call.Read(mapi))
        return;

    TextRoom text1{}, text2{};
    std::uint64_t value1 = 0, value2 = 0, value3 = 0;
    std::uint32_t value4 = 0;
    const auto target = AsTarget<std::uint32_t(std::uint64_t, char16_t *, char16_t *, std::uint64_t *, std::uint64_t *,
                                               std::uint64_t *, std::uint32_t *)>(function);
    const std::uint32_t result = target(mapi.value, text1.data(), text2.data(), &value1, &value2, &value3, &value4);

    call.Reply(mapi, TextIn(text1), TextIn(text2), U64(value1), U64(value2), U64(value3), U32(value4), U32(result));
}

void Process_MapiGetNextMails(CIPCCommunication &channel, void *function)
{
    // The input text names another row.
    HandlerCall call(channel, __func__,
                     {u"Failed to serialise input (Process_MapiGetNextMail)",
                      u"Failed to serialise output (Process_MapiGetNextMails)"});
    U32 mapi;
    BUF block;
    if (!call.Read(mapi, block))
        return;

    std::uint32_t count1 = 0, count2 = 0;
    const auto target =
        AsTarget<std::uint32_t(std::uint64_t, void *, std::uint32_t, std::uint32_t *, std::uint32_t *)>(function);
    const std::uint32_t result = target(mapi.value, block.data, block.size, &count1, &count2);

    call.Reply(mapi, block, U32(count1), U32(count2), U32(result));
}

void Process_MapiReadMail(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 mapi;
    BUF block;
    if (!call.Read(mapi, block))
        return;

    std::uint32_t count = 0;
    const auto target = AsTarget<std::uint32_t(std::uint64_t, void *, std::uint32_t, std::uint32_t *)>(function);
    const std::uint32_t result = target(mapi.value, block.data, block.size, &count);

    call.Reply(mapi, block, U32(count), U32(result));
}

void Process_MapiWriteMail(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 mapi;
    IN block;
    if (!call.Read(mapi, block))
        return;

    std::uint32_t count = 0;
    const auto target = AsTarget<std::uint32_t(std::uint64_t, void *, std::uint32_t, std::uint32_t *)>(function);
    const std::uint32_t result = target(mapi.value, block.Data(), block.Size(), &count);

    call.Reply(mapi, block, U32(count), U32(result));
}

void Process_MapiCloseMail(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 mapi;
    if (!call.Read(mapi))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t)>(function);
    const std::uint32_t result = target(mapi.value);

    call.Reply(mapi, U32(result));
}

void Process_MapiLoginProfile(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 mapi;
    WSTR profile;
    if (!call.Read(mapi, profile))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t, const char16_t *)>(function);
    const std::uint32_t result = target(mapi.value, profile.Text());

    call.Reply(mapi, profile, U32(result));
}

void Process_MapiCreateProfileWithIProfAdmin(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 mapi;
    WSTR text1, text2, text3;
    U32 value;
    if (!call.Read(mapi, text1, text2, text3, value))
        return;

    const auto target =
        AsTarget<std::uint32_t(std::uint64_t, const char16_t *, const char16_t *, const char16_t *, std::uint32_t)>(
            function);
    const std::uint32_t result = target(mapi.value, text1.Text(), text2.Text(), text3.Text(), value.value);

    // The first text and the value are not echoed.
    call.Reply(mapi, text2, text3, U32(result));
}

void Process_MapiDeleteProfile(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 mapi;
    if (!call.Read(mapi))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t)>(function);
    const std::uint32_t result = target(mapi.value);

    call.Reply(mapi, U32(result));
}

void Process_MapiOpenMail(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 mapi;
    WSTR id;
    U16 flag;
    if (!call.Read(mapi, id, flag))
        return;

    TextRoom text1{}, text2{}, text3{}, text4{}, text5{}, text6{}, text7{};
    std::uint16_t value1 = 0, value2 = 0, value3 = 0;
    std::uint32_t value4 = 0;
    const auto target = AsTarget<std::uint32_t(
        std::uint64_t, const char16_t *, std::uint16_t, char16_t *, char16_t *, char16_t *, char16_t *, char16_t *,
        char16_t *, std::uint16_t *, std::uint16_t *, std::uint16_t *, char16_t *, std::uint32_t *)>(function);
    const std::uint32_t result =
        target(mapi.value, id.Text(), flag.value, text1.data(), text2.data(), text3.data(), text4.data(), text5.data(),
               text6.data(), &value1, &value2, &value3, text7.data(), &value4);

    call.Reply(mapi, id, flag, TextIn(text1), TextIn(text2), TextIn(text3), TextIn(text4), TextIn(text5), TextIn(text6),
               U16(value1), U16(value2), U16(value3), TextIn(text7), U32(value4), U32(result));
}

void Process_MapiGetLastError(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 mapi;
    if (!call.Read(mapi))
        return;

    TextRoom text{};
    const auto target = AsTarget<std::uint32_t(std::uint64_t, char16_t *)>(function);
    const std::uint32_t result = target(mapi.value, text.data());

    call.Reply(mapi, TextIn(text), U32(result));
}

void Process_MapiBackupDLLVersion(CIPCCommunication &channel, void *function)
{
    // This row's output text has a z. There is nothing to read, and so no input text.
    HandlerCall call(channel, __func__, {nullptr, u"Failed to serialize output (Process_MapiBackupDLLVersion)"});

    const auto target = AsTarget<std::uint32_t()>(function);
    const std::uint32_t version = target();

    // A constant 0 in the place of the result.
    call.Reply(U32(version), U32(0));
}

void Process_MapiChangeDupID(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 mapi, value;
    WSTR id;
    if (!call.Read(mapi, value, id))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint64_t, std::uint32_t, const char16_t *)>(function);
    const std::uint32_t result = target(mapi.value, value.value, id.Text());

    call.Reply(mapi, value, id, U32(result));
}

} // namespace kessil
