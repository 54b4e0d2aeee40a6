#include "kessilctl/helper/helper_requests.h"

#include "kessilctl/console/exit_code.h"
#include "kessilctl/console/local_path.h"

#include <algorithm>

namespace kessil::kessilctl {
namespace {

constexpr std::chrono::milliseconds first_warning{10000};

ExitCode ExitCodeFor(parent::Outcome outcome)
{
    switch (outcome) {
    case parent::Outcome::Answered:
        return ExitCode::Done;
    case parent::Outcome::Refused:
        return ExitCode::Refused;
    case parent::Outcome::Hung:
        return ExitCode::TimedOut;
    case parent::Outcome::NeverStarted:
    case parent::Outcome::ExitedAtOnce:
    case parent::Outcome::NeverAttached:
        return ExitCode::NotStarted;
    case parent::Outcome::Cancelled:
        return ExitCode::Interrupted;
    case parent::Outcome::NotSent:
        return ExitCode::LocalFailed;
    case parent::Outcome::Died:
    case parent::Outcome::BrokenProtocol:
        break;
    }
    return ExitCode::Died;
}

} // namespace

void Require(const parent::Result &result)
{
    if (!result)
        throw Failure(ExitCodeFor(result.outcome), result.message);
}

WideString LibraryName(const std::string &given)
{
    std::error_code ignored;
    const std::filesystem::path path = ToPath(given);
    if (!std::filesystem::exists(path, ignored))
        return platform::FromUtf8(given);
    return platform::FromUtf8(ToText(std::filesystem::absolute(path)));
}

parent::TimeLimit LimitOf(const Command &command)
{
    const auto whole = command.time_limit;
    return {whole.count() > 0 ? std::min(first_warning, whole / 2) : first_warning, whole};
}

void StartHelper(parent::Helper &helper, const Command &command, Password &password)
{
    Require(helper.Start());
    if (command.logon) {
        const Logon &logon = *command.logon;
        const parent::Result result = helper.Logon(platform::FromUtf8(logon.user), platform::FromUtf8(logon.domain),
                                                   password.Text(), {}, !logon.credentials_only);
        password.Forget();
        Require(result);
    }
    if (!command.search_path.empty())
        Require(helper.AddPath(platform::FromUtf8(command.search_path)));
}

} // namespace kessil::kessilctl
