#include "parent/session/request.h"

#include "platform/text.h"

namespace kessil::parent {

std::string Request::Description() const
{
    std::string text;
    if (IsCall()) {
        text.append(function).append(" (");
        if (command != 0)
            text.append("command ").append(std::to_string(command));
        else
            text.append(signature);
        text.append(") of ");
        text.append(subject.empty() ? "the first library" : "library ");
    } else {
        text.append(action);
        if (!subject.empty())
            text += ' ';
    }
    return text + platform::ToUtf8(subject);
}

} // namespace kessil::parent
