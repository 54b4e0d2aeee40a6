#include "parent/session/calls.h"

#include "parent/session/frame_exchange.h"
#include "parent/session/message_text.h"
#include "platform/last_error.h"

#include <algorithm>
#include <cstring>

namespace kessil::parent {
namespace {

// Sends the announcement of a section. Whether the helper has opened it.
bool Announce(Session &session, const WideString &name, std::uint32_t size)
{
    session.Writer().Begin('R').Wide(name).U64(size);
    const Result result = Exchange(session, {"opening the section", name});
    platform::RemoveSectionName(name);
    if (result.outcome == Outcome::Refused)
        session.EndDead("it refused: " + platform::ToUtf8(result.text));
    return bool(result);
}

Result SendCall(Session &session, const Request &request, const TimeLimit &limit)
{
    FrameExchange exchange(session);
    if (request.command != 0) {
        const unsigned char bytes[] = {0x66, static_cast<unsigned char>(request.command)};
        return exchange.Run(request, limit, bytes);
    }
    session.Writer().Begin('F').Wide(request.subject).Narrow(request.function).Narrow(request.signature);
    return exchange.Run(request, limit);
}

} // namespace

Result Load(Session &session, std::u16string_view library)
{
    session.Writer().Begin('L').Wide(library);
    return Exchange(session, {"loading", library});
}

InList &BeginArguments(Session &session, std::uint32_t total_size)
{
    CallSection &section = session.Section();
    section.Results().SetPresent(false);
    section.Arguments().Begin();
    const std::uint32_t first = section.Memory().View() == nullptr ? session.Settings().section_size : 0;
    const std::uint32_t wanted = std::max({total_size, first, 1U});
    if (wanted > section.Memory().Size())
        GrowSection(session, wanted);
    return session.In();
}

bool GrowSection(Session &session, std::uint64_t needed)
{
    CallSection &section = session.Section();
    ArgumentList &arguments = section.Arguments();
    const auto fail = [&](std::string reason) {
        arguments.Fail(std::move(reason));
        return false;
    };
    if (!session.Running())
        return fail(not_running);
    if (needed > largest_section)
        return fail("the arguments take more than a section can hold");
    const std::uint64_t doubled = std::uint64_t{section.Memory().Size()} * 2;
    const auto size = static_cast<std::uint32_t>(std::clamp<std::uint64_t>(doubled, needed, largest_section));
    const WideString name = RandomSectionName();
    SharedSection grown = SharedSection::Create(name, size);
    if (grown.View() == nullptr) {
        const std::uint32_t code = platform::LastError();
        platform::RemoveSectionName(name);
        return fail("no section of " + std::to_string(size) + " bytes: " + SystemText(code));
    }
    if (arguments.Size() != 0)
        std::memcpy(grown.View(), section.Memory().View(), arguments.Size());
    if (!Announce(session, name, size))
        return fail(not_running);
    section.Use(std::move(grown), name);
    ++session.Counts().sections_announced;
    return true;
}

Result Call(Session &session, const Request &request, const TimeLimit &limit)
{
    CallSection &section = session.Section();
    ArgumentList &arguments = section.Arguments();
    section.Results().SetPresent(false);
    if (!session.Running())
        return session.NotSent(not_running);
    if (!arguments.Begun())
        return session.NotSent(request.Description() + ": no argument list was begun");
    if (!arguments.Finish())
        return session.NotSent(request.Description() + ": " + arguments.Failure());
    ++session.Counts().calls;
    session.Counts().argument_bytes += arguments.Size();
    Result result = SendCall(session, request, limit);
    if (result && section.Memory().View() == nullptr)
        return session.EndBroken("an answer in a section that this side could not open");
    section.Results().SetPresent(bool(result));
    return result;
}

OutList &Results(Session &session)
{
    session.Section().Results().Rewind();
    return session.Out();
}

} // namespace kessil::parent
