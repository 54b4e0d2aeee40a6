#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kessil::platform::posix {

/// The first file of that name in a list of directories between colons; empty when there is none. An empty directory in
/// the list is skipped.
std::string FindInDirectories(std::string_view directories, const std::string &name);

/// The files that the dynamic linker's cache has under that name, of every processor; none when it can't be read.
std::vector<std::string> FindInLoaderCache(const std::string &name);

} // namespace kessil::platform::posix
