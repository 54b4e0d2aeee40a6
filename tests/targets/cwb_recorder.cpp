#include "cwb_recorder.h"

#include "recorded_call.h"

#include <numeric>
#include <string>

/// A midrange client that records what it was called with and answers as the script says: the script's
/// words have the names of the out-values. Handles and other numbers are recorded as hexadecimal, lengths as decimal.
namespace {

// The library keeps the address, and cwbRC_CallPgm writes the script's `output` there.
unsigned char *last_parameter = nullptr;

} // namespace

unsigned char *LastParameter()
{
    return last_parameter;
}

TARGET_EXPORT std::uint32_t cwbCO_CreateSystem(const char16_t *name, std::uint32_t *system)
{
    RecordedCall call("cwbCO_CreateSystem");
    call.WideText("name", name).Done();
    call.Out("system", system);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbCO_SetUserIDEx(std::uint32_t system, const char16_t *user)
{
    return RecordedCall("cwbCO_SetUserIDEx").Handle("system", system).WideText("user", user).Done().Result32();
}

TARGET_EXPORT std::uint32_t cwbCO_SetPassword(std::uint32_t system, const char16_t *password)
{
    return RecordedCall("cwbCO_SetPassword").Handle("system", system).WideText("password", password).Done().Result32();
}

TARGET_EXPORT std::uint32_t cwbCO_SetPromptMode(std::uint32_t system, std::uint32_t mode)
{
    return RecordedCall("cwbCO_SetPromptMode").Handle("system", system).Handle("mode", mode).Done().Result32();
}

TARGET_EXPORT std::uint32_t cwbCO_DeleteSystem(std::uint32_t system)
{
    return RecordedCall("cwbCO_DeleteSystem").Handle("system", system).Done().Result32();
}

TARGET_EXPORT std::uint32_t cwbRC_StartSysEx(std::uint32_t system, std::uint32_t *request)
{
    RecordedCall call("cwbRC_StartSysEx");
    call.Handle("system", system).Done();
    call.Out("request", request);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbRC_CreatePgm(const char16_t *name, const char16_t *library, std::uint32_t *program)
{
    RecordedCall call("cwbRC_CreatePgm");
    call.WideText("name", name).WideText("library", library).Done();
    call.Out("program", program);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbRC_RunCmd(std::uint32_t request, const char *command, std::uint32_t errors)
{
    return RecordedCall("cwbRC_RunCmd")
        .Handle("request", request)
        .Text("command", command)
        .Handle("errors", errors)
        .Done()
        .Result32();
}

TARGET_EXPORT std::uint32_t cwbRC_AddParm(std::uint32_t program, std::uint16_t type, std::uint32_t length,
                                          unsigned char *parameter)
{
    RecordedCall call("cwbRC_AddParm");
    call.Handle("program", program).Handle("type", type).Number("length", length).Pointer("parameter", parameter);
    call.Data("data", parameter, length).Done();
    last_parameter = parameter;
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbRC_CallPgm(std::uint32_t request, std::uint32_t program, std::uint32_t errors)
{
    RecordedCall call("cwbRC_CallPgm");
    call.Handle("request", request).Handle("program", program).Handle("errors", errors).Done();
    call.Fill("output", last_parameter);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbRC_DeletePgm(std::uint32_t program)
{
    return RecordedCall("cwbRC_DeletePgm").Handle("program", program).Done().Result32();
}

TARGET_EXPORT std::uint32_t cwbRC_StopSys(std::uint32_t request)
{
    return RecordedCall("cwbRC_StopSys").Handle("request", request).Done().Result32();
}

TARGET_EXPORT std::uint32_t cwbNL_GetHostCCSID(const char *system, std::uint32_t *ccsid)
{
    RecordedCall call("cwbNL_GetHostCCSID");
    call.Text("system", system).Done();
    call.Out("ccsid", ccsid);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbNL_CCSIDToCodePage(std::uint32_t ccsid, std::uint32_t *page, std::uint32_t errors)
{
    RecordedCall call("cwbNL_CCSIDToCodePage");
    call.Handle("ccsid", ccsid).Handle("errors", errors).Done();
    call.Out("page", page);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbNL_CodePageToCCSID(std::uint32_t page, std::uint32_t *ccsid, std::uint32_t errors)
{
    RecordedCall call("cwbNL_CodePageToCCSID");
    call.Handle("page", page).Handle("errors", errors).Done();
    call.Out("ccsid", ccsid);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbNL_GetCodePage(std::uint32_t *page, std::uint32_t errors)
{
    RecordedCall call("cwbNL_GetCodePage");
    call.Handle("errors", errors).Done();
    call.Out("page", page);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbNL_CreateConverter(std::uint32_t from, std::uint32_t to, std::uint32_t *converter,
                                                  std::uint32_t errors, std::uint32_t shift, std::uint32_t pads,
                                                  const char *pad)
{
    RecordedCall call("cwbNL_CreateConverter");
    call.Handle("from", from)
        .Handle("to", to)
        .Handle("errors", errors)
        .Handle("shift", shift)
        .Handle("pads", pads)
        .Text("pad", pad)
        .Done();
    call.Out("converter", converter);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbNL_DeleteConverter(std::uint32_t converter, std::uint32_t errors)
{
    return RecordedCall("cwbNL_DeleteConverter")
        .Handle("converter", converter)
        .Handle("errors", errors)
        .Done()
        .Result32();
}

TARGET_EXPORT std::uint32_t cwbNL_Convert(std::uint32_t converter, std::uint32_t source_length,
                                          std::uint32_t target_length, const unsigned char *source,
                                          unsigned char *target, std::uint32_t *out1, std::uint32_t *out2,
                                          std::uint32_t *out3, std::uint32_t errors)
{
    RecordedCall call("cwbNL_Convert");
    call.Handle("converter", converter).Number("source_length", source_length).Number("target_length", target_length);
    call.Data("source", source, source_length).Data("target", target, target_length).Handle("errors", errors).Done();
    call.Fill("converted", target);
    call.Out("out1", out1);
    call.Out("out2", out2);
    call.Out("out3", out3);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbNL_GetANSICodePage(std::uint32_t *page, std::uint32_t errors)
{
    RecordedCall call("cwbNL_GetANSICodePage");
    call.Handle("errors", errors).Done();
    call.Out("page", page);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbSV_CreateErrHandle(std::uint32_t *errors)
{
    RecordedCall call("cwbSV_CreateErrHandle");
    call.Done();
    call.Out("errors", errors);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbSV_DeleteErrHandle(std::uint32_t errors)
{
    return RecordedCall("cwbSV_DeleteErrHandle").Handle("errors", errors).Done().Result32();
}

TARGET_EXPORT std::uint32_t cwbSV_GetErrCount(std::uint32_t errors, std::uint32_t *count)
{
    RecordedCall call("cwbSV_GetErrCount");
    call.Handle("errors", errors).Done();
    call.Out("count", count);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbSV_GetErrTextIndexed(std::uint32_t errors, std::uint32_t index, unsigned char *message,
                                                    std::uint32_t length, std::uint32_t *needed)
{
    RecordedCall call("cwbSV_GetErrTextIndexed");
    call.Handle("errors", errors)
        .Handle("index", index)
        .Data("message", message, length)
        .Number("length", length)
        .Done();
    call.Fill("message", message);
    call.Out("needed", needed);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbDT_StringToPacked(unsigned char *packed, const char16_t *digits, std::uint32_t length,
                                                 std::uint32_t position)
{
    RecordedCall call("cwbDT_StringToPacked");
    call.Data("packed", packed, length).WideText("digits", digits).Number("length", length);
    call.Handle("position", position).Done();
    call.Fill("packed", packed);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbDT_PackedToString(char16_t *digits, const unsigned char *packed, std::uint32_t length,
                                                 std::uint32_t position)
{
    RecordedCall call("cwbDT_PackedToString");
    call.Data("packed", packed, length).Number("length", length).Handle("position", position).Done();
    call.Fill("digits", digits);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_SetStatementName(std::uint32_t request, const char16_t *name, std::uint32_t errors)
{
    return RecordedCall("cwbDB_SetStatementName")
        .Handle("request", request)
        .WideText("name", name)
        .Handle("errors", errors)
        .Done()
        .Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_SetCursorName(std::uint32_t request, const char16_t *name, std::uint32_t errors)
{
    return RecordedCall("cwbDB_SetCursorName")
        .Handle("request", request)
        .WideText("name", name)
        .Handle("errors", errors)
        .Done()
        .Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_SetStatementText(std::uint32_t request, const char16_t *statement,
                                                   std::uint32_t errors)
{
    return RecordedCall("cwbDB_SetStatementText")
        .Handle("request", request)
        .WideText("statement", statement)
        .Handle("errors", errors)
        .Done()
        .Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_DeleteDataHandle(std::uint32_t data, std::uint32_t errors)
{
    return RecordedCall("cwbDB_DeleteDataHandle").Handle("data", data).Handle("errors", errors).Done().Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_DeleteDataFormatHandle(std::uint32_t format, std::uint32_t errors)
{
    return RecordedCall("cwbDB_DeleteDataFormatHandle")
        .Handle("format", format)
        .Handle("errors", errors)
        .Done()
        .Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_DeleteSQLRequestHandle(std::uint32_t request, std::uint32_t errors)
{
    return RecordedCall("cwbDB_DeleteSQLRequestHandle")
        .Handle("request", request)
        .Handle("errors", errors)
        .Done()
        .Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_StopServer(std::uint32_t connection, std::uint32_t errors)
{
    return RecordedCall("cwbDB_StopServer").Handle("connection", connection).Handle("errors", errors).Done().Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_DeleteConnectionHandle(std::uint32_t connection, std::uint32_t errors)
{
    return RecordedCall("cwbDB_DeleteConnectionHandle")
        .Handle("connection", connection)
        .Handle("errors", errors)
        .Done()
        .Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_CreateDataHandle(std::uint32_t *data, std::uint32_t errors)
{
    RecordedCall call("cwbDB_CreateDataHandle");
    call.Handle("errors", errors).Done();
    call.Out("data", data);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_CreateConnectionHandleEx(std::uint32_t system, std::uint32_t *connection,
                                                           std::uint32_t errors)
{
    RecordedCall call("cwbDB_CreateConnectionHandleEx");
    call.Handle("system", system).Handle("errors", errors).Done();
    call.Out("connection", connection);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_StartServer(std::uint32_t connection, std::uint32_t errors)
{
    return RecordedCall("cwbDB_StartServer")
        .Handle("connection", connection)
        .Handle("errors", errors)
        .Done()
        .Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_CreateSQLRequestHandle(std::uint32_t connection, std::uint32_t *request,
                                                         std::uint32_t errors)
{
    RecordedCall call("cwbDB_CreateSQLRequestHandle");
    call.Handle("connection", connection).Handle("errors", errors).Done();
    call.Out("request", request);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_CreateDataFormatHandle(std::uint32_t connection, std::uint32_t *format,
                                                         std::uint32_t errors)
{
    RecordedCall call("cwbDB_CreateDataFormatHandle");
    call.Handle("connection", connection).Handle("errors", errors).Done();
    call.Out("format", format);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_SetClientInputCCSID(std::uint32_t request, std::uint32_t ccsid, std::uint32_t errors)
{
    return RecordedCall("cwbDB_SetClientInputCCSID")
        .Handle("request", request)
        .Handle("ccsid", ccsid)
        .Handle("errors", errors)
        .Done()
        .Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_ReturnHostErrorInfo(std::uint32_t request, std::uint16_t *out1, std::uint32_t *out2,
                                                      std::uint32_t value1, std::uint32_t value2, std::uint32_t value3,
                                                      std::uint32_t errors)
{
    RecordedCall call("cwbDB_ReturnHostErrorInfo");
    call.Handle("request", request)
        .Handle("value1", value1)
        .Handle("value2", value2)
        .Handle("value3", value3)
        .Handle("errors", errors)
        .Done();
    call.Out("out1", out1);
    call.Out("out2", out2);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_SetDescribeOption(std::uint32_t request, std::uint32_t option, std::uint32_t errors)
{
    return RecordedCall("cwbDB_SetDescribeOption")
        .Handle("request", request)
        .Handle("option", option)
        .Handle("errors", errors)
        .Done()
        .Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_StoreRequestParameters(std::uint32_t request, std::uint32_t errors)
{
    return RecordedCall("cwbDB_StoreRequestParameters")
        .Handle("request", request)
        .Handle("errors", errors)
        .Done()
        .Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_ReturnDataFormat(std::uint32_t request, std::uint32_t format, std::uint32_t errors)
{
    return RecordedCall("cwbDB_ReturnDataFormat")
        .Handle("request", request)
        .Handle("format", format)
        .Handle("errors", errors)
        .Done()
        .Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_PrepareDescribe(std::uint32_t request, std::uint32_t errors)
{
    return RecordedCall("cwbDB_PrepareDescribe").Handle("request", request).Handle("errors", errors).Done().Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_Open(std::uint32_t request, std::uint32_t option, std::uint32_t errors)
{
    return RecordedCall("cwbDB_Open")
        .Handle("request", request)
        .Handle("option", option)
        .Handle("errors", errors)
        .Done()
        .Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_SetBlockCount(std::uint32_t request, std::uint32_t count, std::uint32_t errors)
{
    return RecordedCall("cwbDB_SetBlockCount")
        .Handle("request", request)
        .Handle("count", count)
        .Handle("errors", errors)
        .Done()
        .Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_ReturnData(std::uint32_t request, std::uint32_t data, std::uint32_t value1,
                                             std::uint32_t value2, std::uint32_t errors)
{
    return RecordedCall("cwbDB_ReturnData")
        .Handle("request", request)
        .Handle("data", data)
        .Handle("value1", value1)
        .Handle("value2", value2)
        .Handle("errors", errors)
        .Done()
        .Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_Fetch(std::uint32_t request, std::uint32_t errors)
{
    return RecordedCall("cwbDB_Fetch").Handle("request", request).Handle("errors", errors).Done().Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_GetColumnCount(std::uint32_t format, std::uint32_t *count, std::uint32_t errors)
{
    RecordedCall call("cwbDB_GetColumnCount");
    call.Handle("format", format).Handle("errors", errors).Done();
    call.Out("count", count);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_GetColumnLength(std::uint32_t format, std::uint32_t column, std::uint32_t value,
                                                  std::uint32_t *length, std::uint32_t errors)
{
    RecordedCall call("cwbDB_GetColumnLength");
    call.Handle("format", format).Handle("column", column).Handle("value", value).Handle("errors", errors).Done();
    call.Out("length", length);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_GetColumnType(std::uint32_t format, std::uint32_t column, std::uint32_t value,
                                                std::uint16_t *type, std::uint32_t errors)
{
    RecordedCall call("cwbDB_GetColumnType");
    call.Handle("format", format).Handle("column", column).Handle("value", value).Handle("errors", errors).Done();
    call.Out("type", type);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_GetColumnCCSID(std::uint32_t format, std::uint32_t column, std::uint32_t value,
                                                 std::uint16_t *ccsid, std::uint32_t errors)
{
    RecordedCall call("cwbDB_GetColumnCCSID");
    call.Handle("format", format).Handle("column", column).Handle("value", value).Handle("errors", errors).Done();
    call.Out("ccsid", ccsid);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_GetColumnName(std::uint32_t format, std::uint32_t column, std::uint32_t value,
                                                std::uint32_t errors)
{
    return RecordedCall("cwbDB_GetColumnName")
        .Handle("format", format)
        .Handle("column", column)
        .Handle("value", value)
        .Handle("errors", errors)
        .Done()
        .Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_GetColumnScale(std::uint32_t format, std::uint32_t column, std::uint32_t value,
                                                 std::uint16_t *scale, std::uint32_t errors)
{
    RecordedCall call("cwbDB_GetColumnScale");
    call.Handle("format", format).Handle("column", column).Handle("value", value).Handle("errors", errors).Done();
    call.Out("scale", scale);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_GetDataPointer(std::uint32_t data, const void **pointer, std::uint32_t errors)
{
    static std::string bytes;
    RecordedCall call("cwbDB_GetDataPointer");
    call.Handle("data", data).Handle("errors", errors).Done();
    if (const auto scripted = call.Script().BytesOf("bytes")) {
        bytes = *scripted;
        *pointer = bytes.data();
    }
    if (const std::uint64_t size = call.Script().count_up) {
        bytes.resize(size);
        std::iota(bytes.begin(), bytes.end(), static_cast<char>(0));
        *pointer = bytes.data();
    }
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_GetDataLength(std::uint32_t data, std::uint32_t *length, std::uint32_t errors)
{
    RecordedCall call("cwbDB_GetDataLength");
    call.Handle("data", data).Handle("errors", errors).Done();
    call.Out("length", length);
    return call.Result32();
}

TARGET_EXPORT std::uint32_t cwbDB_SetNamingConvention(std::uint32_t connection, std::uint16_t convention,
                                                      std::uint32_t errors)
{
    return RecordedCall("cwbDB_SetNamingConvention")
        .Handle("connection", connection)
        .Handle("convention", convention)
        .Handle("errors", errors)
        .Done()
        .Result32();
}
