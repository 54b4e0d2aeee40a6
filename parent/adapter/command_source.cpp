#include "parent/adapter/command_source.h"

namespace kessil::parent {

using platform::PipeStatus;

bool CommandSource::Receive(std::span<unsigned char> place)
{
    if (Ended())
        return false;
    const PipeStatus status = m_session.Receive(place);
    if (status != PipeStatus::Done)
        m_end = m_session.EndByPipe(status);
    return !Ended();
}

bool CommandSource::Peek(std::size_t size, std::span<const unsigned char> &bytes)
{
    if (Ended())
        return false;
    const PipeStatus status = m_session.Peek(size, bytes);
    if (status != PipeStatus::Done)
        m_end = m_session.EndByPipe(status);
    return !Ended();
}

void CommandSource::EndBroken(const std::string &sent)
{
    if (!Ended())
        m_end = m_session.EndBroken(sent);
}

void CommandSource::End(Result result)
{
    if (!Ended())
        m_end = std::move(result);
}

Result CommandSource::TakeResult()
{
    if (!Ended() && m_session.HasMore())
        EndBroken("more bytes behind its answer");
    return Ended() ? std::move(*m_end) : m_session.Answered();
}

} // namespace kessil::parent
