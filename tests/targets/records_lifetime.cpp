#include "record.h"
#include "target.h"

#include <string>

/// Built several times, each with a TAG of its own: records when it comes into the process, when it is called and when
/// it leaves, as "TAG attach", "TAG call" and "TAG detach".
namespace {

struct Lifetime
{
    Lifetime() { Record(TAG " attach"); }
    ~Lifetime() { Record(TAG " detach"); }
};

const Lifetime lifetime;

std::uint32_t RecordedCall()
{
    Record(TAG " call");
    return 1;
}

} // namespace

TARGET_ANSWERS_WITH(RecordedCall)
