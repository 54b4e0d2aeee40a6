#include "host/search_path.h"

#include "channel/format_system_error.h"
#include "platform/environment.h"
#include "platform/last_error.h"

namespace kessil {

bool AddPath(const WideString &directories, WideString &error)
{
    const auto path = platform::ReadEnvironment(u"PATH");
    if (!path) {
        error = FormatSystemError(platform::LastError(), u"getenv");
        return false;
    }
    if (!platform::PutEnvironment(u"PATH=" + directories + platform::search_path_separator + *path)) {
        error = FormatSystemError(platform::LastError(), u"putenv");
        return false;
    }
    return true;
}

} // namespace kessil
