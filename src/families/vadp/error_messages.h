#pragma once

#include <kessil/adapter_interface.h>

#include <cstdint>
#include <string>

namespace kessil {

class CIPCCommunication;

/// The adapter's text for a failure, which is freed then. Null is passed on as it is. Only while the adapter's
/// "GetErrorMessage" is bound.
std::string TakeErrorMessage(VMLib_ErrorInfo *error);

/// The text that a bare answer carries: empty when `okay`, which leaves the record alone; otherwise TakeErrorMessage's,
/// or words of its own while there is no such function.
std::string extractErrMsgAlt(bool okay, VMLib_ErrorInfo *error);

/// Answers with 1, or with -1 and the text.
void sendErrMsgAlt(CIPCCommunication &channel, bool okay, const std::string &text);
void sendErrMsgAlt(CIPCCommunication &channel, bool okay, VMLib_ErrorInfo *error);

/// Answers with the value, or with the text alone: a parent can't tell a value from a text's length by itself.
void sendErrMsgAltValue(CIPCCommunication &channel, bool okay, std::int32_t value, const std::string &text);
void sendErrMsgAltValue(CIPCCommunication &channel, bool okay, std::int32_t value, VMLib_ErrorInfo *error);

} // namespace kessil
