#pragma once

#include "parent/session/session.h"

namespace kessil::parent {

/// Function calls whose arguments and results lie in the section.

/// Loads a library for calls by signature.
Result Load(Session &session, std::u16string_view library);

/// Begins the argument list of the next call, and makes the section at least `total_size` bytes large. The results of
/// the call before are gone.
InList &BeginArguments(Session &session, std::uint32_t total_size);

/// Announces a section of at least `needed` bytes with the arguments laid out so far, and takes it into use. False when
/// that failed: the argument list has then failed for the same reason.
bool GrowSection(Session &session, std::uint64_t needed);

/// Sends the argument list that was begun and waits for the answer.
Result Call(Session &session, const Request &request, const TimeLimit &limit);

/// The results of the call answered last, from their beginning.
OutList &Results(Session &session);

} // namespace kessil::parent
