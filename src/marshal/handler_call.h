#pragma once

#include "channel/ipc_communication.h"
#include "marshal/elements.h"
#include "marshal/replies.h"
#include "platform/last_error.h"

#include <array>
#include <cstdint>
#include <span>

namespace kessil {

/// What a handler sends when its in-list can't be read or its out-list can't be written, where that isn't the usual;
/// null stands for the usual.
struct FailureTexts
{
    const char16_t *input;
    const char16_t *output;
};

inline constexpr FailureTexts usual_texts = {nullptr, nullptr};

/// Marshals one call of a target: takes the results back through the same section and answers on the pipe. An element
/// list lies in the section from offset 0 on, in the order in which it is given here.
class HandlerCall
{
public:
    /// `handler` is the handler's name, which its usual failure texts carry; it must outlive the object.
    HandlerCall(CIPCCommunication &channel, const char *handler, const FailureTexts &texts = usual_texts)
        : m_channel(channel), m_handler(handler), m_texts(texts)
    {}

    /// Reads the in-list. On false it has sent "Failed to serialise input (<handler>)", and the handler returns
    /// without having called its target.
    template <class... Elements>
    [[nodiscard]] bool Read(Elements &...elements)
    {
        const std::array<CDataElement *, sizeof...(elements)> list = {&elements...};
        return ReadList(list);
    }

    /// Writes the out-list over the section, which first grows if the upper bounds don't fit. On false it has sent
    /// "Failed to serialise output (<handler>)", and the handler returns. What the target did stays done.
    template <class... Elements>
    [[nodiscard]] bool Write(Elements &&...elements)
    {
        const std::array<CDataElement *, sizeof...(elements)> list = {&elements...};
        return WriteList(list);
    }

    /// Sends the success reply.
    void Succeed() { SendSuccessReply(m_channel); }

    /// Write and, when that went well, Succeed.
    template <class... Elements>
    void Reply(Elements &&...elements)
    {
        const std::array<CDataElement *, sizeof...(elements)> list = {&elements...};
        ReplyList(list);
    }

    /// Read and Reply, for elements that stand in a list already.
    [[nodiscard]] bool ReadList(std::span<CDataElement *const> list);
    void ReplyList(std::span<CDataElement *const> list);

private:
    bool WriteList(std::span<CDataElement *const> list);
    bool FailInput();
    bool FailOutput();
    bool Fail(const char16_t *text, const char16_t *usual_start);

    CIPCCommunication &m_channel;
    const char *m_handler;
    FailureTexts m_texts;
};

/// The last error that a call with that result left behind: 0 for a success, whatever the thread's last error is. Right
/// only in the statement behind the call.
inline std::uint32_t LastErrorAfter(std::uint32_t result)
{
    return result == 0 ? 0 : platform::LastError();
}

/// The target's address as a function of that type.
template <class Function>
Function *AsTarget(void *function)
{
    return reinterpret_cast<Function *>(function);
}

} // namespace kessil
