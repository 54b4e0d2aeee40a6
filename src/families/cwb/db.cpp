#include "families/cwb/cwb.h"

#include "marshal/handler_call.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>

namespace kessil {

void Process_cwbDB_SetStatementName(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 sql_request;
    WSTR name;
    U32 err_handle;
    if (!call.Read(sql_request, name, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, const char16_t *, std::uint32_t)>(function);
    const std::uint32_t result = target(sql_request.value, name.Text(), err_handle.value);

    call.Reply(U32(result));
}

void Process_cwbDB_SetCursorName(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 sql_request;
    WSTR name;
    U32 err_handle;
    if (!call.Read(sql_request, name, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, const char16_t *, std::uint32_t)>(function);
    const std::uint32_t result = target(sql_request.value, name.Text(), err_handle.value);

    call.Reply(U32(result));
}

void Process_cwbDB_SetStatementText(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 sql_request;
    WSTR text;
    U32 err_handle;
    if (!call.Read(sql_request, text, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, const char16_t *, std::uint32_t)>(function);
    const std::uint32_t result = target(sql_request.value, text.Text(), err_handle.value);

    call.Reply(U32(result));
}

void Process_cwbDB_DeleteDataHandle(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 data, err_handle;
    if (!call.Read(data, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result = target(data.value, err_handle.value);

    call.Reply(U32(result));
}

void Process_cwbDB_DeleteDataFormatHandle(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 format, err_handle;
    if (!call.Read(format, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result = target(format.value, err_handle.value);

    call.Reply(U32(result));
}

void Process_cwbDB_DeleteSQLRequestHandle(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 sql_request, err_handle;
    if (!call.Read(sql_request, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result = target(sql_request.value, err_handle.value);

    call.Reply(U32(result));
}

void Process_cwbDB_StopServer(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 connection, err_handle;
    if (!call.Read(connection, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result = target(connection.value, err_handle.value);

    call.Reply(U32(result));
}

void Process_cwbDB_DeleteConnectionHandle(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 connection, err_handle;
    if (!call.Read(connection, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result = target(connection.value, err_handle.value);

    call.Reply(U32(result));
}

void Process_cwbDB_CreateDataHandle(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 err_handle;
    if (!call.Read(err_handle))
        return;

    std::uint32_t data = 0;
    const auto target = AsTarget<std::uint32_t(std::uint32_t *, std::uint32_t)>(function);
    const std::uint32_t result = target(&data, err_handle.value);

    call.Reply(U32(data), U32(result));
}

void Process_cwbDB_CreateConnectionHandleEx(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 system, err_handle;
    if (!call.Read(system, err_handle))
        return;

    std::uint32_t connection = 0;
    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t *, std::uint32_t)>(function);
    const std::uint32_t result = target(system.value, &connection, err_handle.value);

    call.Reply(U32(connection), U32(result));
}

void Process_cwbDB_StartServer(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 connection, err_handle;
    if (!call.Read(connection, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result = target(connection.value, err_handle.value);

    call.Reply(U32(result));
}

void Process_cwbDB_CreateSQLRequestHandle(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 connection, err_handle;
    if (!call.Read(connection, err_handle))
        return;

    std::uint32_t sql_request = 0;
    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t *, std::uint32_t)>(function);
    const std::uint32_t result = target(connection.value, &sql_request, err_handle.value);

    call.Reply(U32(sql_request), U32(result));
}

void Process_cwbDB_CreateDataFormatHandle(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 connection, err_handle;
    if (!call.Read(connection, err_handle))
        return;

    std::uint32_t format = 0;
    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t *, std::uint32_t)>(function);
    const std::uint32_t result = target(connection.value, &format, err_handle.value);

    call.Reply(U32(format), U32(result));
}

void Process_cwbDB_SetClientInputCCSID(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 sql_request, ccsid, err_handle;
    if (!call.Read(sql_request, ccsid, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result = target(sql_request.value, ccsid.value, err_handle.value);

    call.Reply(U32(result));
}

void Process_cwbDB_ReturnHostErrorInfo(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 sql_request, value1, value2, value3, err_handle;
    if (!call.Read(sql_request, value1, value2, value3, err_handle))
        return;

    std::uint16_t out1 = 0;
    std::uint32_t out2 = 0;
    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint16_t *, std::uint32_t *, std::uint32_t,
                                               std::uint32_t, std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result =
        target(sql_request.value, &out1, &out2, value1.value, value2.value, value3.value, err_handle.value);

    call.Reply(U16(out1), U32(out2), U32(result));
}

void Process_cwbDB_SetDescribeOption(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 sql_request, option, err_handle;
    if (!call.Read(sql_request, option, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result = target(sql_request.value, option.value, err_handle.value);

    call.Reply(U32(result));
}

void Process_cwbDB_StoreRequestParameters(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 sql_request, err_handle;
    if (!call.Read(sql_request, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result = target(sql_request.value, err_handle.value);

    call.Reply(U32(result));
}

void Process_cwbDB_ReturnDataFormat(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 sql_request, format, err_handle;
    if (!call.Read(sql_request, format, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result = target(sql_request.value, format.value, err_handle.value);

    call.Reply(U32(result));
}

void Process_cwbDB_PrepareDescribe(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 sql_request, err_handle;
    if (!call.Read(sql_request, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result = target(sql_request.value, err_handle.value);

    call.Reply(U32(result));
}

void Process_cwbDB_Open(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 sql_request, option, err_handle;
    if (!call.Read(sql_request, option, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result = target(sql_request.value, option.value, err_handle.value);

    call.Reply(sql_request, option, err_handle, U32(result));
}

void Process_cwbDB_SetBlockCount(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 sql_request, count, err_handle;
    if (!call.Read(sql_request, count, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result = target(sql_request.value, count.value, err_handle.value);

    call.Reply(U32(result));
}

void Process_cwbDB_ReturnData(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 sql_request, data, value1, value2, err_handle;
    if (!call.Read(sql_request, data, value1, value2, err_handle))
        return;

    const auto target =
        AsTarget<std::uint32_t(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result = target(sql_request.value, data.value, value1.value, value2.value, err_handle.value);

    call.Reply(U32(result));
}

void Process_cwbDB_Fetch(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 sql_request, err_handle;
    if (!call.Read(sql_request, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result = target(sql_request.value, err_handle.value);

    call.Reply(U32(result));
}

void Process_cwbDB_GetColumnCount(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 format, err_handle;
    if (!call.Read(format, err_handle))
        return;

    std::uint32_t count = 0;
    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t *, std::uint32_t)>(function);
    const std::uint32_t result = target(format.value, &count, err_handle.value);

    call.Reply(U32(count), U32(result));
}

void Process_cwbDB_GetColumnLength(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 format, column, value, err_handle;
    if (!call.Read(format, column, value, err_handle))
        return;

    std::uint32_t length = 0;
    const auto target =
        AsTarget<std::uint32_t(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t *, std::uint32_t)>(function);
    const std::uint32_t result = target(format.value, column.value, value.value, &length, err_handle.value);

    call.Reply(U32(length), U32(result));
}

void Process_cwbDB_GetColumnType(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 format, column, value, err_handle;
    if (!call.Read(format, column, value, err_handle))
        return;

    std::uint16_t type = 0;
    const auto target =
        AsTarget<std::uint32_t(std::uint32_t, std::uint32_t, std::uint32_t, std::uint16_t *, std::uint32_t)>(function);
    const std::uint32_t result = target(format.value, column.value, value.value, &type, err_handle.value);

    call.Reply(U16(type), U32(result));
}

void Process_cwbDB_GetColumnCCSID(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 format, column, value, err_handle;
    if (!call.Read(format, column, value, err_handle))
        return;

    std::uint16_t ccsid = 0;
    const auto target =
        AsTarget<std::uint32_t(std::uint32_t, std::uint32_t, std::uint32_t, std::uint16_t *, std::uint32_t)>(function);
    const std::uint32_t result = target(format.value, column.value, value.value, &ccsid, err_handle.value);

    call.Reply(U16(ccsid), U32(result));
}

// The value goes as the number that it is, and no name comes back.
void Process_cwbDB_GetColumnName(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 format, column, value, err_handle;
    if (!call.Read(format, column, value, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result = target(format.value, column.value, value.value, err_handle.value);

    call.Reply(U32(result));
}

void Process_cwbDB_GetColumnScale(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 format, column, value, err_handle;
    if (!call.Read(format, column, value, err_handle))
        return;

    std::uint16_t scale = 0;
    const auto target =
        AsTarget<std::uint32_t(std::uint32_t, std::uint32_t, std::uint32_t, std::uint16_t *, std::uint32_t)>(function);
    const std::uint32_t result = target(format.value, column.value, value.value, &scale, err_handle.value);

    call.Reply(U16(scale), U32(result));
}

void Process_cwbDB_GetDataPointer(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 data;
    BUF block;
    U32 err_handle;
    if (!call.Read(data, block, err_handle))
        return;

    const unsigned char *pointer = nullptr;
    const auto target = AsTarget<std::uint32_t(std::uint32_t, const unsigned char **, std::uint32_t)>(function);
    const std::uint32_t result = target(data.value, &pointer, err_handle.value);

    if (!call.Write(data, block, U32(result)))
        return;
    // Not earlier: the section may have grown, and the block with it. No result keeps the copy from being made, and a
    // pointer that the target left null ends the run as the fault would.
    if (pointer == nullptr && block.size != 0)
        throw std::logic_error("there is no data to copy");
    std::copy_n(pointer, block.size, block.data);
    call.Succeed();
}

void Process_cwbDB_GetDataLength(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 data, err_handle;
    if (!call.Read(data, err_handle))
        return;

    std::uint32_t length = 0;
    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t *, std::uint32_t)>(function);
    const std::uint32_t result = target(data.value, &length, err_handle.value);

    call.Reply(U32(length), U32(result));
}

void Process_cwbDB_SetNamingConvention(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 connection;
    U16 convention;
    U32 err_handle;
    if (!call.Read(connection, convention, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint16_t, std::uint32_t)>(function);
    const std::uint32_t result = target(connection.value, convention.value, err_handle.value);

    call.Reply(connection, convention, err_handle, U32(result));
}

} // namespace kessil
