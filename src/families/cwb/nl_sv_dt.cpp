#include "families/cwb/cwb.h"

#include "marshal/row.h"

#include <cstdint>

namespace kessil {

void Process_cwbNL_GetHostCCSID(CIPCCommunication &channel, void *function)
{
    Row<U32(STR system_name, Out<U32> ccsid)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbNL_CCSIDToCodePage(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 ccsid, Out<U32> code_page, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

// The CCSID that the target fills in is not sent: parents get their own code page back.
void Process_cwbNL_CodePageToCCSID(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 code_page, err_handle;
    if (!call.Read(code_page, err_handle))
        return;

    std::uint32_t ccsid = 0;
    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t *, std::uint32_t)>(function);
    const std::uint32_t result = target(code_page.value, &ccsid, err_handle.value);

    call.Reply(code_page, U32(result));
}

void Process_cwbNL_GetCodePage(CIPCCommunication &channel, void *function)
{
    Row<U32(Out<U32> code_page, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbNL_CreateConverter(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 source_ccsid, U32 target_ccsid, Out<U32> converter, U32 err_handle, U32 shift_mode, U32 pad_length,
            STR pad)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbNL_DeleteConverter(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 converter, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

// The target's arguments have an order of their own, and the error handle is not echoed.
void Process_cwbNL_Convert(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 converter;
    IN source;
    BUF destination;
    U32 err_handle;
    if (!call.Read(converter, source, destination, err_handle))
        return;

    std::uint32_t out1 = 0;
    std::uint32_t out2 = 0;
    std::uint32_t out3 = 0;
    const auto target =
        AsTarget<std::uint32_t(std::uint32_t, std::uint32_t, std::uint32_t, unsigned char *, unsigned char *,
                               std::uint32_t *, std::uint32_t *, std::uint32_t *, std::uint32_t)>(function);
    const std::uint32_t result = target(converter.value, source.Size(), destination.size, source.Data(),
                                        destination.data, &out1, &out2, &out3, err_handle.value);

    // With the source in front of it, the destination comes to lie where the target wrote.
    call.Reply(converter, source, destination, U32(out1), U32(out2), U32(out3), U32(result));
}

void Process_cwbNL_GetANSICodePage(CIPCCommunication &channel, void *function)
{
    Row<U32(Out<U32> code_page, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbSV_CreateErrHandle(CIPCCommunication &channel, void *function)
{
    Row<U32(Out<U32> err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbSV_DeleteErrHandle(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbSV_GetErrCount(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 err_handle, Out<U32> count)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbSV_GetErrTextIndexed(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 err_handle, U32 index, BUF text, Length size, Out<U32> needed)>::Run(channel, __func__, function,
                                                                                     OutList::EchoAndResults);
}

// The target's arguments have an order of their own.
void Process_cwbDT_StringToPacked(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    WSTR source;
    BUF destination;
    U32 position;
    if (!call.Read(source, destination, position))
        return;

    const auto target =
        AsTarget<std::uint32_t(unsigned char *, const char16_t *, std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result = target(destination.data, source.Text(), destination.size, position.value);

    call.Reply(source, destination, U32(result));
}

void Process_cwbDT_PackedToString(CIPCCommunication &channel, void *function)
{
    Row<U32(OutText<256> text, IN source, Length size, U32 position)>::Run(channel, __func__, function,
                                                                           OutList::Results);
}

} // namespace kessil
