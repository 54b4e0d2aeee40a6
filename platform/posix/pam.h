#pragma once

#include "platform/text.h"

#include <string>

namespace kessil::platform::posix {

/// Asks the PAM service `kessil` whether this is the account's password and whether the account may be used; `account`
/// is then the account that the service mapped it to, which may be another one. False with the reason in errno: EACCES
/// for a refusal of any kind, EKEYEXPIRED for an account or password that is no longer valid, ENOSYS when the system
/// has no PAM, EIO or ENOMEM when PAM itself fails. Copies of the password are wiped.
bool Authenticate(std::string &account, const WideString &password);

} // namespace kessil::platform::posix
