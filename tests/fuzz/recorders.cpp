#include "fuzz/recorders.h"

#include "platform/last_error.h"
#include "targets/cwb_recorder.h"
#include "targets/domino_recorder.h"
#include "targets/ese_recorder.h"
#include "targets/leave_last_error.h"
#include "targets/mapi_recorder.h"
#include "targets/record.h"
#include "targets/script.h"

namespace kessil::test {
namespace {

std::string answers;

#define EXPORT(name) FakeModule::Exports::value_type(#name, reinterpret_cast<void *>(name))

const FakeModule::Exports exports = {
    EXPORT(cwbCO_CreateSystem),
    EXPORT(cwbCO_SetUserIDEx),
    EXPORT(cwbCO_SetPassword),
    EXPORT(cwbCO_SetPromptMode),
    EXPORT(cwbCO_DeleteSystem),
    EXPORT(cwbRC_StartSysEx),
    EXPORT(cwbRC_CreatePgm),
    EXPORT(cwbRC_RunCmd),
    EXPORT(cwbRC_AddParm),
    EXPORT(cwbRC_CallPgm),
    EXPORT(cwbRC_DeletePgm),
    EXPORT(cwbRC_StopSys),
    EXPORT(cwbNL_GetHostCCSID),
    EXPORT(cwbNL_CCSIDToCodePage),
    EXPORT(cwbNL_CodePageToCCSID),
    EXPORT(cwbNL_GetCodePage),
    EXPORT(cwbNL_CreateConverter),
    EXPORT(cwbNL_DeleteConverter),
    EXPORT(cwbNL_Convert),
    EXPORT(cwbNL_GetANSICodePage),
    EXPORT(cwbSV_CreateErrHandle),
    EXPORT(cwbSV_DeleteErrHandle),
    EXPORT(cwbSV_GetErrCount),
    EXPORT(cwbSV_GetErrTextIndexed),
    EXPORT(cwbDT_StringToPacked),
    EXPORT(cwbDT_PackedToString),
    EXPORT(cwbDB_SetStatementName),
    EXPORT(cwbDB_SetCursorName),
    EXPORT(cwbDB_SetStatementText),
    EXPORT(cwbDB_DeleteDataHandle),
    EXPORT(cwbDB_DeleteDataFormatHandle),
    EXPORT(cwbDB_DeleteSQLRequestHandle),
    EXPORT(cwbDB_StopServer),
    EXPORT(cwbDB_DeleteConnectionHandle),
    EXPORT(cwbDB_CreateDataHandle),
    EXPORT(cwbDB_CreateConnectionHandleEx),
    EXPORT(cwbDB_StartServer),
    EXPORT(cwbDB_CreateSQLRequestHandle),
    EXPORT(cwbDB_CreateDataFormatHandle),
    EXPORT(cwbDB_SetClientInputCCSID),
    EXPORT(cwbDB_ReturnHostErrorInfo),
    EXPORT(cwbDB_SetDescribeOption),
    EXPORT(cwbDB_StoreRequestParameters),
    EXPORT(cwbDB_ReturnDataFormat),
    EXPORT(cwbDB_PrepareDescribe),
    EXPORT(cwbDB_Open),
    EXPORT(cwbDB_SetBlockCount),
    EXPORT(cwbDB_ReturnData),
    EXPORT(cwbDB_Fetch),
    EXPORT(cwbDB_GetColumnCount),
    EXPORT(cwbDB_GetColumnLength),
    EXPORT(cwbDB_GetColumnType),
    EXPORT(cwbDB_GetColumnCCSID),
    EXPORT(cwbDB_GetColumnName),
    EXPORT(cwbDB_GetColumnScale),
    EXPORT(cwbDB_GetDataPointer),
    EXPORT(cwbDB_GetDataLength),
    EXPORT(cwbDB_SetNamingConvention),
    EXPORT(DominoGetSession),
    EXPORT(DominoCloseSession),
    EXPORT(DominoFindFirstDatabase),
    EXPORT(DominoFindNextDatabase),
    EXPORT(DominoGetDatabaseInfo),
    EXPORT(DominoCopyDatabase),
    EXPORT(DominoGetErrorMessage),
    EXPORT(DominoSetPassword),
    EXPORT(DominoGetNotesVersion),
    EXPORT(HrESEBackupPrepare),
    EXPORT(HrESEBackupSetup),
    EXPORT(HrESEBackupOpenFile),
    EXPORT(HrESEBackupReadFile),
    EXPORT(HrESEBackupCloseFile),
    EXPORT(HrESEBackupGetLogAndPatchFiles),
    EXPORT(HrESEBackupTruncateLogs),
    EXPORT(HrESEBackupInstanceEnd),
    EXPORT(HrESEBackupEnd),
    EXPORT(HrESEBackupRestoreGetRegistered),
    EXPORT(HrESERestoreOpen),
    EXPORT(HrESERestoreReopen),
    EXPORT(HrESERestoreAddDatabase),
    EXPORT(HrESERestoreOpenFile),
    EXPORT(HrESERestoreSaveEnvironment),
    EXPORT(HrESERestoreComplete),
    EXPORT(HrESERestoreClose),
    EXPORT(MapiCreate),
    EXPORT(MapiDelete),
    EXPORT(MapiRestore),
    EXPORT(MapiFindFolder),
    EXPORT(MapiOpenFolderSearch),
    EXPORT(MapiGetNextFolder),
    EXPORT(MapiCloseSearch),
    EXPORT(MapiOpenMailSearch),
    EXPORT(MapiGetNextMail),
    EXPORT(MapiGetNextMails),
    EXPORT(MapiReadMail),
    EXPORT(MapiWriteMail),
    EXPORT(MapiCloseMail),
    EXPORT(MapiLoginProfile),
    EXPORT(MapiCreateProfileWithIProfAdmin),
    EXPORT(MapiDeleteProfile),
    EXPORT(MapiOpenMail),
    EXPORT(MapiGetLastError),
    EXPORT(MapiBackupDLLVersion),
    EXPORT(MapiChangeDupID),
};

#undef EXPORT

std::string Units(std::size_t count)
{
    std::string digits;
    for (std::size_t at = 0; at < count; ++at)
        digits += "6500";
    return digits;
}

} // namespace

const FakeModule::Exports &Recorders()
{
    return exports;
}

void ScriptRecorders(std::uint8_t seed, std::size_t readable)
{
    answers.clear();
    if (seed % 4 == 0)
        return;
    const std::string number = "=" + std::to_string(seed);
    for (const char *const out : {"result",  "error",  "context", "file",      "size",   "count",  "mapi",    "value",
                                  "value1",  "value2", "value3",  "value4",    "count1", "count2", "version", "system",
                                  "program", "ccsid",  "page",    "converter", "errors", "needed"})
        answers += out + number + " ";
    // The longest text fits into the room that the functions have for one.
    for (const char *const out : {"text1", "text2", "text3", "text7", "digits"})
        answers += out + ("=" + Units(seed)) + " ";
    answers += "instances=" + std::to_string(seed % 3) + " registered=" + std::to_string(seed % 3);
    answers += " list=" + (seed % 2 == 0 ? "null" : Units(seed) + "000000000000");
    answers += " count_up=" + std::to_string(readable);
}

} // namespace kessil::test

// What the stand-in libraries are linked with in the place of files.

void Record(const std::string & /*line*/) {}

Behaviour NextBehaviour(const std::string & /*function*/)
{
    return ParseBehaviour(kessil::test::answers);
}

void LeaveLastError(std::uint32_t code)
{
    kessil::platform::SetLastError(code);
}
