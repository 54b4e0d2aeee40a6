#include "families/vadp/adapter_call.h"

#include "families/vadp/adapter_log.h"
#include "families/vadp/binding.h"
#include "families/vadp/error_messages.h"

namespace kessil {

AdapterCall::AdapterCall(CIPCCommunication &channel, const char *handler, EntryLog entry)
    : HandlerCall(channel, handler), m_channel(channel), m_handler(handler)
{
    LogEntry(handler, entry);
}

AdapterCall::AdapterCall(CIPCCommunication &channel, const char *handler, const AdapterTexts &texts, EntryLog entry)
    : HandlerCall(channel, handler, FailureTexts{texts.input, texts.output}), m_channel(channel), m_handler(handler),
      m_noErrorText(texts.error)
{
    LogEntry(handler, entry);
}

void AdapterCall::Conclude(bool okay)
{
    TakeErrorText(okay);
    FlushLog();
}

void AdapterCall::TakeErrorText(bool okay)
{
    if (okay)
        return;
    if (g_pfnGetErrorMessage != nullptr)
        m_errorText = TakeErrorMessage(error);
    else
        SendFailureReply(m_channel, m_noErrorText != nullptr
                                        ? WideString(m_noErrorText)
                                        : u"Failed to get error message (" + platform::FromUtf8(m_handler) + u")");
}

void AdapterCall::FlushLog()
{
    flushAdapterLog(m_channel);
}

} // namespace kessil
