#include "kessilctl/console/password.h"

#include "kessilctl/console/exit_code.h"
#include "kessilctl/console/local_path.h"
#include "platform/secret.h"
#include "platform/wipe.h"

namespace kessil::kessilctl {

using platform::SecretStatus;

void Password::Clear()
{
    platform::Wipe(m_text.data(), m_text.size() * sizeof(char16_t));
    m_text.clear();
}

void Password::Read(const std::string &whom, std::optional<int> descriptor)
{
    const SecretStatus status = descriptor ? platform::ReadSecretLine(*descriptor, m_text)
                                           : platform::ReadHiddenLine("Password for " + Printable(whom) + ": ", m_text);
    switch (status) {
    case SecretStatus::Read:
        return;
    case SecretStatus::Interrupted:
        throw Failure(ExitCode::Interrupted, "interrupted");
    case SecretStatus::NoTerminal:
        throw Failure(ExitCode::Usage,
                      "there is no terminal to ask for the password; --password-fd reads it from elsewhere");
    case SecretStatus::Nothing:
        throw Failure(ExitCode::LocalFailed, "no password could be read");
    case SecretStatus::TooLong:
        throw Failure(ExitCode::LocalFailed,
                      "the password has more than " + std::to_string(platform::longest_secret) + " characters");
    }
}

} // namespace kessil::kessilctl
