#include "parent/adapter/section_command.h"

#include "parent/session/calls.h"

namespace kessil::parent {
namespace {

Request FunctionRequest(const CommandContext &context, std::string_view name, std::string_view signature)
{
    Request request = CommandRequest(context, 0, name);
    request.signature = signature;
    return request;
}

} // namespace

SectionCommand::SectionCommand(CommandContext &context, const Request &request, std::uint32_t size)
    : m_context(context), m_session(context.session), m_request(request)
{
    BeginArguments(m_session, size);
}

SectionCommand::SectionCommand(CommandContext &context, int number, std::string_view name, std::uint32_t size)
    : SectionCommand(context, CommandRequest(context, number, name), size)
{}

SectionCommand::SectionCommand(CommandContext &context, std::string_view name, std::string_view signature)
    : SectionCommand(context, FunctionRequest(context, name, signature), 0)
{}

SectionCommand &SectionCommand::Require(bool good, const char *reason)
{
    if (!good && m_fault.empty())
        m_fault = reason;
    return *this;
}

Result SectionCommand::MakeCall()
{
    if (!m_fault.empty())
        return m_session.NotSent(m_request.Description() + ": " + m_fault);
    if (std::optional<Result> end = CheckAdapter(m_context, m_request))
        return std::move(*end);
    return Call(m_session, m_request, m_context.options.limit);
}

OutList &SectionCommand::Ask()
{
    m_result = MakeCall();
    return Results(m_session);
}

Answer SectionCommand::End(bool okay)
{
    // What the helper said when the adapter gave no text.
    std::string lookup_failure = platform::ToUtf8(m_result.text);
    if (m_result) {
        if (Result read = m_session.Out().Complete(); !read)
            m_result = std::move(read);
    }
    if (m_error.empty() && m_result)
        m_error = std::move(lookup_failure);
    okay = okay && m_error.empty();
    return MakeAnswer(std::move(m_result), okay, std::move(m_error), m_request);
}

Answer SectionCommand::RejectResults(std::string_view reason)
{
    if (m_result)
        m_result = m_session.Out().Complete();
    if (m_result)
        m_result = m_session.EndByResults(m_request.Description() + ": " + std::string(reason));
    return MakeAnswer(std::move(m_result), false, {}, m_request);
}

Answer SectionCommand::AskStatus()
{
    Ask().Str(m_error);
    return End();
}

} // namespace kessil::parent
