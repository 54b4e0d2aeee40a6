#include "rows/rig.h"

#include <stdexcept>

namespace kessil::test {

void Rig::TakeRoomAwayInTheCall()
{
    throw std::logic_error("this rig can't take room away");
}

Bytes Rig::Sent() const
{
    throw std::logic_error("this rig doesn't know what else was sent");
}

std::vector<std::string> Rig::FamilyLog() const
{
    throw std::logic_error("this rig doesn't see the log");
}

void Rig::Unbind()
{
    throw std::logic_error("this rig can't unbind");
}

} // namespace kessil::test
