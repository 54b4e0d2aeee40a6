#include "families/signature_table.h"

#include "families/cwb/cwb.h"
#include "families/domino/domino.h"
#include "families/ese/ese.h"
#include "families/mapi/mapi.h"
#include "families/vadp/vadp.h"
#include "families/vorn/vorn.h"
#include "support/signatures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace kessil::test {
namespace {

// All families but the virtual-machine adapter's have one handler for both generations.
const std::map<std::string, Handler> of_both = {
    {"SIG_HR_ESE_BACKUP_PREPARE", Process_HrESEBackupPrepare},
    {"SIG_HR_ESE_BACKUP_END", Process_HrESEBackupEnd},
    {"SIG_HR_ESE_BACKUP_CLOSE_FILE", Process_HrESEBackupCloseFile},
    {"SIG_HR_ESE_BACKUP_INSTANCE_END", Process_HrESEBackupInstanceEnd},
    {"SIG_HR_ESE_BACKUP_TRUNCATE_LOGS", Process_HrESEBackupTruncateLogs},
    {"SIG_HR_ESE_BACKUP_RESTORE_CLOSE", Process_HrESERestoreClose},
    {"SIGNATURE_ESE_RESTORE_SAVE_ENVIRONMENT", Process_HrESERestoreSaveEnvironment},
    {"SIGNATURE_ESE_BACKUP_SETUP", Process_HrESEBackupSetup},
    {"SIGNATURE_ESE_BACKUP_GET_LOG_AND_PATCH_FILES", Process_HrESEBackupGetLogAndPatchFiles},
    {"SIGNATURE_ESE_BACKUP_OPEN_FILE", Process_HrESEBackupOpenFile},
    {"SIGNATURE_ESE_RESTORE_OPEN_FILE", Process_HrESERestoreOpenFile},
    {"SIGNATURE_ESE_RESTORE_OPEN", Process_HrESERestoreOpen},
    {"SIGNATURE_ESE_RESTORE_REOPEN", Process_HrESERestoreReopen},
    {"SIGNATURE_ESE_RESTORE_COMPLETE", Process_HrESERestoreComplete},
    {"SIGNATURE_ESE_RESTORE_ADD_DATABASE", Process_HrESERestoreAddDatabase},
    {"SIGNATURE_ESE_BACKUP_RESTORE_GET_REGISTERED", Process_HrESEBackupRestoreGetRegistered},
    {"SIGNATURE_ESE_BACKUP_READ_FILE", Process_HrESEBackupReadFile},
    {"SIGNATURE_CWBCO_CREATESYSTEM", Process_cwbCO_CreateSystem},
    {"SIGNATURE_CWBCO_SETUSERIDEX", Process_cwbCO_SetUserIDEx},
    {"SIGNATURE_CWBCO_SETPASSWORD", Process_cwbCO_SetPassword},
    {"SIGNATURE_CWBCO_SETPROMPTMODE", Process_cwbCO_SetPromptMode},
    {"SIGNATURE_CWBCO_DELETESYSTEM", Process_cwbCO_DeleteSystem},
    {"SIGNATURE_CWBRC_STARTSYSEX", Process_cwbRC_StartSysEx},
    {"SIGNATURE_CWBRC_CREATEPGM", Process_cwbRC_CreatePgm},
    {"SIGNATURE_CWBRC_RUNCMD", Process_cwbRC_RunCmd},
    {"SIGNATURE_CWBRC_ADDPARM", Process_cwbRC_AddParm},
    {"SIGNATURE_CWBRC_CALLPGM_GETBUFFER", Process_cwbRC_CallPgm_GetBuffer},
    {"SIGNATURE_CWBRC_CALLPGM_DELETEBUFFER", Process_cwbRC_CallPgm_DeleteBuffer},
    {"SIGNATURE_CWBRC_CALLPGM", Process_cwbRC_CallPgm},
    {"SIGNATURE_CWBRC_DELETEPGM", Process_cwbRC_DeletePgm},
    {"SIGNATURE_CWBRC_STOPSYS", Process_cwbRC_StopSys},
    {"SIGNATURE_CWBNL_GETHOSTCCSID", Process_cwbNL_GetHostCCSID},
    {"SIGNATURE_CWBNL_CCSIDTOCODEPAGE", Process_cwbNL_CCSIDToCodePage},
    {"SIGNATURE_CWBNL_CODEPAGETOCCSID", Process_cwbNL_CodePageToCCSID},
    {"SIGNATURE_CWBNL_GETCODEPAGE", Process_cwbNL_GetCodePage},
    {"SIGNATURE_CWBNL_CREATECONVERTER", Process_cwbNL_CreateConverter},
    {"SIGNATURE_CWBNL_DELETECONVERTER", Process_cwbNL_DeleteConverter},
    {"SIGNATURE_CWBNL_CONVERT", Process_cwbNL_Convert},
    {"SIGNATURE_CWBNL_GETANSICODEPAGE", Process_cwbNL_GetANSICodePage},
    {"SIGNATURE_CWBSV_CREATEERRHANDLE", Process_cwbSV_CreateErrHandle},
    {"SIGNATURE_CWBSV_DELETEERRHANDLE", Process_cwbSV_DeleteErrHandle},
    {"SIGNATURE_CWBSV_GETERRCOUNT", Process_cwbSV_GetErrCount},
    {"SIGNATURE_CWBSV_GETERRTEXTINDEXED", Process_cwbSV_GetErrTextIndexed},
    {"SIGNATURE_CWBDT_STRINGTOPACKED", Process_cwbDT_StringToPacked},
    {"SIGNATURE_CWBDT_PACKEDTOSTRING", Process_cwbDT_PackedToString},
    {"SIGNATURE_CWBDB_SETSTATEMENTNAME", Process_cwbDB_SetStatementName},
    {"SIGNATURE_CWBDB_SETCURSORNAME", Process_cwbDB_SetCursorName},
    {"SIGNATURE_CWBDB_SETSTATEMENTTEXT", Process_cwbDB_SetStatementText},
    {"SIGNATURE_CWBDB_DELETEDATAHANDLE", Process_cwbDB_DeleteDataHandle},
    {"SIGNATURE_CWBDB_DELETEDATAFORMATHANDLE", Process_cwbDB_DeleteDataFormatHandle},
    {"SIGNATURE_CWBDB_DELETESQLREQUESTHANDLE", Process_cwbDB_DeleteSQLRequestHandle},
    {"SIGNATURE_CWBDB_STOPSERVER", Process_cwbDB_StopServer},
    {"SIGNATURE_CWBDB_DELETECONNECTIONHANDLE", Process_cwbDB_DeleteConnectionHandle},
    {"SIGNATURE_CWBDB_CREATEDATAHANDLE", Process_cwbDB_CreateDataHandle},
    {"SIGNATURE_CWBDB_CREATECONNECTIONHANDLEEX", Process_cwbDB_CreateConnectionHandleEx},
    {"SIGNATURE_CWBDB_STARTSERVER", Process_cwbDB_StartServer},
    {"SIGNATURE_CWBDB_CREATESQLREQUESTHANDLE", Process_cwbDB_CreateSQLRequestHandle},
    {"SIGNATURE_CWBDB_CREATEDATAFORMATHANDLE", Process_cwbDB_CreateDataFormatHandle},
    {"SIGNATURE_CWBDB_SETCLIENTINPUTCCSID", Process_cwbDB_SetClientInputCCSID},
    {"SIGNATURE_CWBDB_RETURNHOSTERRORINFO", Process_cwbDB_ReturnHostErrorInfo},
    {"SIGNATURE_CWBDB_SETDESCRIBEOPTION", Process_cwbDB_SetDescribeOption},
    {"SIGNATURE_CWBDB_STOREREQUESTPARAMETERS", Process_cwbDB_StoreRequestParameters},
    {"SIGNATURE_CWBDB_RETURNDATAFORMAT", Process_cwbDB_ReturnDataFormat},
    {"SIGNATURE_CWBDB_PREPAREDESCRIBE", Process_cwbDB_PrepareDescribe},
    {"SIGNATURE_CWBDB_OPEN", Process_cwbDB_Open},
    {"SIGNATURE_CWBDB_SETBLOCKCOUNT", Process_cwbDB_SetBlockCount},
    {"SIGNATURE_CWBDB_RETURNDATA", Process_cwbDB_ReturnData},
    {"SIGNATURE_CWBDB_FETCH", Process_cwbDB_Fetch},
    {"SIGNATURE_CWBDB_GETCOLUMNCOUNT", Process_cwbDB_GetColumnCount},
    {"SIGNATURE_CWBDB_GETCOLUMNLENGTH", Process_cwbDB_GetColumnLength},
    {"SIGNATURE_CWBDB_GETCOLUMNTYPE", Process_cwbDB_GetColumnType},
    {"SIGNATURE_CWBDB_GETCOLUMNCCSID", Process_cwbDB_GetColumnCCSID},
    {"SIGNATURE_CWBDB_GETCOLUMNNAME", Process_cwbDB_GetColumnName},
    {"SIGNATURE_CWBDB_GETCOLUMNSCALE", Process_cwbDB_GetColumnScale},
    {"SIGNATURE_CWBDB_GETDATAPOINTER", Process_cwbDB_GetDataPointer},
    {"SIGNATURE_CWBDB_GETDATALENGTH", Process_cwbDB_GetDataLength},
    {"SIGNATURE_CWBDB_SETNAMINGCONVENTION", Process_cwbDB_SetNamingConvention},
    {"SIGNATURE_MapiCreate", Process_MapiCreate},
    {"SIGNATURE_MapiDelete", Process_MapiDelete},
    {"SIGNATURE_MapiRestore", Process_MapiRestore},
    {"SIGNATURE_MapiFindFolder", Process_MapiFindFolder},
    {"SIGNATURE_MapiOpenFolderSearch", Process_MapiOpenFolderSearch},
    {"SIGNATURE_MapiGetNextFolder", Process_MapiGetNextFolder},
    {"SIGNATURE_MapiCloseSearch", Process_MapiCloseSearch},
    {"SIGNATURE_MapiOpenMailSearch", Process_MapiOpenMailSearch},
    {"SIGNATURE_MapiGetNextMail", Process_MapiGetNextMail},
    {"SIGNATURE_MapiGetNextMails", Process_MapiGetNextMails},
    {"SIGNATURE_MapiReadMail", Process_MapiReadMail},
    {"SIGNATURE_MapiWriteMail", Process_MapiWriteMail},
    {"SIGNATURE_MapiCloseMail", Process_MapiCloseMail},
    {"SIGNATURE_MapiLoginProfile", Process_MapiLoginProfile},
    {"SIGNATURE_MapiCreateProfileWithIProfAdmin", Process_MapiCreateProfileWithIProfAdmin},
    {"SIGNATURE_MapiDeleteProfile", Process_MapiDeleteProfile},
    {"SIGNATURE_MapiOpenMail", Process_MapiOpenMail},
    {"SIGNATURE_MapiGetLastError", Process_MapiGetLastError},
    {"SIGNATURE_MapiBackupDLLVersion", Process_MapiBackupDLLVersion},
    {"SIGNATURE_MapiChangeDupID", Process_MapiChangeDupID},
    {"SIGNATURE_VornCreateSession", Process_VornCreateSession},
    {"SIGNATURE_VornCloseSession", Process_VornCloseSession},
    {"SIGNATURE_VornCreateDir", Process_VornCreateDir},
    {"SIGNATURE_VornOpenDir", Process_VornOpenDir},
    {"SIGNATURE_VornGetNextDirItem", Process_VornGetNextDirItem},
    {"SIGNATURE_VornCloseDir", Process_VornCloseDir},
    {"SIGNATURE_VornCreateFile", Process_VornCreateFile},
    {"SIGNATURE_VornOpenFile", Process_VornOpenFile},
    {"SIGNATURE_VornReadFile", Process_VornReadFile},
    {"SIGNATURE_VornWriteFile", Process_VornWriteFile},
    {"SIGNATURE_VornRestoreFile", Process_VornRestoreFile},
    {"SIGNATURE_VornCloseFile", Process_VornCloseFile},
    {"SIGNATURE_VornGetErrorText", Process_VornGetErrorText},
    {"SIGNATURE_GetLibApiVersion", Process_GetLibApiVersion},
    {"SIGNATURE_GetBackupType", Process_GetBackupType},
    {"SIGNATURE_DominoGetSession", Process_DominoGetSession},
    {"SIGNATURE_DominoCloseSession", Process_DominoCloseSession},
    {"SIGNATURE_DominoFindFirstDatabase", Process_DominoFindFirstDatabase},
    {"SIGNATURE_DominoFindNextDatabase", Process_DominoFindNextDatabase},
    {"SIGNATURE_DominoGetDatabaseInfo", Process_DominoGetDatabaseInfo},
    {"SIGNATURE_DominoCopyDatabase", Process_DominoCopyDatabase},
    {"SIGNATURE_DominoGetErrorMessage", Process_DominoGetErrorMessage},
    {"SIGNATURE_DominoSetPassword", Process_DominoSetPassword},
    {"SIGNATURE_DominoGetNotesVersion", Process_DominoGetNotesVersion},
};

struct Generations
{
    Handler first;
    Handler second;
};

const std::map<std::string, Generations> of_the_adapter = {
    {"SIGNATURE_VADPGetLibraryVersion", {Process_VADPGetLibraryVersion, ProcessAlt_VADPGetLibraryVersion}},
    {"SIGNATURE_VADPCreateCredentials", {Process_VADPCreateCredentials, ProcessAlt_VADPCreateCredentials}},
    {"SIGNATURE_VADPCreateBackupOptions", {Process_VADPCreateBackupOptions, ProcessAlt_VADPCreateBackupOptions}},
    {"SIGNATURE_VADPFreeBackupOptions", {Process_VADPFreeBackupOptions, Process_VADPFreeBackupOptions}},
    {"SIGNATURE_VADPOpenListing", {Process_VADPOpenListing, ProcessAlt_VADPOpenListing}},
    {"SIGNATURE_VADPNextItem", {Process_VADPNextItem, Process_VADPNextItem}},
    {"SIGNATURE_VADPFreeListing", {Process_VADPFreeListing, Process_VADPFreeListing}},
    {"SIGNATURE_VADPStartBackupSession", {Process_VADPStartBackupSession, ProcessAlt_VADPStartBackupSession}},
    {"SIGNATURE_VADPEndBackupSession", {Process_VADPEndBackupSession, ProcessAlt_VADPEndBackupSession}},
    {"SIGNATURE_VADPGetBackupSessionFiles", {Process_VADPGetBackupSessionFiles, Process_VADPGetBackupSessionFiles}},
    {"SIGNATURE_VADPReOpenBackupFile", {Process_VADPReOpenBackupFile, Process_VADPReOpenBackupFile}},
    {"SIGNATURE_VADPOpenBackupFile", {Process_VADPOpenBackupFile, Process_VADPOpenBackupFile}},
    {"SIGNATURE_VADPReadFileACL", {Process_VADPReadFileACL, Process_VADPReadFileACL}},
    {"SIGNATURE_VADPReadBackupFile", {Process_VADPReadBackupFile, Process_VADPReadBackupFile}},
    {"SIGNATURE_VADPCloseBackupFile", {Process_VADPCloseBackupFile, Process_VADPCloseBackupFile}},
    {"SIGNATURE_VADPListDataStores", {Process_VADPListDataStores, ProcessAlt_VADPListDataStores}},
    {"SIGNATURE_VADPListMachineProperties", {Process_VADPListMachineProperties, Process_VADPListMachineProperties}},
    {"SIGNATURE_VADPListResourcePools", {Process_VADPListResourcePools, Process_VADPListResourcePools}},
    {"SIGNATURE_VADPPrepareVMRestore", {Process_VADPPrepareVMRestore, ProcessAlt_VADPPrepareVMRestore}},
    {"SIGNATURE_VADPSetOverrideValue", {Process_VADPSetOverrideValue, ProcessAlt_VADPSetOverrideValue}},
    {"SIGNATURE_VADPEndVMRestore", {Process_VADPEndVMRestore, ProcessAlt_VADPEndVMRestore}},
    {"SIGNATURE_VADPCreateACLInfo", {Process_VADPCreateACLInfo, Process_VADPCreateACLInfo}},
    {"SIGNATURE_VADPGetACLInfo", {Process_VADPGetACLInfo, Process_VADPGetACLInfo}},
    {"SIGNATURE_VADPWriteFileACL", {Process_VADPWriteFileACL, ProcessAlt_VADPWriteFileACL}},
    {"SIGNATURE_VADPOpenRestoreFile", {Process_VADPOpenRestoreFile, ProcessAlt_VADPOpenRestoreFile}},
    {"SIGNATURE_VADPWriteRestoreFile", {Process_VADPWriteRestoreFile, ProcessAlt_VADPWriteRestoreFile}},
    {"SIGNATURE_VADPCloseRestoreFile", {Process_VADPCloseRestoreFile, ProcessAlt_VADPCloseRestoreFile}},
    {"SIGNATURE_VADPInitVixDiskLib", {Process_VADPInitVixDiskLib, ProcessAlt_VADPInitVixDiskLib}},
    {"SIGNATURE_VADPAddFolder", {Process_VADPAddFolder, ProcessAlt_VADPAddFolder}},
    {"SIGNATURE_VADPExitVixDiskLib", {Process_VADPExitVixDiskLib, ProcessAlt_VADPExitVixDiskLib}},
    {"SIGNATURE_VADPCreateListingCache", {Process_VADPCreateListingCache, Process_VADPCreateListingCache}},
    {"SIGNATURE_VADPDeleteVM", {Process_VADPDeleteVM, ProcessAlt_VADPDeleteVM}},
    {"SIGNATURE_VADPFreeListingCache", {Process_VADPFreeListingCache, Process_VADPFreeListingCache}},
    {"SIGNATURE_VADPFreeCredentials", {Process_VADPFreeCredentials, Process_VADPFreeCredentials}},
    {"SIGNATURE_VADPGetReadBufferUse", {Process_VADPGetReadBufferUse, Process_VADPGetReadBufferUse}},
    {"SIGNATURE_VADPgetIndexBlocks", {Process_VADPgetIndexBlocks, Process_VADPgetIndexBlocks}},
    {"SIGNATURE_VADPReconfigureMachine", {Process_VADPReconfigureMachine, Process_VADPReconfigureMachine}},
    {"SIGNATURE_VADPOpenConfigRead", {Process_VADPOpenConfigRead, Process_VADPOpenConfigRead}},
    {"SIGNATURE_VADPListConfigItems", {Process_VADPListConfigItems, Process_VADPListConfigItems}},
    {"SIGNATURE_VADPGetDiskChangedSectorNum",
     {Process_VADPGetDiskChangedSectorNum, ProcessAlt_VADPGetDiskChangedSectorNum}},
    {"SIGNATURE_VADPGetDiskChangeIDS", {Process_VADPGetDiskChangeIDS, ProcessAlt_VADPGetDiskChangeIDS}},
    {"SIGNATURE_VADPRenameMachine", {Process_VADPRenameMachine, ProcessAlt_VADPRenameMachine}},
    {"SIGNATURE_VADPPowerOnVDR", {Process_VADPPowerOn, ProcessAlt_VADPPowerOn}},
    {"SIGNATURE_VADPPowerOff", {Process_VADPPowerOff, ProcessAlt_VADPPowerOff}},
    {"SIGNATURE_VADPWriteRestoreFileIncremental",
     {Process_VADPWriteRestoreFileIncremental, ProcessAlt_VADPWriteRestoreFileIncremental}},
    {"SIGNATURE_VADPCloseRestoreFileIncremental",
     {Process_VADPCloseRestoreFileIncremental, ProcessAlt_VADPCloseRestoreFileIncremental}},
    {"SIGNATURE_VADPOpenRestoreFileIncremental",
     {Process_VADPOpenRestoreFileIncremental, ProcessAlt_VADPOpenRestoreFileIncremental}},
    {"SIGNATURE_VADPEndVMRestoreIncremental",
     {Process_VADPEndVMRestoreIncremental, ProcessAlt_VADPEndVMRestoreIncremental}},
    {"SIGNATURE_VADPPrepareVMRestoreIncremental",
     {Process_VADPPrepareVMRestoreIncremental, ProcessAlt_VADPPrepareVMRestoreIncremental}},
    {"SIGNATURE_VADPReadBlock", {Process_VADPReadBlock, Process_VADPReadBlock}},
    {"SIGNATURE_VADPVADPVersion", {Process_VADPVersion, Process_VADPVersion}},
    {"SIGNATURE_VADPListDatacenters", {Process_VADPListDatacenters, ProcessAlt_VADPListDatacenters}},
    {"SIGNATURE_VADPListMachines", {Process_VADPListMachines, ProcessAlt_VADPListMachines}},
    {"SIGNATURE_VADPListFolders", {Process_VADPListFolders, ProcessAlt_VADPListFolders}},
    {"SIGNATURE_VADPListHosts", {Process_VADPListHosts, ProcessAlt_VADPListHosts}},
    {"SIGNATURE_VADPSnapshotVM", {Process_VADPSnapshotVM, ProcessAlt_VADPSnapshotVM}},
    {"SIGNATURE_VADPGetVMConfig", {Process_VADPGetVMConfig, ProcessAlt_VADPGetVMConfig}},
    {"SIGNATURE_VADPGetSnapshotConfig", {Process_VADPGetSnapshotConfig, ProcessAlt_VADPGetSnapshotConfig}},
    {"SIGNATURE_VADPOpenDisk", {Process_VADPOpenDisk, ProcessAlt_VADPOpenDisk}},
    {"SIGNATURE_VADPCloseDisk", {Process_VADPCloseDisk, ProcessAlt_VADPCloseDisk}},
    {"SIGNATURE_VADPReadSectors", {Process_VADPReadSectors, ProcessAlt_VADPReadSectors}},
    {"SIGNATURE_VADPWriteSectors", {Process_VADPWriteSectors, ProcessAlt_VADPWriteSectors}},
    {"SIGNATURE_VADPSetVMConfig", {Process_VADPSetVMConfig, ProcessAlt_VADPSetVMConfig}},
    {"SIGNATURE_VADPCreateVM", {Process_VADPCreateVM, ProcessAlt_VADPCreateVM}},
    {"SIGNATURE_VADPReconfigVM", {Process_VADPReconfigVM, ProcessAlt_VADPReconfigVM}},
    {"SIGNATURE_VADPPowerOnVaioVM", {Process_VADPPowerOnVaioVM, ProcessAlt_VADPPowerOnVaioVM}},
    {"SIGNATURE_VADPPowerOffVaioVM", {Process_VADPPowerOffVaioVM, ProcessAlt_VADPPowerOffVaioVM}},
    {"SIGNATURE_VADPGetHostCpus", {Process_VADPGetHostCpus, nullptr}},
    {"SIGNATURE_VADPAttachPolicy", {Process_VADPAttachPolicy, ProcessAlt_VADPAttachPolicy}},
    {"SIGNATURE_VADPReadBlockSignature", {Process_VADPReadBlockSignature, nullptr}},
    {"SIGNATURE_VADPDeleteVaioVM", {nullptr, ProcessAlt_VADPDeleteVaioVM}},
    {"SIGNATURE_VADPCloneVM", {nullptr, ProcessAlt_VADPCloneVM}},
};

std::vector<std::string> TableSignatures()
{
    std::vector<std::string> strings;
    for (const SignatureRow &row : SignatureTable())
        strings.emplace_back(row.signature);
    return strings;
}

// How many rows have a handler in that column, and how many handlers there are.
std::size_t Served(Handler SignatureRow::*generation)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(SignatureTable(), [&](const SignatureRow &row) { return row.*generation != nullptr; }));
}
std::size_t Different(Handler SignatureRow::*generation)
{
    std::set<Handler> different;
    for (const SignatureRow &row : SignatureTable())
        different.insert(row.*generation);
    different.erase(nullptr);
    return different.size();
}

