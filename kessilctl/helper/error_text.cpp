#include "kessilctl/helper/error_text.h"

namespace kessil::kessilctl {

void LookUpMessage(const ErrorTextOptions &options, const RunningHelper &running, std::optional<Message> &message)
{
    const WideString file = LibraryName(options.file);
    WideString text;
    Require(running.helper.ErrorText(options.message, file, text));
    message = Message{options.message, platform::ToUtf8(file), platform::ToUtf8(text)};
}

} // namespace kessil::kessilctl
