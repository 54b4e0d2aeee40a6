#pragma once

#include <string>

namespace vorn_fs {

/// The UTF-8 of a name; a lone surrogate becomes the three bytes that UTF-8 would have for it.
std::string Narrow(const std::wstring &wide);

/// The wide form of such bytes, empty if they aren't UTF-8.
std::wstring Widen(const std::string &text);

} // namespace vorn_fs
