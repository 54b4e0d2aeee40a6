#include "fakes/fake_local_time.h"

namespace kessil {

platform::LocalTime test::fake_now = {2019, 6, 19, 12, 16, 44, 120};

platform::LocalTime platform::Now()
{
    return test::fake_now;
}

} // namespace kessil
