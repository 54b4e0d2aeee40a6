#include "unit/families/stand_in.h"

#include "targets/record.h"
#include "targets/script.h"

namespace kessil::test {

StandIn stand_in;

} // namespace kessil::test

void Record(const std::string &line)
{
    kessil::test::stand_in.lines.push_back(line);
    if (kessil::test::stand_in.on_call)
        kessil::test::stand_in.on_call();
}

Behaviour NextBehaviour(const std::string &function)
{
    return ParseBehaviour(kessil::test::stand_in.script[function]);
}
