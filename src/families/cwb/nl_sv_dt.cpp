#include "families/cwb/cwb.h"

#include "marshal/handler_call.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace kessil {

void Process_cwbNL_GetHostCCSID(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    STR system_name;
    if (!call.Read(system_name))
        return;

    std::uint32_t ccsid = 0;
    const auto target = AsTarget<std::uint32_t(const char *, std::uint32_t *)>(function);
    const std::uint32_t result = target(system_name.Text(), &ccsid);

    call.Reply(U32(ccsid), U32(result));
}

void Process_cwbNL_CCSIDToCodePage(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 ccsid, err_handle;
    if (!call.Read(ccsid, err_handle))
        return;

    std::uint32_t code_page = 0;
    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t *, std::uint32_t)>(function);
    const std::uint32_t result = target(ccsid.value, &code_page, err_handle.value);

    call.Reply(U32(code_page), U32(result));
}

void Process_cwbNL_CodePageToCCSID(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 code_page, err_handle;
    if (!call.Read(code_page, err_handle))
        return;

    std::uint32_t ccsid = 0;
    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t *, std::uint32_t)>(function);
    const std::uint32_t result = target(code_page.value, &ccsid, err_handle.value);

    // Parents get their own code page back: the CCSID that the target filled in is not sent.
    call.Reply(code_page, U32(result));
}

void Process_cwbNL_GetCodePage(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 err_handle;
    if (!call.Read(err_handle))
        return;

    std::uint32_t code_page = 0;
    const auto target = AsTarget<std::uint32_t(std::uint32_t *, std::uint32_t)>(function);
    const std::uint32_t result = target(&code_page, err_handle.value);

    call.Reply(U32(code_page), U32(result));
}

void Process_cwbNL_CreateConverter(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 source_ccsid, target_ccsid, err_handle, shift_mode, pad_length;
    STR pad;
    if (!call.Read(source_ccsid, target_ccsid, err_handle, shift_mode, pad_length, pad))
        return;

    std::uint32_t converter = 0;
    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t, std::uint32_t *, std::uint32_t,
                                               std::uint32_t, std::uint32_t, const char *)>(function);
    const std::uint32_t result = target(source_ccsid.value, target_ccsid.value, &converter, err_handle.value,
                                        shift_mode.value, pad_length.value, pad.Text());

    call.Reply(U32(converter), U32(result));
}

void Process_cwbNL_DeleteConverter(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 converter, err_handle;
    if (!call.Read(converter, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result = target(converter.value, err_handle.value);

    call.Reply(U32(result));
}

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

    // The source goes back too, so that the destination falls where the target wrote.
    call.Reply(converter, source, destination, U32(out1), U32(out2), U32(out3), U32(result));
}

void Process_cwbNL_GetANSICodePage(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 err_handle;
    if (!call.Read(err_handle))
        return;

    std::uint32_t code_page = 0;
    const auto target = AsTarget<std::uint32_t(std::uint32_t *, std::uint32_t)>(function);
    const std::uint32_t result = target(&code_page, err_handle.value);

    call.Reply(U32(code_page), U32(result));
}

void Process_cwbSV_CreateErrHandle(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);

    std::uint32_t err_handle = 0;
    const auto target = AsTarget<std::uint32_t(std::uint32_t *)>(function);
    const std::uint32_t result = target(&err_handle);

    call.Reply(U32(err_handle), U32(result));
}

void Process_cwbSV_DeleteErrHandle(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 err_handle;
    if (!call.Read(err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t)>(function);
    const std::uint32_t result = target(err_handle.value);

    call.Reply(U32(result));
}

void Process_cwbSV_GetErrCount(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 err_handle;
    if (!call.Read(err_handle))
        return;

    std::uint32_t count = 0;
    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t *)>(function);
    const std::uint32_t result = target(err_handle.value, &count);

    call.Reply(U32(count), U32(result));
}

void Process_cwbSV_GetErrTextIndexed(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 err_handle, index;
    BUF text;
    if (!call.Read(err_handle, index, text))
        return;

    std::uint32_t needed = 0;
    const auto target =
        AsTarget<std::uint32_t(std::uint32_t, std::uint32_t, unsigned char *, std::uint32_t, std::uint32_t *)>(
            function);
    const std::uint32_t result = target(err_handle.value, index.value, text.data, text.size, &needed);

    call.Reply(err_handle, index, text, U32(needed), U32(result));
}

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
    HandlerCall call(channel, __func__);
    IN source;
    U32 position;
    if (!call.Read(source, position))
        return;

    // The target isn't told how much room it has.
    std::array<char16_t, 256> text = {};
    const auto target = AsTarget<std::uint32_t(char16_t *, unsigned char *, std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result = target(text.data(), source.Data(), source.Size(), position.value);

    call.Reply(WSTR(WideString(text.begin(), std::find(text.begin(), text.end(), u'\0'))), U32(result));
}

} // namespace kessil
