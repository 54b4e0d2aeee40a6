#pragma once

#include "platform/text.h"

#include <optional>
#include <string>
#include <string_view>

namespace kessil::kessilctl {

/// The one copy of a password in this process. Wiped when it is forgotten, and at the end.
class Password
{
public:
    Password() = default;
    ~Password() { Forget(); }
    Password(const Password &) = delete;
    Password &operator=(const Password &) = delete;

    /// Reads it, one line: from the terminal, which asks for the password of `whom` and doesn't show it, or from an
    /// open descriptor, and not one byte more. Throws Failure.
    void Read(const std::string &whom, std::optional<int> descriptor);

    std::u16string_view Text() const { return m_text; }
    void Forget();

private:
    WideString m_text;
};

} // namespace kessil::kessilctl
