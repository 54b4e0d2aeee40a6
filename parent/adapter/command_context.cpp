#include "parent/adapter/command_context.h"

#include "platform/text.h"

#include <algorithm>

namespace kessil::parent {
namespace {

// An adapter's text for a person, who gets UTF-8.
std::string Shown(const std::string &text)
{
    WideString wide = platform::FromUtf8(text);
    while (!wide.empty() && (wide.back() == u'\n' || wide.back() == u'\r'))
        wide.pop_back();
    std::replace_if(
        wide.begin(), wide.end(), [](char16_t unit) { return unit >= 0xDC80 && unit <= 0xDCFF; }, u'?');
    return platform::ToUtf8(wide);
}

} // namespace

std::optional<Result> CheckAdapter(const CommandContext &context, const Request &request)
{
    if (!context.session.Running() || !context.session.Adapters().empty())
        return std::nullopt;
    return context.session.NotSent(request.Description() + ": no adapter is loaded");
}

Answer MakeAnswer(Result result, bool okay, std::string error, const Request &request)
{
    Answer answer{.result = std::move(result)};
    if (!answer.result) {
        answer.message = answer.result.message;
        return answer;
    }
    answer.okay = okay;
    answer.error = std::move(error);
    if (okay)
        return answer;
    const std::string reason = Shown(answer.error);
    answer.message = request.Description() + " failed" + (reason.empty() ? ", without a reason" : ": " + reason);
    return answer;
}

} // namespace kessil::parent
