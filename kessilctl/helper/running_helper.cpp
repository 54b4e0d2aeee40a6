#include "kessilctl/helper/running_helper.h"

#include "kessilctl/console/exit_code.h"
#include "kessilctl/console/local_path.h"

#include <algorithm>

namespace kessil::kessilctl {
namespace {

constexpr std::chrono::milliseconds first_notice{10000};

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

parent::TimeLimit LimitOf(const HelperOptions &options)
{
    const auto limit = options.time_limit;
    return {limit.count() > 0 ? std::min(first_notice, limit / 2) : first_notice, limit};
}

void StartHelper(parent::Helper &helper, const HelperOptions &options, Password &password)
{
    Require(helper.Start());
    if (const auto &logon = options.logon) {
        const parent::Result result = helper.Logon(platform::FromUtf8(logon->user), platform::FromUtf8(logon->domain),
                                                   password.Text(), {}, !logon->credentials_only);
        password.Clear();
        Require(result);
    }
    if (!options.search_path.empty())
        Require(helper.AddPath(platform::FromUtf8(options.search_path)));
}

} // namespace kessil::kessilctl
