#pragma once

namespace kessil {

class CIPCCommunication;

// The Notes library: a session, named by a 32-bit handle, and the databases that it reaches. All text is 8-bit. Each
// handler calls the export of its own name. The out-list of a row repeats the in-list first.

void Process_DominoGetSession(CIPCCommunication &channel, void *function);
void Process_DominoCloseSession(CIPCCommunication &channel, void *function);
void Process_DominoFindFirstDatabase(CIPCCommunication &channel, void *function);
void Process_DominoFindNextDatabase(CIPCCommunication &channel, void *function);
void Process_DominoGetDatabaseInfo(CIPCCommunication &channel, void *function);
void Process_DominoCopyDatabase(CIPCCommunication &channel, void *function);

/// Ends the process as abort does when the library returns null, or a text that doesn't fit into the buffer with its
/// zero byte.
void Process_DominoGetErrorMessage(CIPCCommunication &channel, void *function);

void Process_DominoSetPassword(CIPCCommunication &channel, void *function);
void Process_DominoGetNotesVersion(CIPCCommunication &channel, void *function);

} // namespace kessil
