#pragma once

namespace kessil {

class CIPCCommunication;

// The Notes library: a session, a 32-bit handle of the library's, and the databases that it reaches. All text is 8-bit.
// Each handler is written for the export of its own name.

void Process_DominoGetSession(CIPCCommunication &channel, void *function);
void Process_DominoCloseSession(CIPCCommunication &channel, void *function);
void Process_DominoFindFirstDatabase(CIPCCommunication &channel, void *function);
void Process_DominoFindNextDatabase(CIPCCommunication &channel, void *function);
void Process_DominoGetDatabaseInfo(CIPCCommunication &channel, void *function);
void Process_DominoCopyDatabase(CIPCCommunication &channel, void *function);

/// A null text of the library's, or one that doesn't fit into the buffer with its zero byte, ends the process as abort
/// does.
void Process_DominoGetErrorMessage(CIPCCommunication &channel, void *function);

void Process_DominoSetPassword(CIPCCommunication &channel, void *function);
void Process_DominoGetNotesVersion(CIPCCommunication &channel, void *function);

} // namespace kessil
