#pragma once

#include "platform/text.h"

#include <string>

namespace kessil::platform::posix {

/// Asks the PAM service `kessil` whether this is the account's password and whether the account may be used; `account`
/// is then the one that the service made of it, which may be another. False with the reason in errno: EACCES for a
/// refusal of any kind, EKEYEXPIRED for an account or password that is no longer valid, ENOSYS without PAM on the
/// system, EIO or ENOMEM when PAM itself fails. Copies of the password are wiped.
bool Authenticate(std::string &account, const WideString &password);

} // namespace kessil::platform::posix
