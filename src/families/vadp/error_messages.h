#pragma once

#include <kessil/adapter_interface.h>

#include <cstdint>
#include <string>

namespace kessil {

class CIPCCommunication;

/// Returns the adapter's text for the record, which may be null, and frees the record. Only while the adapter's
/// "GetErrorMessage" is bound.
std::string TakeErrorMessage(VMLib_ErrorInfo *error);

/// Returns the text for a bare answer. It is empty when `okay`, and the record isn't touched; otherwise it is that of
/// TakeErrorMessage, or a fixed one while "GetErrorMessage" isn't bound.
std::string extractErrMsgAlt(bool okay, VMLib_ErrorInfo *error);

/// Answers with 1, or with -1 and the text.
void sendErrMsgAlt(CIPCCommunication &channel, bool okay, const std::string &text);
void sendErrMsgAlt(CIPCCommunication &channel, bool okay, VMLib_ErrorInfo *error);

/// Answers with the value, or with the text alone: the bytes don't show which of the two it is.
void sendErrMsgAltValue(CIPCCommunication &channel, bool okay, std::int32_t value, const std::string &text);
void sendErrMsgAltValue(CIPCCommunication &channel, bool okay, std::int32_t value, VMLib_ErrorInfo *error);

} // namespace kessil
