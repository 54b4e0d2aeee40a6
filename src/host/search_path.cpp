#include "host/search_path.h"

#include "channel/format_system_error.h"
#include "platform/environment.h"
#include "platform/last_error.h"

namespace kessil {

bool AddPath(const WideString &directories, WideString &error)
{
    const auto path = platform::ReadEnvironment(u"PATH");
    if (!path)
        return Refused(platform::LastError(), u"getenv", error);
    const WideString assignment = u"PATH=" + directories + platform::search_path_separator + *path;
    return platform::PutEnvironment(assignment) || Refused(platform::LastError(), u"putenv", error);
}

} // namespace kessil
