#include "record.h"
#include "target.h"

#include <string>
#include <vector>

/// Built twice, as two versions with a TAG and an ANSWER of their own, and so that inline functions and templates
/// become functions of the library, which the C++ run-time library can bind to. Records its life as records_lifetime
/// does.
namespace {

struct Lifetime
{
    Lifetime() { Record(TAG " attach"); }
    ~Lifetime() { Record(TAG " detach"); }

    std::vector<std::string> texts;
};

Lifetime lifetime;

std::uint32_t RecordedCall()
{
    const std::string text = TAG " call";
    lifetime.texts.emplace_back(text.begin(), text.end());
    Record(lifetime.texts.back());
    return ANSWER;
}

} // namespace

TARGET_ANSWERS_WITH(RecordedCall)

TARGET_EXPORT std::uint32_t InlineCodeAnswer()
{
    return RecordedCall();
}
