#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace kessil::kessilctl {

/// The SHA-256 of bytes that are added piece by piece.
class Sha256
{
public:
    Sha256();
    ~Sha256();
    Sha256(const Sha256 &) = delete;
    Sha256 &operator=(const Sha256 &) = delete;

    void Add(std::span<const std::byte> bytes);

    /// 64 hexadecimal digits in lower case. Nothing can be added afterwards.
    std::string Digest();

private:
    void *m_state;
};

} // namespace kessil::kessilctl
