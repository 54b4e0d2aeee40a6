#pragma once

#include <kessil/adapter.h>

#include "parent/session/request.h"
#include "platform/pipe_server.h"

namespace kessil::parent {

/// What a call by command needs of the Helper that it goes through. The request that was begun last is the one that all
/// others speak of.
class CommandKeeper
{
public:
    /// The name that calls by command go to; empty when none is loaded.
    virtual std::u16string_view AdapterName() const = 0;

    /// Loads a library for calls by command. Each unit of the name is at most 0xFF.
    virtual Result LoadAdapter(std::u16string_view library) = 0;

    /// Begins a request. When it can't be made: how it ended.
    virtual std::optional<Result> BeginCommand(const Request &request, const TimeLimit &limit) = 0;

    virtual platform::PipeStatus Send(std::span<const unsigned char> bytes) = 0;

    /// Waits for exactly these bytes.
    virtual platform::PipeStatus Receive(std::span<unsigned char> place) = 0;

    /// Waits for the next bytes, without taking them.
    virtual platform::PipeStatus Look(std::size_t size, std::span<const unsigned char> &bytes) = 0;

    virtual bool HasMore() const = 0;
    virtual void CountNotice() = 0;

    /// The whole of a call by section: sends the argument list that was begun and waits for the answer.
    virtual Result CallBySection(const Request &request, const TimeLimit &limit) = 0;

    // The ends of a request.

    virtual Result Answered() = 0;
    virtual Result NotSent(std::string reason) const = 0;
    virtual Result EndByPipe(platform::PipeStatus status) = 0;
    virtual Result EndBroken(const std::string &reason) = 0;

    /// The helper has no such function. `in_step` false: it took the arguments for requests and is ended here.
    virtual Result Refused(bool in_step) = 0;

    /// The pipe closed behind what may have been a refusal: how the helper ended tells.
    virtual Result RefusedOrDead() = 0;

protected:
    ~CommandKeeper() = default;
};

/// What one Adapter keeps for its calls.
struct CommandContext
{
    Helper &helper;
    CommandKeeper &keeper;
    AdapterOptions options;
    std::vector<unsigned char> bytes{}; ///< of the request, kept for its memory
    std::string line{};                 ///< of the adapter's log, likewise
};

/// The length of a piece of text that the helper accepts.
constexpr std::size_t longest_text = 1024;

enum class ItemForm
{
    Short,
    WithExtra
};

/// A handle as it is sent.
template <class Handle>
requires std::is_enum_v<Handle> std::uint32_t Sent(Handle handle)
{
    return static_cast<std::uint32_t>(handle);
}

/// One call by a command whose values are bare on the pipe:
///
///     0x66, 1 byte command, the arguments; then from the helper the log block and the command's answer
///     number      4 or 8 bytes, big-endian
///     text        4 bytes length, the bytes
///     log block   for each line -99, text, 4 bytes level; at the end -999
///     listing     4 bytes count; for each item text, 8 bytes value, 4 bytes number, for some 4 bytes extra
///
/// A bare -1 in the place of the first answer is a refusal. Arguments come first, in their order, then Send, then what
/// the command answers, then End. The first step that fails ends the call; those behind it do nothing and return false.
class Command
{
public:
    Command(CommandContext &context, int number, std::string_view name);
    ~Command();
    Command(const Command &) = delete;
    Command &operator=(const Command &) = delete;

    Command &U32(std::uint32_t value);
    Command &U64(std::uint64_t value);
    Command &Flag(bool value) { return U32(value ? 1 : 0); }

    /// A text that the adapter reads up to its first zero.
    Command &Text(std::string_view text);

    /// A text that the adapter takes whole.
    Command &Object(std::string_view text);

    /// The last argument, sent from where it lies.
    Command &Block(std::span<const std::byte> data);

    /// Makes the call NotSent for this reason unless `good`.
    Command &Require(bool good, const char *reason);

    /// Leaves no copy of the arguments behind. Before them.
    Command &Secret();

    void Send();
    void TakeLog();

    /// 1, or -1 and the adapter's text.
    void TakeStatus();

    /// The same for the command that sends no log block.
    void TakeFirstStatus();
    void TakeFirstText(std::string &text);

    bool Take(std::int32_t &value);
    bool Take(std::uint32_t &value);

    void TakeListing(std::vector<AdapterItem> &items, ItemForm form);

    template <class Handle>
    void TakeHandle(Handle &handle)
    {
        std::uint32_t index = 0;
        if (Take(index) && IsIndex(index))
            handle = static_cast<Handle>(index);
    }

    /// A block that has to be as long as `place`, or -1 and the adapter's text.
    void TakeBlock(std::span<std::byte> place);

    /// Whether the adapter has said yes so far.
    bool Okay() const { return !m_end && m_okay; }

    Answer End();

    // Whole calls, from Send to End.

    Answer AskStatus();

    /// The listing, or -1 and the adapter's text.
    Answer AskListing(std::vector<AdapterItem> &items, ItemForm form);

    /// A handle, or the adapter's text alone. Nothing but what follows tells the two apart, so a harmless request whose
    /// answer is known is sent behind this one.
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
    std::optional<std::uint32_t> AskValue();
    std::optional<std::uint32_t> AskMarkedValue();
    bool IsIndex(std::uint32_t value);
    void AddFence();
    bool LooksLikeFence();
    void TakeFence();

    bool Receive(std::span<unsigned char> place);
    bool TakeText(std::uint32_t length, std::string &text);
    bool TakeText(std::string &text);
    void TakeItems(std::uint32_t count, std::vector<AdapterItem> &items, ItemForm form);
    bool TakeItem(AdapterItem &item, ItemForm form);
    bool TakeLine();
    void TakeNo();
    void Broken(const std::string &reason);
    void Finish(Result result);
    void Number(std::uint64_t value, int width);
    void Refuse();

    CommandContext &m_context;
    CommandKeeper &m_keeper;
    Request m_request;
    std::span<const unsigned char> m_block;
    std::uint32_t m_fence = 0;
    bool m_fenced = false;
    bool m_secret = false;
    std::string m_fault; ///< why the call can't be sent; empty when it can
    std::optional<Result> m_end;
    bool m_okay = true;
    std::string m_error;
};

/// The answer to a request that has ended so, with what the adapter said.
Answer MakeAnswer(Result result, bool okay, std::string error, const Request &request);

} // namespace kessil::parent