TEST(SignatureTable, EverySignatureInItsPlace)
{
    ASSERT_EQ(signatures.size(), 193u);
    EXPECT_EQ(TableSignatures(), std::vector<std::string>(signatures.begin(), signatures.end()));
}

TEST(SignatureTable, NoSignatureTwice)
{
    const std::vector<std::string> strings = TableSignatures();
    EXPECT_EQ(std::set<std::string>(strings.begin(), strings.end()).size(), 193u);
}

TEST(SignatureTable, BothGenerationsShareTheHandlersOfTheOtherFamilies)
{
    ASSERT_EQ(of_both.size(), 121u);
    for (const SignatureRow &row : SignatureTable()) {
        if (of_the_adapter.contains(std::string(row.signature)))
            continue;
        ASSERT_TRUE(of_both.contains(std::string(row.signature))) << row.signature;
        EXPECT_EQ(row.first, of_both.at(std::string(row.signature))) << row.signature;
        EXPECT_EQ(row.second, of_both.at(std::string(row.signature))) << row.signature;
    }
}

TEST(SignatureTable, HandlersOfTheAdapterInTheFirstGeneration)
{
    ASSERT_EQ(of_the_adapter.size(), 72u);
    for (const SignatureRow &row : SignatureTable()) {
        if (const auto expected = of_the_adapter.find(std::string(row.signature)); expected != of_the_adapter.end()) {
            EXPECT_EQ(row.first, expected->second.first) << row.signature;
        }
    }
}

