#pragma once

#include "parent/adapter/command_context.h"

namespace kessil::parent {

/// One call whose arguments and results lie in the section, and whose answer is a frame: by a command, or by the name
/// of a function. Arguments first, then Ask, then the results in their order, then End.
class SectionCommand
{
public:
    SectionCommand(CommandContext &context, int number, std::string_view name, std::uint32_t size = 0);

    /// By name and signature, of the library that the commands go to. The helper must have loaded it for such calls,
    /// too.
    SectionCommand(CommandContext &context, std::string_view name, std::string_view signature);

    InList &In() { return m_session.In(); }

    /// Makes the call NotSent for this reason unless `good`.
    SectionCommand &Require(bool good, const char *reason);

    OutList &Ask();

    /// Receives the adapter's text, which is empty when the adapter said yes.
    std::string &Error() { return m_error; }

    /// `okay` false: the adapter said no by a number.
    Answer End(bool okay = true);

    /// In the place of End, when the results are impossible: BrokenProtocol for this reason, unless the request has
    /// ended already.
    Answer RejectResults(std::string_view reason);

    // Whole calls, from Ask to End.

    Answer AskStatus();

    /// The results are a handle and the adapter's text.
    template <class Handle>
    Answer AskHandle(Handle &handle)
    {
        std::uint32_t index = Sent(Handle::None);
        Ask().U32(index).Str(m_error);
        handle = static_cast<Handle>(index);
        return End(handle != Handle::None);
    }

private:
    SectionCommand(CommandContext &context, const Request &request, std::uint32_t size);
    Result MakeCall();

    CommandContext &m_context;
    Session &m_session;
    const Request m_request;
    std::string m_fault; ///< why the call can't be sent; empty when it can
    Result m_result;
    std::string m_error;
};

} // namespace kessil::parent
