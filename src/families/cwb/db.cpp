#include "families/cwb/cwb.h"

#include "marshal/row.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>

namespace kessil {

void Process_cwbDB_SetStatementName(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 sql_request, WSTR name, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_SetCursorName(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 sql_request, WSTR name, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_SetStatementText(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 sql_request, WSTR text, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_DeleteDataHandle(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 data, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_DeleteDataFormatHandle(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 format, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_DeleteSQLRequestHandle(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 sql_request, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_StopServer(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 connection, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_DeleteConnectionHandle(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 connection, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_CreateDataHandle(CIPCCommunication &channel, void *function)
{
    Row<U32(Out<U32> data, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_CreateConnectionHandleEx(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 system, Out<U32> connection, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_StartServer(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 connection, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_CreateSQLRequestHandle(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 connection, Out<U32> sql_request, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_CreateDataFormatHandle(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 connection, Out<U32> format, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_SetClientInputCCSID(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 sql_request, U32 ccsid, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_ReturnHostErrorInfo(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 sql_request, Out<U16> out1, Out<U32> out2, U32 value1, U32 value2, U32 value3, U32 err_handle)>::Run(
        channel, __func__, function, OutList::Results);
}

void Process_cwbDB_SetDescribeOption(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 sql_request, U32 option, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_StoreRequestParameters(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 sql_request, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_ReturnDataFormat(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 sql_request, U32 format, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_PrepareDescribe(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 sql_request, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_Open(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 sql_request, U32 option, U32 err_handle)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_cwbDB_SetBlockCount(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 sql_request, U32 count, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_ReturnData(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 sql_request, U32 data, U32 value1, U32 value2, U32 err_handle)>::Run(channel, __func__, function,
                                                                                     OutList::Results);
}

void Process_cwbDB_Fetch(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 sql_request, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_GetColumnCount(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 format, Out<U32> count, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_GetColumnLength(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 format, U32 column, U32 value, Out<U32> length, U32 err_handle)>::Run(channel, __func__, function,
                                                                                      OutList::Results);
}

void Process_cwbDB_GetColumnType(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 format, U32 column, U32 value, Out<U16> type, U32 err_handle)>::Run(channel, __func__, function,
                                                                                    OutList::Results);
}

void Process_cwbDB_GetColumnCCSID(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 format, U32 column, U32 value, Out<U16> ccsid, U32 err_handle)>::Run(channel, __func__, function,
                                                                                     OutList::Results);
}

// No name comes back: the target gets the value itself where its neighbours get an address.
void Process_cwbDB_GetColumnName(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 format, U32 column, U32 value, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_GetColumnScale(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 format, U32 column, U32 value, Out<U16> scale, U32 err_handle)>::Run(channel, __func__, function,
                                                                                     OutList::Results);
}

// The target returns the address of its data, which are copied into the block.
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
    // Not earlier: the section may have grown and the block have moved. The copy is made whatever the result; a pointer
    // that the target left null ends the run, as the fault would.
    if (pointer == nullptr && block.size != 0)
        throw std::logic_error("there is no data to copy");
    std::copy_n(pointer, block.size, block.data);
    call.Succeed();
}

void Process_cwbDB_GetDataLength(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 data, Out<U32> length, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbDB_SetNamingConvention(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 connection, U16 convention, U32 err_handle)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

} // namespace kessil
