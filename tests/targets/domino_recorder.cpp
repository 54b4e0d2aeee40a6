#include "domino_recorder.h"

#include "recorded_call.h"

namespace {

RecordedCall On(const char *function, std::uint32_t session)
{
    RecordedCall call(function);
    call.Handle("session", session);
    return call;
}

} // namespace

std::uint32_t DominoGetSession(const char *text)
{
    return RecordedCall("DominoGetSession").Text("text", text).Done().Result32();
}

std::uint32_t DominoCloseSession(std::uint32_t session)
{
    return On("DominoCloseSession", session).Done().Result32();
}

std::uint32_t DominoFindFirstDatabase(std::uint32_t session, const char *path, void *block, std::uint32_t length)
{
    const RecordedCall call = On("DominoFindFirstDatabase", session)
                                  .Text("path", path)
                                  .Data("block", block, length)
                                  .Number("length", length)
                                  .Done();
    call.Fill("block", block);
    return call.Result32();
}

std::uint32_t DominoFindNextDatabase(std::uint32_t session, void *block, std::uint32_t length)
{
    const RecordedCall call =
        On("DominoFindNextDatabase", session).Data("block", block, length).Number("length", length).Done();
    call.Fill("block", block);
    return call.Result32();
}

std::uint32_t DominoGetDatabaseInfo(std::uint32_t session, std::uint32_t *value1, std::uint32_t *value2)
{
    // What the words hold beforehand is part of the agreement.
    const RecordedCall call =
        On("DominoGetDatabaseInfo", session).Number("value1", *value1).Number("value2", *value2).Done();
    call.Out("value1", value1);
    call.Out("value2", value2);
    return call.Result32();
}

std::uint32_t DominoCopyDatabase(std::uint32_t session, const char *text1, const char *text2, const char *text3,
                                 const char *text4, std::uint32_t *value)
{
    const RecordedCall call = On("DominoCopyDatabase", session)
                                  .Text("text1", text1)
                                  .Text("text2", text2)
                                  .Text("text3", text3)
                                  .Text("text4", text4)
                                  .Number("value", *value)
                                  .Done();
    call.Out("value", value);
    return call.Result32();
}

const char *DominoGetErrorMessage(std::uint32_t session, std::uint32_t code)
{
    static std::string message;
    const RecordedCall call = On("DominoGetErrorMessage", session).Number("code", code).Done();
    message = call.Script().TextOf("message").value_or("");
    return message == "null" ? nullptr : message.c_str();
}

std::uint32_t DominoSetPassword(const char *text1, const char *text2)
{
    return RecordedCall("DominoSetPassword").Text("text1", text1).Text("text2", text2).Done().Result32();
}

std::uint32_t DominoGetNotesVersion(std::uint32_t session, const char *text, std::uint32_t *version)
{
    const RecordedCall call = On("DominoGetNotesVersion", session).Text("text", text).Done();
    call.Out("version", version);
    return call.Result32();
}
