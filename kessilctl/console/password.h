#pragma once

#include "platform/text.h"

#include <optional>
#include <string>
#include <string_view>

namespace kessil::kessilctl {

/// The one copy of a password in this process. Overwritten when it is cleared, and by the destructor.
class Password
{
public:
    Password() = default;
    ~Password() { Clear(); }
    Password(const Password &) = delete;
    Password &operator=(const Password &) = delete;

    /// Reads one line: from the terminal, with a prompt that names `whom` and without echo, or from an open descriptor,
    /// of which no byte behind the line is read. Throws Failure.
    void Read(const std::string &whom, std::optional<int> descriptor);

    std::u16string_view Text() const { return m_text; }
    void Clear();

private:
    WideString m_text;
};

} // namespace kessil::kessilctl
