#include "parent/adapter/sentinel.h"

#include "parent/wire/frame.h"

#include <random>

namespace kessil::parent {

void Sentinel::AppendTo(BareWriter &writer)
{
    FrameWriter lookup;
    m_number = static_cast<std::uint32_t>(std::random_device{}());
    writer.Raw(lookup.Begin('X').U32(m_number).Wide({}).Finish());
}

bool Sentinel::IsAnsweredBy(std::span<const unsigned char> start) const
{
    return start[0] == 'E' && FromBigEndian(start.subspan(5, 4)) == failure_mark &&
           FromBigEndian(start.subspan(9, 4)) == m_number;
}

bool Sentinel::IsWellFormed(const std::string &payload)
{
    PayloadReader fields({reinterpret_cast<const unsigned char *>(payload.data()), payload.size()});
    fields.U64();
    return fields.Wide().has_value();
}

} // namespace kessil::parent
