#include "kessilctl/tree/manifest.h"

#include "kessilctl/console/exit_code.h"

#include <algorithm>

namespace kessil::kessilctl {
namespace {

constexpr std::size_t digest_length = 64;

std::string Escape(std::string_view path)
{
    std::string escaped;
    for (const char byte : path) {
        if (byte == '\\')
            escaped += "\\\\";
        else if (byte == '\n')
            escaped += "\\n";
        else if (byte == '\r')
            escaped += "\\r";
        else
            escaped += byte;
    }
    return escaped;
}

/// False for an escape that isn't one of the three.
bool Unescape(std::string_view escaped, std::string &path)
{
    for (std::size_t at = 0; at < escaped.size(); ++at) {
        char byte = escaped[at];
        if (byte == '\\') {
            const char what = ++at < escaped.size() ? escaped[at] : '\0';
            if (what != '\\' && what != 'n' && what != 'r')
                return false;
            byte = what == 'n' ? '\n' : what == 'r' ? '\r' : '\\';
        }
        path += byte;
    }
    return true;
}

bool ParseLine(std::string_view line, Manifest &manifest)
{
    const bool escaped = line.starts_with('\\');
    line.remove_prefix(escaped ? 1 : 0);
    const std::string digest(line.substr(0, digest_length));
    if (line.size() < digest_length + 3 || digest.find_first_not_of("0123456789abcdef") != std::string::npos)
        return false;
    const std::string_view separator = line.substr(digest_length, 2);
    if (separator != "  " && separator != " *")
        return false;
    std::string path;
    if (!escaped)
        path = line.substr(digest_length + 2);
    else if (!Unescape(line.substr(digest_length + 2), path))
        return false;
    return manifest.emplace(path, digest).second;
}

} // namespace

std::string Format(const Manifest &manifest)
{
    std::string text;
    for (const auto &[path, digest] : manifest) {
        const std::string escaped = Escape(path);
        text.append(escaped == path ? "" : "\\").append(digest).append("  ").append(escaped).append("\n");
    }
    return text;
}

Manifest ParseManifest(std::string_view text)
{
    Manifest manifest;
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        if (!ParseLine(text.substr(0, end), manifest))
            throw Failure(ExitCode::LocalFailed, "line " + std::to_string(number) + " of the manifest is damaged");
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return manifest;
}

} // namespace kessil::kessilctl
