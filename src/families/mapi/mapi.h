#pragma once

namespace kessil {

class CIPCCommunication;

// The mail library: one mail object for backing up and restoring mailboxes, which a Handle names. Each handler calls
// the export of its own name. Most out-lists repeat the in-list first.

void Process_MapiCreate(CIPCCommunication &channel, void *function);
void Process_MapiDelete(CIPCCommunication &channel, void *function);
void Process_MapiRestore(CIPCCommunication &channel, void *function);
void Process_MapiFindFolder(CIPCCommunication &channel, void *function);
void Process_MapiOpenFolderSearch(CIPCCommunication &channel, void *function);
void Process_MapiGetNextFolder(CIPCCommunication &channel, void *function);
void Process_MapiCloseSearch(CIPCCommunication &channel, void *function);
void Process_MapiOpenMailSearch(CIPCCommunication &channel, void *function);
void Process_MapiGetNextMail(CIPCCommunication &channel, void *function);
void Process_MapiGetNextMails(CIPCCommunication &channel, void *function);
void Process_MapiReadMail(CIPCCommunication &channel, void *function);
void Process_MapiWriteMail(CIPCCommunication &channel, void *function);
void Process_MapiCloseMail(CIPCCommunication &channel, void *function);
void Process_MapiLoginProfile(CIPCCommunication &channel, void *function);
void Process_MapiCreateProfileWithIProfAdmin(CIPCCommunication &channel, void *function);
void Process_MapiDeleteProfile(CIPCCommunication &channel, void *function);
void Process_MapiOpenMail(CIPCCommunication &channel, void *function);
void Process_MapiGetLastError(CIPCCommunication &channel, void *function);
void Process_MapiBackupDLLVersion(CIPCCommunication &channel, void *function);
void Process_MapiChangeDupID(CIPCCommunication &channel, void *function);

} // namespace kessil
