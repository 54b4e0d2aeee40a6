#include "mapi_recorder.h"

#include "recorded_call.h"

namespace {

RecordedCall On(const char *function, std::uint64_t mapi)
{
    RecordedCall call(function);
    call.Handle("mapi", mapi);
    return call;
}

std::uint32_t Answer(const char *function, std::uint64_t mapi)
{
    return On(function, mapi).Done().Result32();
}

std::uint32_t FillBlock(const char *function, std::uint64_t mapi, void *block, std::uint32_t length,
                        std::uint32_t *count)
{
    const RecordedCall call = On(function, mapi).Data("block", block, length).Number("length", length).Done();
    call.Fill("block", block);
    call.Out("count", count);
    return call.Result32();
}

} // namespace

std::uint32_t MapiCreate(std::uint64_t *mapi)
{
    // What the word holds beforehand is part of the agreement.
    const RecordedCall call = RecordedCall("MapiCreate").Handle("before", *mapi).Done();
    call.Out("mapi", mapi);
    return call.Result32();
}

std::uint32_t MapiDelete(std::uint64_t mapi)
{
    return Answer("MapiDelete", mapi);
}

std::uint32_t MapiRestore(std::uint64_t mapi, const char16_t *text)
{
    return On("MapiRestore", mapi).WideText("text", text).Done().Result32();
}

std::uint32_t MapiFindFolder(std::uint64_t mapi, const char16_t *name, std::uint16_t flag)
{
    return On("MapiFindFolder", mapi).WideText("name", name).Number("flag", flag).Done().Result32();
}

std::uint32_t MapiOpenFolderSearch(std::uint64_t mapi)
{
    return Answer("MapiOpenFolderSearch", mapi);
}

std::uint32_t MapiGetNextFolder(std::uint64_t mapi, void *block, std::uint32_t length, std::uint32_t *count)
{
    return FillBlock("MapiGetNextFolder", mapi, block, length, count);
}

std::uint32_t MapiCloseSearch(std::uint64_t mapi)
{
    return Answer("MapiCloseSearch", mapi);
}

std::uint32_t MapiOpenMailSearch(std::uint64_t mapi, const char16_t *text1, const char16_t *text2, std::uint32_t value)
{
    return On("MapiOpenMailSearch", mapi)
        .WideText("text1", text1)
        .WideText("text2", text2)
        .Number("value", value)
        .Done()
        .Result32();
}

std::uint32_t MapiGetNextMail(std::uint64_t mapi, char16_t *text1, char16_t *text2, std::uint64_t *value1,
                              std::uint64_t *value2, std::uint64_t *value3, std::uint32_t *value4)
{
    const RecordedCall call = On("MapiGetNextMail", mapi).Done();
    call.Fill("text1", text1);
    call.Fill("text2", text2);
    call.Out("value1", value1);
    call.Out("value2", value2);
    call.Out("value3", value3);
    call.Out("value4", value4);
    return call.Result32();
}

std::uint32_t MapiGetNextMails(std::uint64_t mapi, void *block, std::uint32_t length, std::uint32_t *count1,
                               std::uint32_t *count2)
{
    const RecordedCall call = On("MapiGetNextMails", mapi).Data("block", block, length).Number("length", length).Done();
    call.Fill("block", block);
    call.Out("count1", count1);
    call.Out("count2", count2);
    return call.Result32();
}

std::uint32_t MapiReadMail(std::uint64_t mapi, void *block, std::uint32_t length, std::uint32_t *count)
{
    return FillBlock("MapiReadMail", mapi, block, length, count);
}

std::uint32_t MapiWriteMail(std::uint64_t mapi, const void *block, std::uint32_t length, std::uint32_t *count)
{
    const RecordedCall call = On("MapiWriteMail", mapi).Data("block", block, length).Number("length", length).Done();
    call.Out("count", count);
    return call.Result32();
}

std::uint32_t MapiCloseMail(std::uint64_t mapi)
{
    return Answer("MapiCloseMail", mapi);
}

std::uint32_t MapiLoginProfile(std::uint64_t mapi, const char16_t *profile)
{
    return On("MapiLoginProfile", mapi).WideText("profile", profile).Done().Result32();
}

std::uint32_t MapiCreateProfileWithIProfAdmin(std::uint64_t mapi, const char16_t *text1, const char16_t *text2,
                                              const char16_t *text3, std::uint32_t value)
{
    return On("MapiCreateProfileWithIProfAdmin", mapi)
        .WideText("text1", text1)
        .WideText("text2", text2)
        .WideText("text3", text3)
        .Number("value", value)
        .Done()
        .Result32();
}

std::uint32_t MapiDeleteProfile(std::uint64_t mapi)
{
    return Answer("MapiDeleteProfile", mapi);
}

std::uint32_t MapiOpenMail(std::uint64_t mapi, const char16_t *id, std::uint16_t flag, char16_t *text1, char16_t *text2,
                           char16_t *text3, char16_t *text4, char16_t *text5, char16_t *text6, std::uint16_t *value1,
                           std::uint16_t *value2, std::uint16_t *value3, char16_t *text7, std::uint32_t *value4)
{
    const RecordedCall call = On("MapiOpenMail", mapi).WideText("id", id).Number("flag", flag).Done();
    call.Fill("text1", text1);
    call.Fill("text2", text2);
    call.Fill("text3", text3);
    call.Fill("text4", text4);
    call.Fill("text5", text5);
    call.Fill("text6", text6);
    call.Out("value1", value1);
    call.Out("value2", value2);
    call.Out("value3", value3);
    call.Fill("text7", text7);
    call.Out("value4", value4);
    return call.Result32();
}

std::uint32_t MapiGetLastError(std::uint64_t mapi, char16_t *text1)
{
    const RecordedCall call = On("MapiGetLastError", mapi).Done();
    call.Fill("text1", text1);
    return call.Result32();
}

std::uint32_t MapiBackupDLLVersion()
{
    return RecordedCall("MapiBackupDLLVersion").Done().Result32();
}

std::uint32_t MapiChangeDupID(std::uint64_t mapi, std::uint32_t value, const char16_t *id)
{
    return On("MapiChangeDupID", mapi).Number("value", value).WideText("id", id).Done().Result32();
}
