#include "callers/signature_table.h"

#include "families/vorn/vorn.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace kessil::test {
namespace {

// The contract with the parents, letter by letter: 191 rows of the first table in their order, and two that only the
// second one has.
const std::vector<std::string> signatures = {
    "SIG_HR_ESE_BACKUP_PREPARE",
    "SIG_HR_ESE_BACKUP_END",
    "SIG_HR_ESE_BACKUP_CLOSE_FILE",
    "SIG_HR_ESE_BACKUP_INSTANCE_END",
    "SIG_HR_ESE_BACKUP_TRUNCATE_LOGS",
    "SIG_HR_ESE_BACKUP_RESTORE_CLOSE",
    "SIGNATURE_ESE_RESTORE_SAVE_ENVIRONMENT",
    "SIGNATURE_ESE_BACKUP_SETUP",
    "SIGNATURE_ESE_BACKUP_GET_LOG_AND_PATCH_FILES",
    "SIGNATURE_ESE_BACKUP_OPEN_FILE",
    "SIGNATURE_ESE_RESTORE_OPEN_FILE",
    "SIGNATURE_ESE_RESTORE_OPEN",
    "SIGNATURE_ESE_RESTORE_REOPEN",
    "SIGNATURE_ESE_RESTORE_COMPLETE",
    "SIGNATURE_ESE_RESTORE_ADD_DATABASE",
    "SIGNATURE_ESE_BACKUP_RESTORE_GET_REGISTERED",
    "SIGNATURE_ESE_BACKUP_READ_FILE",
    "SIGNATURE_CWBCO_CREATESYSTEM",
    "SIGNATURE_CWBCO_SETUSERIDEX",
    "SIGNATURE_CWBCO_SETPASSWORD",
    "SIGNATURE_CWBCO_SETPROMPTMODE",
    "SIGNATURE_CWBCO_DELETESYSTEM",
    "SIGNATURE_CWBRC_STARTSYSEX",
    "SIGNATURE_CWBRC_CREATEPGM",
    "SIGNATURE_CWBRC_RUNCMD",
    "SIGNATURE_CWBRC_ADDPARM",
    "SIGNATURE_CWBRC_CALLPGM_GETBUFFER",
    "SIGNATURE_CWBRC_CALLPGM_DELETEBUFFER",
    "SIGNATURE_CWBRC_CALLPGM",
    "SIGNATURE_CWBRC_DELETEPGM",
    "SIGNATURE_CWBRC_STOPSYS",
    "SIGNATURE_CWBNL_GETHOSTCCSID",
    "SIGNATURE_CWBNL_CCSIDTOCODEPAGE",
    "SIGNATURE_CWBNL_CODEPAGETOCCSID",
    "SIGNATURE_CWBNL_GETCODEPAGE",
    "SIGNATURE_CWBNL_CREATECONVERTER",
    "SIGNATURE_CWBNL_DELETECONVERTER",
    "SIGNATURE_CWBNL_CONVERT",
    "SIGNATURE_CWBNL_GETANSICODEPAGE",
    "SIGNATURE_CWBSV_CREATEERRHANDLE",
    "SIGNATURE_CWBSV_DELETEERRHANDLE",
    "SIGNATURE_CWBSV_GETERRCOUNT",
    "SIGNATURE_CWBSV_GETERRTEXTINDEXED",
    "SIGNATURE_CWBDT_STRINGTOPACKED",
    "SIGNATURE_CWBDT_PACKEDTOSTRING",
    "SIGNATURE_CWBDB_SETSTATEMENTNAME",
    "SIGNATURE_CWBDB_SETCURSORNAME",
    "SIGNATURE_CWBDB_SETSTATEMENTTEXT",
    "SIGNATURE_CWBDB_DELETEDATAHANDLE",
    "SIGNATURE_CWBDB_DELETEDATAFORMATHANDLE",
    "SIGNATURE_CWBDB_DELETESQLREQUESTHANDLE",
    "SIGNATURE_CWBDB_STOPSERVER",
    "SIGNATURE_CWBDB_DELETECONNECTIONHANDLE",
    "SIGNATURE_CWBDB_CREATEDATAHANDLE",
    "SIGNATURE_CWBDB_CREATECONNECTIONHANDLEEX",
    "SIGNATURE_CWBDB_STARTSERVER",
    "SIGNATURE_CWBDB_CREATESQLREQUESTHANDLE",
    "SIGNATURE_CWBDB_CREATEDATAFORMATHANDLE",
    "SIGNATURE_CWBDB_SETCLIENTINPUTCCSID",
    "SIGNATURE_CWBDB_RETURNHOSTERRORINFO",
    "SIGNATURE_CWBDB_SETDESCRIBEOPTION",
    "SIGNATURE_CWBDB_STOREREQUESTPARAMETERS",
    "SIGNATURE_CWBDB_RETURNDATAFORMAT",
    "SIGNATURE_CWBDB_PREPAREDESCRIBE",
    "SIGNATURE_CWBDB_OPEN",
    "SIGNATURE_CWBDB_SETBLOCKCOUNT",
    "SIGNATURE_CWBDB_RETURNDATA",
    "SIGNATURE_CWBDB_FETCH",
    "SIGNATURE_CWBDB_GETCOLUMNCOUNT",
    "SIGNATURE_CWBDB_GETCOLUMNLENGTH",
    "SIGNATURE_CWBDB_GETCOLUMNTYPE",
    "SIGNATURE_CWBDB_GETCOLUMNCCSID",
    "SIGNATURE_CWBDB_GETCOLUMNNAME",
    "SIGNATURE_CWBDB_GETCOLUMNSCALE",
    "SIGNATURE_CWBDB_GETDATAPOINTER",
    "SIGNATURE_CWBDB_GETDATALENGTH",
    "SIGNATURE_CWBDB_SETNAMINGCONVENTION",
    "SIGNATURE_MapiCreate",
    "SIGNATURE_MapiDelete",
    "SIGNATURE_MapiRestore",
    "SIGNATURE_MapiFindFolder",
    "SIGNATURE_MapiOpenFolderSearch",
    "SIGNATURE_MapiGetNextFolder",
    "SIGNATURE_MapiCloseSearch",
    "SIGNATURE_MapiOpenMailSearch",
    "SIGNATURE_MapiGetNextMail",
    "SIGNATURE_MapiGetNextMails",
    "SIGNATURE_MapiReadMail",
    "SIGNATURE_MapiWriteMail",
    "SIGNATURE_MapiCloseMail",
    "SIGNATURE_MapiLoginProfile",
    "SIGNATURE_MapiCreateProfileWithIProfAdmin",
    "SIGNATURE_MapiDeleteProfile",
    "SIGNATURE_MapiOpenMail",
    "SIGNATURE_MapiGetLastError",
    "SIGNATURE_MapiBackupDLLVersion",
    "SIGNATURE_MapiChangeDupID",
    "SIGNATURE_VornCreateSession",
    "SIGNATURE_VornCloseSession",
    "SIGNATURE_VornCreateDir",
    "SIGNATURE_VornOpenDir",
    "SIGNATURE_VornGetNextDirItem",
    "SIGNATURE_VornCloseDir",
    "SIGNATURE_VornCreateFile",
    "SIGNATURE_VornOpenFile",
    "SIGNATURE_VornReadFile",
    "SIGNATURE_VornWriteFile",
    "SIGNATURE_VornRestoreFile",
    "SIGNATURE_VornCloseFile",
    "SIGNATURE_VornGetErrorText",
    "SIGNATURE_GetLibApiVersion",
    "SIGNATURE_GetBackupType",
    "SIGNATURE_DominoGetSession",
    "SIGNATURE_DominoCloseSession",
    "SIGNATURE_DominoFindFirstDatabase",
    "SIGNATURE_DominoFindNextDatabase",
    "SIGNATURE_DominoGetDatabaseInfo",
    "SIGNATURE_DominoCopyDatabase",
    "SIGNATURE_DominoGetErrorMessage",
    "SIGNATURE_DominoSetPassword",
    "SIGNATURE_DominoGetNotesVersion",
    "SIGNATURE_VADPGetLibraryVersion",
    "SIGNATURE_VADPCreateCredentials",
    "SIGNATURE_VADPCreateBackupOptions",
    "SIGNATURE_VADPFreeBackupOptions",
    "SIGNATURE_VADPOpenListing",
    "SIGNATURE_VADPNextItem",
    "SIGNATURE_VADPFreeListing",
    "SIGNATURE_VADPStartBackupSession",
    "SIGNATURE_VADPEndBackupSession",
    "SIGNATURE_VADPGetBackupSessionFiles",
    "SIGNATURE_VADPReOpenBackupFile",
    "SIGNATURE_VADPOpenBackupFile",
    "SIGNATURE_VADPReadFileACL",
    "SIGNATURE_VADPReadBackupFile",
    "SIGNATURE_VADPCloseBackupFile",
    "SIGNATURE_VADPListDataStores",
    "SIGNATURE_VADPListMachineProperties",
    "SIGNATURE_VADPListResourcePools",
    "SIGNATURE_VADPPrepareVMRestore",
    "SIGNATURE_VADPSetOverrideValue",
    "SIGNATURE_VADPEndVMRestore",
    "SIGNATURE_VADPCreateACLInfo",
    "SIGNATURE_VADPGetACLInfo",
    "SIGNATURE_VADPWriteFileACL",
    "SIGNATURE_VADPOpenRestoreFile",
    "SIGNATURE_VADPWriteRestoreFile",
    "SIGNATURE_VADPCloseRestoreFile",
    "SIGNATURE_VADPInitVixDiskLib",
    "SIGNATURE_VADPAddFolder",
    "SIGNATURE_VADPExitVixDiskLib",
    "SIGNATURE_VADPCreateListingCache",
    "SIGNATURE_VADPDeleteVM",
    "SIGNATURE_VADPFreeListingCache",
    "SIGNATURE_VADPFreeCredentials",
    "SIGNATURE_VADPGetReadBufferUse",
    "SIGNATURE_VADPgetIndexBlocks",
    "SIGNATURE_VADPReconfigureMachine",
    "SIGNATURE_VADPOpenConfigRead",
    "SIGNATURE_VADPListConfigItems",
    "SIGNATURE_VADPGetDiskChangedSectorNum",
    "SIGNATURE_VADPGetDiskChangeIDS",
    "SIGNATURE_VADPRenameMachine",
    "SIGNATURE_VADPPowerOnVDR",
    "SIGNATURE_VADPPowerOff",
    "SIGNATURE_VADPWriteRestoreFileIncremental",
    "SIGNATURE_VADPCloseRestoreFileIncremental",
    "SIGNATURE_VADPOpenRestoreFileIncremental",
    "SIGNATURE_VADPEndVMRestoreIncremental",
    "SIGNATURE_VADPPrepareVMRestoreIncremental",
    "SIGNATURE_VADPReadBlock",
    "SIGNATURE_VADPVADPVersion",
    "SIGNATURE_VADPListDatacenters",
    "SIGNATURE_VADPListMachines",
    "SIGNATURE_VADPListFolders",
    "SIGNATURE_VADPListHosts",
    "SIGNATURE_VADPSnapshotVM",
    "SIGNATURE_VADPGetVMConfig",
    "SIGNATURE_VADPGetSnapshotConfig",
    "SIGNATURE_VADPOpenDisk",
    "SIGNATURE_VADPCloseDisk",
    "SIGNATURE_VADPReadSectors",
    "SIGNATURE_VADPWriteSectors",
    "SIGNATURE_VADPSetVMConfig",
    "SIGNATURE_VADPCreateVM",
    "SIGNATURE_VADPReconfigVM",
    "SIGNATURE_VADPPowerOnVaioVM",
    "SIGNATURE_VADPPowerOffVaioVM",
    "SIGNATURE_VADPGetHostCpus",
    "SIGNATURE_VADPAttachPolicy",
    "SIGNATURE_VADPReadBlockSignature",
    "SIGNATURE_VADPDeleteVaioVM",
    "SIGNATURE_VADPCloneVM",
};

// What is served so far; every other row is answered as unknown.
const std::map<std::string, Handler> served = {
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
};

std::vector<std::string> TableSignatures()
{
    std::vector<std::string> strings;
    for (const SignatureRow &row : SignatureTable())
        strings.emplace_back(row.signature);
    return strings;
}

TEST(SignatureTable, EverySignatureInItsPlace)
{
    ASSERT_EQ(signatures.size(), 193u);
    EXPECT_EQ(TableSignatures(), signatures);
}

TEST(SignatureTable, NoSignatureTwice)
{
    const std::vector<std::string> strings = TableSignatures();
    EXPECT_EQ(std::set<std::string>(strings.begin(), strings.end()).size(), 193u);
}

TEST(SignatureTable, HandlersOfTheFirstGeneration)
{
    for (const SignatureRow &row : SignatureTable()) {
        const auto handler = served.find(row.signature);
        EXPECT_EQ(row.first, handler == served.end() ? nullptr : handler->second) << row.signature;
    }
}

TEST(SignatureTable, SecondGenerationHoldsTheSameHandlers)
{
    for (const SignatureRow &row : SignatureTable())
        EXPECT_EQ(row.second, row.first) << row.signature;
}

TEST(SignatureTable, FifteenHandlersAndAllDifferent)
{
    std::set<Handler> handlers;
    for (const SignatureRow &row : SignatureTable()) {
        if (row.first != nullptr)
            handlers.insert(row.first);
    }
    EXPECT_EQ(handlers.size(), 15u);
}

// The two rows that stand at the end are in the second table alone.
TEST(SignatureTable, LastTwoRowsHaveNoFirstHandler)
{
    const auto table = SignatureTable();
    ASSERT_EQ(table.size(), 193u);
    EXPECT_EQ(table[191].first, nullptr);
    EXPECT_EQ(table[192].first, nullptr);
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