TEST(SignatureTable, HandlersOfTheAdapterInTheSecondGeneration)
{
    for (const SignatureRow &row : SignatureTable()) {
        if (const auto expected = of_the_adapter.find(std::string(row.signature)); expected != of_the_adapter.end()) {
            EXPECT_EQ(row.second, expected->second.second) << row.signature;
        }
    }
}

// 70 handlers of the adapter beside the 121 of the other families.
TEST(SignatureTable, FirstGenerationHas191HandlersAllDifferent)
{
    EXPECT_EQ(Served(&SignatureRow::first), 191u);
    EXPECT_EQ(Different(&SignatureRow::first), 191u);
}

TEST(SignatureTable, SecondGenerationHas191HandlersAllDifferent)
{
    EXPECT_EQ(Served(&SignatureRow::second), 191u);
    EXPECT_EQ(Different(&SignatureRow::second), 191u);
}

TEST(SignatureTable, GenerationsShareTheHandlersOf144Rows)
{
    EXPECT_EQ(std::ranges::count_if(SignatureTable(), [](const SignatureRow &row) { return row.first == row.second; }),
              144);
}

TEST(SignatureTable, OddSpellingsStay)
{
    const std::vector<std::string> strings = TableSignatures();
    const auto count = [&strings](const char *signature) {
        return std::count(strings.begin(), strings.end(), signature);
    };
    EXPECT_EQ(count("SIG_HR_ESE_BACKUP_END"), 1);
    EXPECT_EQ(count("SIGNATURE_ESE_BACKUP_END"), 0);
    EXPECT_EQ(count("SIGNATURE_VADPVADPVersion"), 1);
    EXPECT_EQ(count("SIGNATURE_VADPVersion"), 0);
    EXPECT_EQ(count("SIGNATURE_VADPgetIndexBlocks"), 1);
    EXPECT_EQ(count("SIGNATURE_VADPGetIndexBlocks"), 0);
    EXPECT_EQ(count("SIGNATURE_VADPPowerOnVDR"), 1);
    EXPECT_EQ(count("SIGNATURE_VADPPowerOn"), 0);
}

} // namespace
} // namespace kessil::test
