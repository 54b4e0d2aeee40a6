#pragma once

#include <string>
#include <vector>

namespace kessil::platform::posix {

/// What a shared library's file asks of the dynamic linker.
struct ElfNeeds
{
    std::vector<std::string> libraries; ///< the libraries that it needs, in order, as the file names them
    std::string rpath;                  ///< DT_RPATH: directories between colons, `$ORIGIN` not expanded
    std::string runpath;                ///< DT_RUNPATH, likewise
};

/// Reads a few hundred bytes of the file. Empty for what can't be read, is no regular file or is no library for this
/// processor; a malformed file gives what can be read of it. Never blocks on a pipe or a device.
ElfNeeds ReadElfNeeds(const std::string &file);

} // namespace kessil::platform::posix
