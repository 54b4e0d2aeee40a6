#pragma once

#include <string>
#include <string_view>

/// Paths within a data source's tree: bytes, with `/` between the names.
namespace kessil::kessilctl {

/// `name` in the directory `path`, which is empty for the topmost one.
std::string Join(std::string_view path, std::string_view name);

/// Whether this side's file system has `name` for a plain name. A library may list anything: `..`, a name with a
/// separator in it or a device must not lead a backup out of its directory.
bool IsPlainName(std::string_view name);

} // namespace kessil::kessilctl
