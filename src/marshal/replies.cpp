#include "marshal/replies.h"

#include "channel/ipc_communication.h"
#include "channel/records.h"

namespace kessil {

void SendSuccessReply(CIPCCommunication &channel)
{
    WideString dropped;
    static_cast<void>(channel.SendSuccess(dropped));
}

void SendFailureReply(CIPCCommunication &channel, const WideString &text)
{
    WideString dropped;
    static_cast<void>(IPCStruct_Error{-1, -1, text}.Send(channel, dropped));
}

void SendMessageReply(CIPCCommunication &channel, const WideString &text, unsigned char value)
{
    WideString dropped;
    static_cast<void>(channel.BeginMessage('M', dropped) && channel.AppendUInt32(value, dropped) &&
                      channel.AppendString(text, dropped) && channel.SendMessage(dropped));
}

} // namespace kessil
