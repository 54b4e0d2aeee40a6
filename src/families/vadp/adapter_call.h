#pragma once

#include "families/vadp/binding.h"
#include "families/vadp/entry_log.h"
#include "marshal/handler_call.h"

#include <cstdint>
#include <string>

namespace kessil {

/// What a handler sends when something fails, where that isn't the usual; null stands for the usual.
struct AdapterTexts
{
    const char16_t *input;
    const char16_t *error;
    const char16_t *output;
};

/// HandlerCall for a function of the adapter, in the first generation. The adapter's error text is the last of the
/// results, and empty after a success; its log lines are sent ahead of the answer.
class AdapterCall : public HandlerCall
{
public:
    /// `handler` is the handler's name, for its failure texts and the log.
    AdapterCall(CIPCCommunication &channel, const char *handler, EntryLog entry = EntryLog::Line);
    AdapterCall(CIPCCommunication &channel, const char *handler, const AdapterTexts &texts,
                EntryLog entry = EntryLog::Line);

    /// To be called after the adapter: takes the error text unless `okay`, then sends the log lines.
    void Conclude(bool okay);

    /// The first half of Conclude. While no "GetErrorMessage" is bound this sends a failure reply, "Failed to get error
    /// message (<handler>)", and the handler sends its usual answer as well.
    void TakeErrorText(bool okay);

    /// The second half.
    void FlushLog();

    /// The last of the results.
    STR ErrorText() const { return STR(m_errorText); }

    VMLib_ErrorInfo *error = nullptr; ///< for the adapter to set

private:
    CIPCCommunication &m_channel;
    const char *m_handler;
    const char16_t *m_noErrorText = nullptr;
    std::string m_errorText;
};

/// The result that names an object: its index once it is stored, or -1 where there is none.
inline U32 IndexOf(bool okay, std::int32_t (*store)(void *object), void *object)
{
    return U32(static_cast<std::uint32_t>(okay ? store(object) : -1));
}

} // namespace kessil
