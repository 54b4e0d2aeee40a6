#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>

namespace kessil::parent {

/// Parts of the messages of a Result. All text is UTF-8.

inline constexpr const char *not_running = "the helper is not running";

/// The system's text for an error code, or "error N" when it has none.
std::string SystemText(std::uint32_t code);

/// As "12.34 ms" or "1.5 s".
std::string Printed(std::chrono::microseconds time);

std::string Printed(const std::filesystem::path &path);

std::string Quoted(const std::string &text);

/// Without the line ends behind it.
std::string WithoutLineEnd(std::string text);

} // namespace kessil::parent
