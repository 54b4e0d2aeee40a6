#include "fakes/fake_thread.h"

#include "platform/thread.h"

namespace kessil {

std::uint32_t test::fake_thread_id = 0xA2C;

std::uint32_t platform::CurrentThreadId()
{
    return test::fake_thread_id;
}

} // namespace kessil
