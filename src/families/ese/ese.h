#pragma once

namespace kessil {

class CIPCCommunication;

// The ESE backup library. Its contexts and files are named by Handles. Each handler calls the export of its own name.
// The out-list of a row repeats the in-list first and ends in the last error.

void Process_HrESEBackupPrepare(CIPCCommunication &channel, void *function);
void Process_HrESEBackupSetup(CIPCCommunication &channel, void *function);
void Process_HrESEBackupOpenFile(CIPCCommunication &channel, void *function);
void Process_HrESEBackupReadFile(CIPCCommunication &channel, void *function);
void Process_HrESEBackupCloseFile(CIPCCommunication &channel, void *function);
void Process_HrESEBackupGetLogAndPatchFiles(CIPCCommunication &channel, void *function);
void Process_HrESEBackupTruncateLogs(CIPCCommunication &channel, void *function);
void Process_HrESEBackupInstanceEnd(CIPCCommunication &channel, void *function);
void Process_HrESEBackupEnd(CIPCCommunication &channel, void *function);
void Process_HrESEBackupRestoreGetRegistered(CIPCCommunication &channel, void *function);

void Process_HrESERestoreOpen(CIPCCommunication &channel, void *function);
void Process_HrESERestoreReopen(CIPCCommunication &channel, void *function);
void Process_HrESERestoreAddDatabase(CIPCCommunication &channel, void *function);
void Process_HrESERestoreOpenFile(CIPCCommunication &channel, void *function);
void Process_HrESERestoreSaveEnvironment(CIPCCommunication &channel, void *function);
void Process_HrESERestoreComplete(CIPCCommunication &channel, void *function);
void Process_HrESERestoreClose(CIPCCommunication &channel, void *function);

} // namespace kessil
