#include "parent/adapter/adapter_state.h"
#include "parent/adapter/command_source.h"

#include <algorithm>

namespace kessil::parent {
namespace {

// Loads a library for calls by command: an 'l' frame with its name, whose answer is a bare 1 or -1.
Result LoadForCommands(Session &session, std::u16string_view library)
{
    std::string name;
    for (const char16_t unit : library)
        name += static_cast<char>(unit);
    const Request request{"loading", library};
    if (std::optional<Result> end = session.Begin(request, session.Settings().request_limit))
        return std::move(*end);
    const platform::PipeStatus status = session.Send(session.Writer().Begin('l').Raw(name).Finish());
    if (status != platform::PipeStatus::Done)
        return session.EndByPipe(status);
    CommandSource source(session);
    std::uint32_t loaded = 0;
    BareReader(source).Number(loaded);
    Result result = source.TakeResult();
    if (!result)
        return result;
    switch (loaded) {
    case 1:
        session.Adapters().emplace(library);
        return result;
    case failure_mark:
        session.Adapters().erase(WideString(library));
        return session.Refused();
    default:
        return session.EndBroken("an answer other than yes and no");
    }
}

} // namespace

Adapter::Adapter(Helper &helper, AdapterOptions options) : m_state(new State{{*helper.m_session, std::move(options)}})
{}

Adapter::~Adapter() = default;

Result Adapter::Load(std::u16string_view library)
{
    const bool fits = std::all_of(library.begin(), library.end(), [](char16_t unit) { return unit <= 0xFF; });
    if (!fits || library.find(u'\0') != library.npos)
        return m_state->session.NotSent(
            Request{"loading", library}.Description() +
            (fits ? ": the name holds a zero" : ": the name has a character above U+00FF, which can't be sent"));
    return LoadForCommands(m_state->session, library);
}

} // namespace kessil::parent
