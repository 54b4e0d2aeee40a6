#include "marshal/handler_call.h"

#include <stdexcept>

namespace kessil {
namespace {

// A section that was lost in the middle of a call leaves its size behind. Work on it ends the run as a fault would.
unsigned char *ViewOf(const CIPCCommunication &channel)
{
    if (channel.SharedView() == nullptr && channel.SharedSize() != 0)
        throw std::logic_error("the section is gone");
    return channel.SharedView();
}

bool Grow(CIPCCommunication &channel, std::uint32_t size)
{
    WideString dropped;
    return channel.ResizeSharedMem(size, dropped);
}

bool MakeRoom(CIPCCommunication &channel, std::span<CDataElement *const> list)
{
    std::uint32_t total = 0;
    for (CDataElement *const element : list) {
        const std::uint32_t needed = element->GetBufferSize();
        if (needed == 0)
            return false;
        total += needed;
    }
    return channel.SharedSize() >= total || Grow(channel, total);
}

bool WriteElements(const CIPCCommunication &channel, std::span<CDataElement *const> list)
{
    unsigned char *const view = ViewOf(channel);
    const std::uint32_t size = channel.SharedSize();
    std::uint32_t offset = 0;
    for (CDataElement *const element : list) {
        const std::uint32_t taken = element->WriteToBuffer(view + offset, size - offset);
        if (taken == 0)
            return false;
        offset += taken;
    }
    return true;
}

} // namespace

bool HandlerCall::ReadList(std::span<CDataElement *const> list)
{
    unsigned char *const view = ViewOf(m_channel);
    const std::uint32_t size = m_channel.SharedSize();
    std::uint32_t offset = 0;
    for (CDataElement *const element : list) {
        const std::uint32_t taken = element->ReadFromBuffer(view + offset, size - offset);
        if (taken == 0)
            return FailInput();
        offset += taken;
    }
    return true;
}

void HandlerCall::ReplyList(std::span<CDataElement *const> list)
{
    if (WriteList(list))
        Succeed();
}

bool HandlerCall::WriteList(std::span<CDataElement *const> list)
{
    return (MakeRoom(m_channel, list) && WriteElements(m_channel, list)) || FailOutput();
}

bool HandlerCall::FailInput()
{
    return Fail(m_texts.input, u"Failed to serialise input (");
}

bool HandlerCall::FailOutput()
{
    return Fail(m_texts.output, u"Failed to serialise output (");
}

bool HandlerCall::Fail(const char16_t *text, const char16_t *usual_start)
{
    SendFailureReply(m_channel, text != nullptr ? text : usual_start + platform::FromUtf8(m_handler) + u")");
    return false;
}

} // namespace kessil
