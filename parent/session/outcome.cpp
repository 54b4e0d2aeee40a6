#include <kessil/parent.h>

namespace kessil::parent {

const char *Name(Outcome outcome)
{
    switch (outcome) {
    case Outcome::Answered:
        return "Answered";
    case Outcome::Refused:
        return "Refused";
    case Outcome::Hung:
        return "Hung";
    case Outcome::Died:
        return "Died";
    case Outcome::BrokenProtocol:
        return "BrokenProtocol";
    case Outcome::NeverStarted:
        return "NeverStarted";
    case Outcome::ExitedAtOnce:
        return "ExitedAtOnce";
    case Outcome::NeverAttached:
        return "NeverAttached";
    case Outcome::Cancelled:
        return "Cancelled";
    case Outcome::NotSent:
        return "NotSent";
    }
    return "?";
}

} // namespace kessil::parent
