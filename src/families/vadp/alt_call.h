#pragma once

#include "families/vadp/binding.h"
#include "families/vadp/entry_log.h"
#include "families/vadp/error_messages.h"
#include "marshal/handler_call.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kessil {

class CIPCCommunication;

/// What a handler does when a value could not be read.
enum class OnFailedRead
{
    Skip, ///< answers with a failure without calling the adapter
    Call  ///< calls it all the same; that value and those behind it are as they started
};

/// An index that no table has.
inline constexpr std::uint32_t no_handle = 0xFFFFFFFF;

/// Marshals one call of the adapter in the second generation: the arguments come as bare values on the pipe, and so
/// does the answer, behind the adapter's log lines. Ignores a write that fails: the request loop finds the broken pipe
/// at its next read.
class AltCall
{
public:
    /// For a handler that reads nothing. `handler` is the name that is logged.
    AltCall(CIPCCommunication &channel, const char *handler);
    AltCall(CIPCCommunication &channel, const char *handler, OnFailedRead conduct, EntryLog entry = EntryLog::Line);

    /// Reads the values in their order. The first that can't be read ends this; it and those behind it stay as they
    /// are, a block empty. Returns whether the adapter is to be called.
    template <class... Values>
    [[nodiscard]] bool Read(Values &...values)
    {
        m_readsOkay = (ReadValue(values) && ...);
        return m_readsOkay || m_conduct == OnFailedRead::Call;
    }

    /// Whether all values came.
    bool ReadsOkay() const { return m_readsOkay; }

    /// Sends the adapter's log lines and their end mark, which stand ahead of every answer.
    void SendLog();

    // The answers, each behind the log lines. The error text is taken after these were sent, unless it is passed in.

    /// 1, or -1 and the error text.
    void ReplyStatus(bool okay);

    /// The value, or the error text alone.
    void ReplyValue(bool okay, std::int32_t value);
    void ReplyValue(bool okay, std::int32_t value, const std::string &error_text);

    /// The listing, or -1 and the error text. A listing that the adapter left null is an empty one. Deletes it, after
    /// a failure too.
    void ReplyList(bool okay, AdapterListing *list, bool with_extra);

    VMLib_ErrorInfo *error = nullptr; ///< for the adapter to set

private:
    bool ReadValue(std::uint32_t &value);
    bool ReadValue(std::uint64_t &value);
    bool ReadValue(std::string &text);
    bool ReadValue(std::vector<unsigned char> &block);

    CIPCCommunication &m_channel;
    OnFailedRead m_conduct = OnFailedRead::Skip;
    bool m_readsOkay = true;
};

} // namespace kessil
