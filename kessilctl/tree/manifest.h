#pragma once

#include <map>
#include <string>
#include <string_view>

namespace kessil::kessilctl {

/// The digests of a backup's files, by path. The text form is that of sha256sum: each line has the digest, two spaces
/// and the path. If the path contains a `\`, a line feed or a carriage return, the line starts with a `\`, and they are
/// written as `\\`, `\n` and `\r`.
using Manifest = std::map<std::string, std::string>;

std::string Format(const Manifest &manifest);

/// Throws Failure(LocalFailed), naming the line, when the text isn't a manifest.
Manifest ParseManifest(std::string_view text);

} // namespace kessil::kessilctl
