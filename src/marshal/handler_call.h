#pragma once

#include "channel/ipc_communication.h"
#include "marshal/elements.h"
#include "marshal/replies.h"

#include <array>
#include <span>

namespace kessil {

/// What a handler says when its in-list can't be read or its out-list can't be written, where that isn't the usual.
struct FailureTexts
{
    const char16_t *input;
    const char16_t *output;
};

/// Marshals one call of a target: takes the results back through the same section and answers on the pipe. An element
/// list lies in the section from offset 0 on, in the order in which it is given here.
class HandlerCall
{
public:
    /// `handler` is the handler's name, which its failure texts carry; it must outlive the object.
    HandlerCall(CIPCCommunication &channel, const char *handler) : m_channel(channel), m_handler(handler) {}

    /// For a handler whose failure texts are these instead.
    HandlerCall(CIPCCommunication &channel, const FailureTexts &texts) : m_channel(channel), m_texts(texts) {}

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
        if (Write(elements...))
            Succeed();
    }

private:
    bool ReadList(std::span<CDataElement *const> list);
    bool WriteList(std::span<CDataElement *const> list);
    bool MakeRoom(std::span<CDataElement *const> list);
    bool WriteElements(std::span<CDataElement *const> list);
    bool FailInput();
    bool FailOutput();
    bool Fail(const char16_t *text, const char16_t *usual_start);

    CIPCCommunication &m_channel;
    const char *m_handler = nullptr;
    FailureTexts m_texts = {nullptr, nullptr};
};

/// The target's address as a function of that type.
template <class Function>
Function *AsTarget(void *function)
{
    return reinterpret_cast<Function *>(function);
}

} // namespace kessil
