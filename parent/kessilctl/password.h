#pragma once

#include "command_line.h"

#include <string_view>

namespace kessil::driver {

/// The one copy of a password in this process. Wiped when it is forgotten, and at the end.
class Password
{
public:
    Password() = default;
    ~Password() { Forget(); }
    Password(const Password &) = delete;
    Password &operator=(const Password &) = delete;

    /// Reads it from where the command line says: the terminal, which doesn't show it, or an open descriptor. Throws
    /// Failure.
    void Read(const Logon &logon);

    std::u16string_view Text() const { return m_text; }
    void Forget();

private:
    WideString m_text;
};

} // namespace kessil::driver
