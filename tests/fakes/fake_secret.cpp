#include "fakes/fake_secret.h"

namespace kessil {

test::FakeSecret test::fake_secret;

namespace platform {
namespace {

using test::fake_secret;

SecretStatus TakeLine(std::string &bytes, WideString &line)
{
    if (bytes.empty())
        return SecretStatus::Nothing;
    const std::size_t end = bytes.find('\n');
    std::string first = bytes.substr(0, end);
    bytes.erase(0, end == std::string::npos ? end : end + 1);
    if (first.ends_with('\r'))
        first.pop_back();
    if (first.size() > longest_secret)
        return SecretStatus::TooLong;
    line = FromUtf8(first);
    return SecretStatus::Read;
}

} // namespace

SecretStatus ReadHiddenLine(std::string_view prompt, WideString &line)
{
    if (!fake_secret.typed)
        return SecretStatus::NoTerminal;
    fake_secret.prompts.emplace_back(prompt);
    return fake_secret.interrupted ? SecretStatus::Interrupted : TakeLine(*fake_secret.typed, line);
}

SecretStatus ReadSecretLine(int descriptor, WideString &line)
{
    return TakeLine(fake_secret.descriptors[descriptor], line);
}

} // namespace platform
} // namespace kessil
