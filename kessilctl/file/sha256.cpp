#include "kessilctl/file/sha256.h"

#include <new>

#include <gcrypt.h>

namespace kessil::kessilctl {
namespace {

bool InitializeLibrary()
{
    if (!gcry_check_version(GCRYPT_VERSION))
        return false;
    gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
    gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
    return true;
}

gcry_md_hd_t Native(void *state)
{
    return static_cast<gcry_md_hd_t>(state);
}

} // namespace

Sha256::Sha256() : m_state(nullptr)
{
    static const bool initialized = InitializeLibrary();
    gcry_md_hd_t state = nullptr;
    if (!initialized || gcry_md_open(&state, GCRY_MD_SHA256, 0) != 0)
        throw std::bad_alloc();
    m_state = state;
}

Sha256::~Sha256()
{
    gcry_md_close(Native(m_state));
}

void Sha256::Add(std::span<const std::byte> bytes)
{
    gcry_md_write(Native(m_state), bytes.data(), bytes.size());
}

std::string Sha256::Digest()
{
    constexpr std::size_t length = 32;
    constexpr char digits[] = "0123456789abcdef";
    const unsigned char *digest = gcry_md_read(Native(m_state), GCRY_MD_SHA256);
    std::string text;
    for (std::size_t at = 0; at < length; ++at) {
        text += digits[digest[at] >> 4];
        text += digits[digest[at] & 15];
    }
    return text;
}

} // namespace kessil::kessilctl
