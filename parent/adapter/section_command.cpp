#include "parent/adapter/section_command.h"

#include "platform/text.h"

namespace kessil::parent {

SectionCommand::SectionCommand(CommandContext &context, int number, std::string_view name, std::uint32_t size)
    : m_context(context), m_request{.deed = {},
                                    .subject = context.keeper.AdapterName(),
                                    .function = name,
                                    .command = number,
                                    .on_log = &context.options.on_log},
      m_in(context.helper.Begin(size))
{}

SectionCommand::SectionCommand(CommandContext &context, std::string_view name, std::string_view signature)
    : m_context(context), m_request{.deed = {},
                                    .subject = context.keeper.AdapterName(),
                                    .function = name,
                                    .signature = signature,
                                    .on_log = &context.options.on_log},
      m_in(context.helper.Begin())
{}

SectionCommand &SectionCommand::Require(bool good, const char *reason)
{
    if (!good && m_fault.empty())
        m_fault = reason;
    return *this;
}

OutList &SectionCommand::Ask()
{
    m_result = m_fault.empty() ? m_context.keeper.CallBySection(m_request, m_context.options.limit)
                               : m_context.keeper.NotSent(m_request.Description() + ": " + m_fault);
    m_out = &m_context.helper.Results();
    return *m_out;
}

Answer SectionCommand::End(bool okay)
{
    // What the helper says when the adapter had no text to give.
    std::string excuse = platform::ToUtf8(m_result.text);
    if (m_result) {
        if (Result read = m_out->Complete(); !read)
            m_result = std::move(read);
    }
    if (m_error.empty() && m_result)
        m_error = std::move(excuse);
    okay = okay && m_error.empty();
    return MakeAnswer(std::move(m_result), okay, std::move(m_error), m_request);
}

Answer SectionCommand::Distrust(std::string_view reason)
{
    if (m_result)
        m_result = m_out->Complete();
    if (m_result)
        m_result = m_context.helper.Distrust(m_request.Description() + ": " + std::string(reason));
    return MakeAnswer(std::move(m_result), false, {}, m_request);
}

Answer SectionCommand::AskStatus()
{
    Ask().Str(m_error);
    return End();
}

} // namespace kessil::parent
