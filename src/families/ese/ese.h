#pragma once

namespace kessil {

class CIPCCommunication;

// The ESE backup library: backup and restore contexts and file handles, which only the library understands. They cross
// the section as 32 bits; the library's own are as wide as a pointer, and what lies above 32 bits is lost. Each handler
// calls the export of its own name, and every out-list repeats the in-list first and ends in the last error.

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
