#include "fakes/fake_environment.h"

#include "fakes/call_log.h"
#include "platform/environment.h"
#include "platform/last_error.h"

namespace kessil {
namespace test {

FakeEnvironment fake_environment;

} // namespace test

namespace platform {

using test::fake_environment;

#ifdef _WIN32
const char16_t search_path_separator = u';';
#else
const char16_t search_path_separator = u':';
#endif

std::optional<WideString> ReadEnvironment(const WideString &name)
{
    const auto variable = fake_environment.variables.find(name);
    if (variable != fake_environment.variables.end())
        return variable->second;
    if (fake_environment.unset_code != 0)
        SetLastError(fake_environment.unset_code);
    return std::nullopt;
}

bool PutEnvironment(const WideString &assignment)
{
    test::call_log.Add("PutEnvironment " + ToUtf8(assignment));
    if (fake_environment.put_code != 0) {
        SetLastError(fake_environment.put_code);
        return false;
    }
    const std::size_t equals = assignment.find(u'=');
    fake_environment.variables[assignment.substr(0, equals)] = assignment.substr(equals + 1);
    return true;
}

} // namespace platform
} // namespace kessil
