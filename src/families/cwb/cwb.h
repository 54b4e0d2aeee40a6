#pragma once

namespace kessil {

class CIPCCommunication;

// The midrange client. Each handler calls the export of its own name. The library's handles have 32 bits. Nothing is
// checked on the way to the library or back.

// Systems, remote commands and programs. A block that cwbRC_AddParm made outlives its call, until
// cwbRC_CallPgm_DeleteBuffer or the end of the process; parents hold its address, and nothing checks what they send.

void Process_cwbCO_CreateSystem(CIPCCommunication &channel, void *function);
void Process_cwbCO_SetUserIDEx(CIPCCommunication &channel, void *function);
void Process_cwbCO_SetPassword(CIPCCommunication &channel, void *function);
void Process_cwbCO_SetPromptMode(CIPCCommunication &channel, void *function);
void Process_cwbCO_DeleteSystem(CIPCCommunication &channel, void *function);
void Process_cwbRC_StartSysEx(CIPCCommunication &channel, void *function);
void Process_cwbRC_CreatePgm(CIPCCommunication &channel, void *function);
void Process_cwbRC_RunCmd(CIPCCommunication &channel, void *function);
void Process_cwbRC_AddParm(CIPCCommunication &channel, void *function);
void Process_cwbRC_CallPgm_GetBuffer(CIPCCommunication &channel, void *function);
void Process_cwbRC_CallPgm_DeleteBuffer(CIPCCommunication &channel, void *function);
void Process_cwbRC_CallPgm(CIPCCommunication &channel, void *function);
void Process_cwbRC_DeletePgm(CIPCCommunication &channel, void *function);
void Process_cwbRC_StopSys(CIPCCommunication &channel, void *function);

// Code pages and conversion, error handles, packed decimals.

void Process_cwbNL_GetHostCCSID(CIPCCommunication &channel, void *function);
void Process_cwbNL_CCSIDToCodePage(CIPCCommunication &channel, void *function);
void Process_cwbNL_CodePageToCCSID(CIPCCommunication &channel, void *function);
void Process_cwbNL_GetCodePage(CIPCCommunication &channel, void *function);
void Process_cwbNL_CreateConverter(CIPCCommunication &channel, void *function);
void Process_cwbNL_DeleteConverter(CIPCCommunication &channel, void *function);
void Process_cwbNL_Convert(CIPCCommunication &channel, void *function);
void Process_cwbNL_GetANSICodePage(CIPCCommunication &channel, void *function);
void Process_cwbSV_CreateErrHandle(CIPCCommunication &channel, void *function);
void Process_cwbSV_DeleteErrHandle(CIPCCommunication &channel, void *function);
void Process_cwbSV_GetErrCount(CIPCCommunication &channel, void *function);
void Process_cwbSV_GetErrTextIndexed(CIPCCommunication &channel, void *function);
void Process_cwbDT_StringToPacked(CIPCCommunication &channel, void *function);
void Process_cwbDT_PackedToString(CIPCCommunication &channel, void *function);

// Database.

void Process_cwbDB_SetStatementName(CIPCCommunication &channel, void *function);
void Process_cwbDB_SetCursorName(CIPCCommunication &channel, void *function);
void Process_cwbDB_SetStatementText(CIPCCommunication &channel, void *function);
void Process_cwbDB_DeleteDataHandle(CIPCCommunication &channel, void *function);
void Process_cwbDB_DeleteDataFormatHandle(CIPCCommunication &channel, void *function);
void Process_cwbDB_DeleteSQLRequestHandle(CIPCCommunication &channel, void *function);
void Process_cwbDB_StopServer(CIPCCommunication &channel, void *function);
void Process_cwbDB_DeleteConnectionHandle(CIPCCommunication &channel, void *function);
void Process_cwbDB_CreateDataHandle(CIPCCommunication &channel, void *function);
void Process_cwbDB_CreateConnectionHandleEx(CIPCCommunication &channel, void *function);
void Process_cwbDB_StartServer(CIPCCommunication &channel, void *function);
void Process_cwbDB_CreateSQLRequestHandle(CIPCCommunication &channel, void *function);
void Process_cwbDB_CreateDataFormatHandle(CIPCCommunication &channel, void *function);
void Process_cwbDB_SetClientInputCCSID(CIPCCommunication &channel, void *function);
void Process_cwbDB_ReturnHostErrorInfo(CIPCCommunication &channel, void *function);
void Process_cwbDB_SetDescribeOption(CIPCCommunication &channel, void *function);
void Process_cwbDB_StoreRequestParameters(CIPCCommunication &channel, void *function);
void Process_cwbDB_ReturnDataFormat(CIPCCommunication &channel, void *function);
void Process_cwbDB_PrepareDescribe(CIPCCommunication &channel, void *function);
void Process_cwbDB_Open(CIPCCommunication &channel, void *function);
void Process_cwbDB_SetBlockCount(CIPCCommunication &channel, void *function);
void Process_cwbDB_ReturnData(CIPCCommunication &channel, void *function);
void Process_cwbDB_Fetch(CIPCCommunication &channel, void *function);
void Process_cwbDB_GetColumnCount(CIPCCommunication &channel, void *function);
void Process_cwbDB_GetColumnLength(CIPCCommunication &channel, void *function);
void Process_cwbDB_GetColumnType(CIPCCommunication &channel, void *function);
void Process_cwbDB_GetColumnCCSID(CIPCCommunication &channel, void *function);
void Process_cwbDB_GetColumnName(CIPCCommunication &channel, void *function);
void Process_cwbDB_GetColumnScale(CIPCCommunication &channel, void *function);
void Process_cwbDB_GetDataPointer(CIPCCommunication &channel, void *function);
void Process_cwbDB_GetDataLength(CIPCCommunication &channel, void *function);
void Process_cwbDB_SetNamingConvention(CIPCCommunication &channel, void *function);

} // namespace kessil
