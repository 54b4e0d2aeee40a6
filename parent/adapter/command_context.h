#pragma once

#include "parent/session/session.h"
#include "parent/wire/bare_values.h"

namespace kessil::parent {

/// What one Adapter keeps for its calls.
struct CommandContext
{
    Session &session;
    AdapterOptions options;
    BareWriter writer{};    ///< builds every request, in memory that is kept
    std::string log_line{}; ///< likewise
};

/// A call by command, for its messages.
inline Request CommandRequest(const CommandContext &context, int number, std::string_view name)
{
    return {.action = {},
            .subject = context.session.AdapterName(),
            .function = name,
            .command = number,
            .on_log = &context.options.on_log};
}

/// NotSent when no adapter is loaded in a helper that serves.
std::optional<Result> CheckAdapter(const CommandContext &context, const Request &request);

/// A handle as it is sent.
template <class Handle>
requires std::is_enum_v<Handle> std::uint32_t Sent(Handle handle)
{
    return static_cast<std::uint32_t>(handle);
}

/// The Answer to a request that has ended with this result. `okay` and `error`: what the adapter said, if it did.
Answer MakeAnswer(Result result, bool okay, std::string error, const Request &request);

} // namespace kessil::parent
