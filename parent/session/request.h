#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace kessil::parent {

/// What a request is about, for the texts of its Result. Made of views, so that a request that is answered costs
/// nothing.
struct Request
{
    std::string_view deed;           ///< as "loading"; empty for a function call
    std::u16string_view subject;     ///< what the deed is done to; for a call the library
    std::string_view function = {};  ///< for a call
    std::string_view signature = {}; ///< for a call that names one
    int command = 0;                 ///< for a call by command; 0 for any other

    /// Where the library's notices go; null: to Options::on_notice.
    const std::function<void(std::uint8_t, std::string_view)> *on_log = nullptr;

    bool IsCall() const { return !function.empty() || deed.empty(); }

    /// As "loading x.so", "VornReadFile (SIGNATURE_VornReadFile) of library x.so", or "ListHosts (command 37) of
    /// library x.dll".
    std::string Description() const;
};

} // namespace kessil::parent
