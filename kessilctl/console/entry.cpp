#include "kessilctl/console/entry.h"

namespace kessil::kessilctl {

const char *NameOf(Kind kind)
{
    switch (kind) {
    case Kind::File:
        return "file";
    case Kind::Directory:
        return "directory";
    case Kind::Link:
        return "link";
    case Kind::Other:
        break;
    }
    return "other";
}

} // namespace kessil::kessilctl
