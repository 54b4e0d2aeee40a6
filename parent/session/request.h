#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace kessil::parent {

/// What a request is about, for the messages of its Result. Made of views, so that a request that is answered allocates
/// nothing; they must live until the request has ended.
struct Request
{
    std::string_view action;         ///< as "loading"; empty for a function call
    std::u16string_view subject;     ///< the action's object; for a call the library
    std::string_view function = {};  ///< for a call
    std::string_view signature = {}; ///< for a call by signature
    int command = 0;                 ///< for a call by command; 0 for any other

    /// Receives the library's notices; null: Options::on_notice does.
    const std::function<void(std::uint8_t, std::string_view)> *on_log = nullptr;

    bool IsCall() const { return !function.empty() || action.empty(); }

    /// As "loading x.so", "VornReadFile (SIGNATURE_VornReadFile) of library x.so", or "ListHosts (command 37) of
    /// library x.dll".
    std::string Description() const;
};

} // namespace kessil::parent
