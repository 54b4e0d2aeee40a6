#pragma once

#include "platform/secret.h"
#include "platform/wipe.h"

#include <array>

namespace kessil::platform {

/// The UTF-8 bytes of a secret line, received one by one. Wiped on destruction.
class SecretBytes
{
public:
    SecretBytes() = default;
    ~SecretBytes() { Wipe(m_bytes.data(), m_bytes.size()); }
    SecretBytes(const SecretBytes &) = delete;
    SecretBytes &operator=(const SecretBytes &) = delete;

    /// Where to store the next byte.
    char *Next() { return &m_bytes[m_size]; }

    /// Accepts the byte stored at Next. True while the line continues.
    bool Take()
    {
        m_begun = true;
        if (m_bytes[m_size] == '\n')
            return false;
        if (m_size < longest)
            ++m_size;
        return true;
    }

    /// Converts the line, without its line end, to wide text.
    SecretStatus Into(WideString &line)
    {
        if (!m_begun)
            return SecretStatus::Nothing;
        if (m_size > 0 && m_bytes[m_size - 1] == '\r')
            --m_size;
        if (m_size > longest_secret)
            return SecretStatus::TooLong;
        WideString wide = FromUtf8({m_bytes.data(), m_size});
        line = wide;
        Wipe(wide.data(), wide.size() * sizeof(char16_t));
        return SecretStatus::Read;
    }

private:
    // One for a carriage return, and one to detect that the line is too long.
    static constexpr std::size_t longest = longest_secret + 2;

    std::array<char, longest + 1> m_bytes{};
    std::size_t m_size = 0;
    bool m_begun = false;
};

} // namespace kessil::platform
