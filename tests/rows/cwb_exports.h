#pragma once

#include "rows/exports.h"
#include "targets/cwb_recorder.h"

namespace kessil::test {

inline const Exports &CwbExports()
{
    static const Exports exports = {
        KESSIL_TEST_EXPORT(cwbCO_CreateSystem),
        KESSIL_TEST_EXPORT(cwbCO_SetUserIDEx),
        KESSIL_TEST_EXPORT(cwbCO_SetPassword),
        KESSIL_TEST_EXPORT(cwbCO_SetPromptMode),
        KESSIL_TEST_EXPORT(cwbCO_DeleteSystem),
        KESSIL_TEST_EXPORT(cwbRC_StartSysEx),
        KESSIL_TEST_EXPORT(cwbRC_CreatePgm),
        KESSIL_TEST_EXPORT(cwbRC_RunCmd),
        KESSIL_TEST_EXPORT(cwbRC_AddParm),
        KESSIL_TEST_EXPORT(cwbRC_CallPgm),
        KESSIL_TEST_EXPORT(cwbRC_DeletePgm),
        KESSIL_TEST_EXPORT(cwbRC_StopSys),
        KESSIL_TEST_EXPORT(cwbNL_GetHostCCSID),
        KESSIL_TEST_EXPORT(cwbNL_CCSIDToCodePage),
        KESSIL_TEST_EXPORT(cwbNL_CodePageToCCSID),
        KESSIL_TEST_EXPORT(cwbNL_GetCodePage),
        KESSIL_TEST_EXPORT(cwbNL_CreateConverter),
        KESSIL_TEST_EXPORT(cwbNL_DeleteConverter),
        KESSIL_TEST_EXPORT(cwbNL_Convert),
        KESSIL_TEST_EXPORT(cwbNL_GetANSICodePage),
        KESSIL_TEST_EXPORT(cwbSV_CreateErrHandle),
        KESSIL_TEST_EXPORT(cwbSV_DeleteErrHandle),
        KESSIL_TEST_EXPORT(cwbSV_GetErrCount),
        KESSIL_TEST_EXPORT(cwbSV_GetErrTextIndexed),
        KESSIL_TEST_EXPORT(cwbDT_StringToPacked),
        KESSIL_TEST_EXPORT(cwbDT_PackedToString),
        KESSIL_TEST_EXPORT(cwbDB_SetStatementName),
        KESSIL_TEST_EXPORT(cwbDB_SetCursorName),
        KESSIL_TEST_EXPORT(cwbDB_SetStatementText),
        KESSIL_TEST_EXPORT(cwbDB_DeleteDataHandle),
        KESSIL_TEST_EXPORT(cwbDB_DeleteDataFormatHandle),
        KESSIL_TEST_EXPORT(cwbDB_DeleteSQLRequestHandle),
        KESSIL_TEST_EXPORT(cwbDB_StopServer),
        KESSIL_TEST_EXPORT(cwbDB_DeleteConnectionHandle),
        KESSIL_TEST_EXPORT(cwbDB_CreateDataHandle),
        KESSIL_TEST_EXPORT(cwbDB_CreateConnectionHandleEx),
        KESSIL_TEST_EXPORT(cwbDB_StartServer),
        KESSIL_TEST_EXPORT(cwbDB_CreateSQLRequestHandle),
        KESSIL_TEST_EXPORT(cwbDB_CreateDataFormatHandle),
        KESSIL_TEST_EXPORT(cwbDB_SetClientInputCCSID),
        KESSIL_TEST_EXPORT(cwbDB_ReturnHostErrorInfo),
        KESSIL_TEST_EXPORT(cwbDB_SetDescribeOption),
        KESSIL_TEST_EXPORT(cwbDB_StoreRequestParameters),
        KESSIL_TEST_EXPORT(cwbDB_ReturnDataFormat),
        KESSIL_TEST_EXPORT(cwbDB_PrepareDescribe),
        KESSIL_TEST_EXPORT(cwbDB_Open),
        KESSIL_TEST_EXPORT(cwbDB_SetBlockCount),
        KESSIL_TEST_EXPORT(cwbDB_ReturnData),
        KESSIL_TEST_EXPORT(cwbDB_Fetch),
        KESSIL_TEST_EXPORT(cwbDB_GetColumnCount),
        KESSIL_TEST_EXPORT(cwbDB_GetColumnLength),
        KESSIL_TEST_EXPORT(cwbDB_GetColumnType),
        KESSIL_TEST_EXPORT(cwbDB_GetColumnCCSID),
        KESSIL_TEST_EXPORT(cwbDB_GetColumnName),
        KESSIL_TEST_EXPORT(cwbDB_GetColumnScale),
        KESSIL_TEST_EXPORT(cwbDB_GetDataPointer),
        KESSIL_TEST_EXPORT(cwbDB_GetDataLength),
        KESSIL_TEST_EXPORT(cwbDB_SetNamingConvention),
    };
    return exports;
}

} // namespace kessil::test
