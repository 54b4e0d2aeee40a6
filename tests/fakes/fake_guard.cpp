#include "fakes/fake_guard.h"

#include "fakes/call_log.h"
#include "platform/guard.h"

#include <csetjmp>
#include <cstdlib>
#include <string>

namespace kessil {
namespace test {

FakeGuard fake_guard;

namespace {

std::jmp_buf guard_place;

// Counts a guarded run while it exists; a fault skips the destructor.
class Running
{
public:
    Running()
    {
        if (++fake_guard.running > 1)
            std::abort();
    }
    ~Running() { --fake_guard.running; }
    Running(const Running &) = delete;
    Running &operator=(const Running &) = delete;
};

void RunCounted(void (*body)(void *), void *argument)
{
    const Running running;
    body(argument);
}

} // namespace

void RaiseFakeFault()
{
    if (fake_guard.running == 0)
        std::abort();
    std::longjmp(guard_place, 1);
}

} // namespace test

namespace platform {

bool PrepareGuard()
{
    test::call_log.Add("PrepareGuard");
    return test::fake_guard.can_prepare;
}

bool GuardedRun(void (*body)(void *), void *argument)
{
    if (setjmp(test::guard_place) != 0) {
        --test::fake_guard.running;
        ++test::fake_guard.faults;
        return false;
    }
    test::RunCounted(body, argument);
    return true;
}

void EndWithin(std::uint32_t milliseconds, int exit_code)
{
    test::call_log.Add("EndWithin " + std::to_string(milliseconds) + " " + std::to_string(exit_code));
    if (!test::fake_guard.ending)
        test::fake_guard.ending = test::FakeGuard::Ending{milliseconds, exit_code};
}

} // namespace platform
} // namespace kessil
