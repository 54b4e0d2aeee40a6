#include "families/mapi/mapi.h"

#include "marshal/row.h"

#include <cstdint>

namespace kessil {
namespace {

// The room that the library counts on for every text.
using MailText = OutText<264>;

} // namespace

// The value read is echoed, but the target doesn't get it.
void Process_MapiCreate(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 unused;
    if (!call.Read(unused))
        return;

    Handle mapi;
    const auto target = AsTarget<std::uint32_t(std::uint64_t *)>(function);
    const std::uint32_t result = target(&mapi.value);

    call.Reply(unused, mapi, U32(result));
}

void Process_MapiDelete(CIPCCommunication &channel, void *function)
{
    Row<U32(Handle mapi)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_MapiRestore(CIPCCommunication &channel, void *function)
{
    Row<U32(Handle mapi, WSTR text)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_MapiFindFolder(CIPCCommunication &channel, void *function)
{
    Row<U32(Handle mapi, WSTR name, U16 flag)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_MapiOpenFolderSearch(CIPCCommunication &channel, void *function)
{
    Row<U32(Handle mapi)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_MapiGetNextFolder(CIPCCommunication &channel, void *function)
{
    Row<U32(Handle mapi, BUF block, Length size, Out<U32> count)>::Run(channel, __func__, function,
                                                                       OutList::EchoAndResults);
}

void Process_MapiCloseSearch(CIPCCommunication &channel, void *function)
{
    Row<U32(Handle mapi)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_MapiOpenMailSearch(CIPCCommunication &channel, void *function)
{
    Row<U32(Handle mapi, WSTR text1, WSTR text2, U32 value)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_MapiGetNextMail(CIPCCommunication &channel, void *function)
{
    Row<U32(Handle mapi, MailText text1, MailText text2, Out<U64> value1, Out<U64> value2, Out<U64> value3,
            Out<U32> value4)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_MapiGetNextMails(CIPCCommunication &channel, void *function)
{
    // The input text names another row.
    Row<U32(Handle mapi, BUF block, Length size, Out<U32> count1, Out<U32> count2)>::Run(
        channel, __func__, function, OutList::EchoAndResults,
        {u"Failed to serialise input (Process_MapiGetNextMail)",
         u"Failed to serialise output (Process_MapiGetNextMails)"});
}

void Process_MapiReadMail(CIPCCommunication &channel, void *function)
{
    Row<U32(Handle mapi, BUF block, Length size, Out<U32> count)>::Run(channel, __func__, function,
                                                                       OutList::EchoAndResults);
}

void Process_MapiWriteMail(CIPCCommunication &channel, void *function)
{
    Row<U32(Handle mapi, IN block, Length size, Out<U32> count)>::Run(channel, __func__, function,
                                                                      OutList::EchoAndResults);
}

void Process_MapiCloseMail(CIPCCommunication &channel, void *function)
{
    Row<U32(Handle mapi)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_MapiLoginProfile(CIPCCommunication &channel, void *function)
{
    Row<U32(Handle mapi, WSTR profile)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

// The first text and the value are not echoed.
void Process_MapiCreateProfileWithIProfAdmin(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    Handle mapi;
    WSTR text1, text2, text3;
    U32 value;
    if (!call.Read(mapi, text1, text2, text3, value))
        return;

    const auto target =
        AsTarget<std::uint32_t(std::uint64_t, const char16_t *, const char16_t *, const char16_t *, std::uint32_t)>(
            function);
    const std::uint32_t result = target(mapi.value, text1.Text(), text2.Text(), text3.Text(), value.value);

    call.Reply(mapi, text2, text3, U32(result));
}

void Process_MapiDeleteProfile(CIPCCommunication &channel, void *function)
{
    Row<U32(Handle mapi)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_MapiOpenMail(CIPCCommunication &channel, void *function)
{
    Row<U32(Handle mapi, WSTR id, U16 flag, MailText text1, MailText text2, MailText text3, MailText text4,
            MailText text5, MailText text6, Out<U16> value1, Out<U16> value2, Out<U16> value3, MailText text7,
            Out<U32> value4)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_MapiGetLastError(CIPCCommunication &channel, void *function)
{
    Row<U32(Handle mapi, MailText text)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

// The target returns the version, and a 0 stands in the place of the result. The output text has a z.
void Process_MapiBackupDLLVersion(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__, {nullptr, u"Failed to serialize output (Process_MapiBackupDLLVersion)"});

    const auto target = AsTarget<std::uint32_t()>(function);
    const std::uint32_t version = target();

    call.Reply(U32(version), U32(0));
}

void Process_MapiChangeDupID(CIPCCommunication &channel, void *function)
{
    Row<U32(Handle mapi, U32 value, WSTR id)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

} // namespace kessil
