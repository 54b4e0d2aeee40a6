#pragma once

#include "parent/adapter/command_context.h"
#include "parent/adapter/command_source.h"
#include "parent/adapter/sentinel.h"

namespace kessil::parent {

/// One call by a command whose values are bare on the pipe, as wire/bare_values.h describes them. Arguments first, in
/// their order, then Send, then what the command answers, then End. The first step that fails ends the call; those
/// behind it do nothing and return false.
class Command
{
public:
    Command(CommandContext &context, int number, std::string_view name);
    ~Command();
    Command(const Command &) = delete;
    Command &operator=(const Command &) = delete;

    // Arguments.

    Command &U32(std::uint32_t value);
    Command &U64(std::uint64_t value);
    Command &Flag(bool value) { return U32(value ? 1 : 0); }

    /// A text that the adapter reads up to its first zero. One with a zero inside isn't sent.
    Command &Text(std::string_view text);

    /// A text that the adapter reads whole.
    Command &WholeText(std::string_view text);

    /// The last argument, sent from where it lies.
    Command &Block(std::span<const std::byte> data);

    /// Makes the call NotSent for this reason unless `good`.
    Command &Require(bool good, const char *reason);

    /// Leaves no copy of the arguments behind. To be called before them.
    Command &Secret();

    void Send();

    // The answer.

    void ReadLog();

    /// 1, or -1 and the adapter's text.
    void ReadStatus();

    /// The same for the command that sends no log block.
    void ReadFirstStatus();
    void ReadFirstText(std::string &text);

    bool Read(std::int32_t &value) { return m_reader.Number(value); }
    bool Read(std::uint32_t &value) { return m_reader.Number(value); }

    void ReadListing(std::vector<AdapterItem> &items, ItemForm form);

    template <class Handle>
    void ReadHandle(Handle &handle)
    {
        std::uint32_t index = 0;
        if (Read(index) && IsIndex(index))
            handle = static_cast<Handle>(index);
    }

    /// A block that has to be as long as `place`, or -1 and the adapter's text.
    void ReadBlock(std::span<std::byte> place);

    /// Whether the adapter has said yes so far.
    bool Okay() const { return !m_source.Ended() && m_okay; }

    Answer End();

    // Whole calls, from Send to End.

    Answer AskStatus();

    /// The listing, or -1 and the adapter's text.
    Answer AskListing(std::vector<AdapterItem> &items, ItemForm form);

    /// A handle, or the adapter's text alone. Only what follows shows which, so a Sentinel is sent behind the call.
    template <class Handle>
    Answer AskHandle(Handle &handle)
    {
        const std::optional<std::uint32_t> value = AskValue();
        if (value && IsIndex(*value))
            handle = static_cast<Handle>(*value);
        return End();
    }

    /// The same, for a command whose only good answer is this value.
    Answer AskEcho(std::uint32_t value);

    /// A handle, or -1 and the adapter's text.
    template <class Handle>
    Answer AskMarkedHandle(Handle &handle)
    {
        const std::optional<std::uint32_t> value = AskMarkedValue();
        if (value && IsIndex(*value))
            handle = static_cast<Handle>(*value);
        return End();
    }

private:
    void SendBytes();
    std::optional<std::uint32_t> AskValue();
    std::optional<std::uint32_t> AskMarkedValue();
    bool IsIndex(std::uint32_t value);
    bool PeekSentinel();
    void SkipSentinel();
    bool ReadLogLine();
    void ReadFailure();
    void EndRefused();

    CommandContext &m_context;
    Session &m_session;
    const Request m_request;
    CommandSource m_source;
    BareReader<CommandSource> m_reader{m_source};
    std::span<const unsigned char> m_block;
    std::optional<Sentinel> m_sentinel;
    bool m_secret = false;
    std::string m_fault; ///< why the call can't be sent; empty when it can
    bool m_okay = true;
    std::string m_error;
};

} // namespace kessil::parent
