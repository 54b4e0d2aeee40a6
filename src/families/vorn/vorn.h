#pragma once

namespace kessil {

class CIPCCommunication;

// The data source: sessions, directories and files, each named by a 64-bit handle. Each handler calls the export of its
// own name.

void Process_VornCreateSession(CIPCCommunication &channel, void *function);
void Process_VornCloseSession(CIPCCommunication &channel, void *function);
void Process_VornCreateDir(CIPCCommunication &channel, void *function);
void Process_VornOpenDir(CIPCCommunication &channel, void *function);
void Process_VornGetNextDirItem(CIPCCommunication &channel, void *function);
void Process_VornCloseDir(CIPCCommunication &channel, void *function);
void Process_VornCreateFile(CIPCCommunication &channel, void *function);
void Process_VornOpenFile(CIPCCommunication &channel, void *function);
void Process_VornReadFile(CIPCCommunication &channel, void *function);
void Process_VornWriteFile(CIPCCommunication &channel, void *function);
void Process_VornRestoreFile(CIPCCommunication &channel, void *function);
void Process_VornCloseFile(CIPCCommunication &channel, void *function);
void Process_VornGetErrorText(CIPCCommunication &channel, void *function);
void Process_GetLibApiVersion(CIPCCommunication &channel, void *function);
void Process_GetBackupType(CIPCCommunication &channel, void *function);

} // namespace kessil
