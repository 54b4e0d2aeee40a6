#include "families/vadp/alt_call.h"

#include "channel/pipe_primitives.h"
#include "families/vadp/adapter_log.h"
#include "families/vadp/item_list.h"

#include <memory>

namespace kessil {
namespace {

// The primitive sets a number that it can't read to 0; here the number keeps the value that it started with.
template <class T>
bool ReadNumber(bool (*read)(CIPCCommunication &, T &), CIPCCommunication &channel, T &value)
{
    T came = 0;
    if (!read(channel, came))
        return false;
    value = came;
    return true;
}

} // namespace

AltCall::AltCall(CIPCCommunication &channel, const char *handler) : m_channel(channel)
{
    LogEntry(handler, EntryLog::Line);
}

AltCall::AltCall(CIPCCommunication &channel, const char *handler, OnFailedRead conduct, EntryLog entry)
    : m_channel(channel), m_conduct(conduct)
{
    LogEntry(handler, entry);
}

void AltCall::SendLog()
{
    sendAdapterLogAlt(m_channel);
}

void AltCall::ReplyStatus(bool okay)
{
    SendLog();
    sendErrMsgAlt(m_channel, okay, error);
}

void AltCall::ReplyValue(bool okay, std::int32_t value)
{
    SendLog();
    sendErrMsgAltValue(m_channel, okay, value, error);
}

void AltCall::ReplyValue(bool okay, std::int32_t value, const std::string &error_text)
{
    SendLog();
    sendErrMsgAltValue(m_channel, okay, value, error_text);
}

void AltCall::ReplyList(bool okay, AdapterListing *list, bool with_extra)
{
    const std::unique_ptr<AdapterListing> owned(list);
    const AdapterListing none;
    SendLog();
    if (okay)
        static_cast<void>(writeItemList(m_channel, list != nullptr ? *list : none, with_extra, false));
    else
        sendErrMsgAlt(m_channel, false, error);
}

bool AltCall::ReadValue(std::uint32_t &value)
{
    return ReadNumber(ReadUInt32FromPipe, m_channel, value);
}

bool AltCall::ReadValue(std::uint64_t &value)
{
    return ReadNumber(ReadUInt64FromPipe, m_channel, value);
}

bool AltCall::ReadValue(std::string &text)
{
    return ReadStringFromPipe(m_channel, text);
}

bool AltCall::ReadValue(std::vector<unsigned char> &block)
{
    const bool came = ReadBytesFromPipe(m_channel, block);
    if (!came)
        block.clear();
    return came;
}

} // namespace kessil
