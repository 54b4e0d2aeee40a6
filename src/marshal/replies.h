#pragma once

#include "platform/text.h"

namespace kessil {

class CIPCCommunication;

// The three frames that a handler sends. A frame that can't be built or written is dropped and not reported: the
// handler returns as usual, and the request loop finds the broken pipe at its next read.

/// 'S', empty: the call was made, its results lie in the section.
void SendSuccessReply(CIPCCommunication &channel);

/// 'E' with -1 as return code and as system error, and the text.
void SendFailureReply(CIPCCommunication &channel, const WideString &text);

/// 'M' with the value as 32 bits and the text: a notice ahead of the answer.
void SendMessageReply(CIPCCommunication &channel, const WideString &text, unsigned char value);

} // namespace kessil
