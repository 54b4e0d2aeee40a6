#include "parent/adapter/command.h"

#include "parent/wire/frame.h"
#include "platform/text.h"
#include "platform/wipe.h"

#include <algorithm>
#include <limits>
#include <random>

namespace kessil::parent {
namespace {

using platform::PipeStatus;

constexpr std::int32_t yes = 1;
constexpr std::int32_t no = -1;
constexpr std::int32_t line_follows = -99;
constexpr std::int32_t end_of_log = -999;
constexpr std::uint32_t mark_of_failure = 0xFFFFFFFF;

// Where the helper's texts end to make sense.
constexpr std::uint32_t longest_answer = 1 << 20;

// Texts grow in such pieces as they arrive.
constexpr std::uint32_t text_piece = 4096;

// The fence's answer up to the number that it is known by: type, length, -1, number. No answer of a command is so short
// that fewer bytes come.
constexpr std::size_t fence_start = 13;

std::span<const unsigned char> BytesOf(std::span<const std::byte> data)
{
    return {reinterpret_cast<const unsigned char *>(data.data()), data.size()};
}

// An adapter's text for a person, who gets UTF-8.
std::string Shown(const std::string &text)
{
    WideString wide = platform::FromUtf8(text);
    while (!wide.empty() && (wide.back() == u'\n' || wide.back() == u'\r'))
        wide.pop_back();
    std::replace_if(
        wide.begin(), wide.end(), [](char16_t unit) { return unit >= 0xDC80 && unit <= 0xDCFF; }, u'?');
    return platform::ToUtf8(wide);
}

} // namespace

Answer MakeAnswer(Result result, bool okay, std::string error, const Request &request)
{
    Answer answer{.result = std::move(result)};
    if (!answer.result) {
        answer.message = answer.result.message;
        return answer;
    }
    answer.okay = okay;
    answer.error = std::move(error);
    if (okay)
        return answer;
    const std::string reason = Shown(answer.error);
    answer.message = request.Description() + " failed" + (reason.empty() ? ", without a reason" : ": " + reason);
    return answer;
}

Command::Command(CommandContext &context, int number, std::string_view name)
    : m_context(context), m_keeper(context.keeper), m_request{.deed = {},
                                                              .subject = context.keeper.AdapterName(),
                                                              .function = name,
                                                              .command = number,
                                                              .on_log = &context.options.on_log}
{
    m_context.bytes.assign({0x66, static_cast<unsigned char>(number)});
}

Command::~Command()
{
    if (m_secret)
        platform::Wipe(m_context.bytes.data(), m_context.bytes.size());
}

void Command::Number(std::uint64_t value, int width)
{
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
        m_context.bytes.push_back(static_cast<unsigned char>(value >> shift));
}

Command &Command::U32(std::uint32_t value)
{
    Number(value, 4);
    return *this;
}

Command &Command::U64(std::uint64_t value)
{
    Number(value, 8);
    return *this;
}

Command &Command::Text(std::string_view text)
{
    return Require(text.find('\0') == text.npos, "a text holds a zero").Object(text);
}

Command &Command::Object(std::string_view text)
{
    Require(text.size() <= longest_text, "a text is longer than 1024 bytes");
    if (!m_fault.empty())
        return *this;
    U32(static_cast<std::uint32_t>(text.size()));
    m_context.bytes.insert(m_context.bytes.end(), text.begin(), text.end());
    return *this;
}

Command &Command::Block(std::span<const std::byte> data)
{
    Require(data.size() <= std::numeric_limits<std::uint32_t>::max(), "a block has 4 GiB or more");
    m_block = BytesOf(data);
    return U32(static_cast<std::uint32_t>(data.size()));
}

Command &Command::Require(bool good, const char *reason)
{
    if (!good && m_fault.empty())
        m_fault = reason;
    return *this;
}

Command &Command::Secret()
{
    m_secret = true;
    // Bytes that grew would leave a copy behind.
    m_context.bytes.reserve(2 + 2 * (4 + longest_text));
    return *this;
}

void Command::Finish(Result result)
{
    if (!m_end)
        m_end = std::move(result);
}

void Command::Broken(const std::string &reason)
{
    if (!m_end)
        m_end = m_keeper.EndBroken(reason);
}

// With arguments, the helper now reads them as requests.
void Command::Refuse()
{
    if (!m_end)
        m_end = m_keeper.Refused(m_context.bytes.size() == 2);
}

void Command::Send()
{
    if (!m_fault.empty())
        return Finish(m_keeper.NotSent(m_request.Description() + ": " + m_fault));
    if (std::optional<Result> end = m_keeper.BeginCommand(m_request, m_context.options.limit))
        return Finish(std::move(*end));
    if (m_fenced)
        AddFence();
    PipeStatus status = m_keeper.Send(m_context.bytes);
    if (status == PipeStatus::Done && !m_block.empty())
        status = m_keeper.Send(m_block);
    if (status == PipeStatus::Done)
        return;
    // A helper that refuses doesn't wait for the arguments' end, and its last word may be there.
    unsigned char first[4];
    if (status == PipeStatus::Closed && m_keeper.Receive(first) == PipeStatus::Done &&
        FromBigEndian(first) == mark_of_failure)
        return Refuse();
    Finish(m_keeper.EndByPipe(status));
}

bool Command::Receive(std::span<unsigned char> place)
{
    if (m_end)
        return false;
    const PipeStatus status = m_keeper.Receive(place);
    if (status != PipeStatus::Done)
        m_end = m_keeper.EndByPipe(status);
    return !m_end;
}

bool Command::Take(std::uint32_t &value)
{
    unsigned char bytes[4];
    if (!Receive(bytes))
        return false;
    value = static_cast<std::uint32_t>(FromBigEndian(bytes));
    return true;
}

bool Command::Take(std::int32_t &value)
{
    std::uint32_t number = 0;
    if (!Take(number))
        return false;
    value = static_cast<std::int32_t>(number);
    return true;
}

bool Command::TakeText(std::string &text)
{
    std::uint32_t length = 0;
    return Take(length) && TakeText(length, text);
}

bool Command::TakeText(std::uint32_t length, std::string &text)
{
    text.clear();
    if (length > longest_answer)
        Broken("a text of " + std::to_string(length) + " bytes");
    while (!m_end && text.size() < length) {
        const std::size_t had = text.size();
        text.resize(had + std::min<std::size_t>(text_piece, length - had));
        Receive({reinterpret_cast<unsigned char *>(text.data()) + had, text.size() - had});
    }
    return !m_end;
}

void Command::TakeLog()
{
    std::int32_t mark = 0;
    bool first = true;
    while (Take(mark) && mark != end_of_log) {
        if (mark == no && first)
            return Refuse();
        if (mark != line_follows)
            return Broken("the number " + std::to_string(mark) + " in the place of a log line");
        if (!TakeLine())
            return;
        first = false;
    }
}

bool Command::TakeLine()
{
    std::uint32_t level = 0;
    if (!TakeText(m_context.line) || !Take(level))
        return false;
    if (level > 0xFF) {
        Broken("a log line of level " + std::to_string(level));
        return false;
    }
    m_keeper.CountNotice();
    if (m_context.options.on_log)
        m_context.options.on_log(static_cast<std::uint8_t>(level), m_context.line);
    return true;
}

// What follows the mark of a failure.
void Command::TakeNo()
{
    m_okay = false;
    TakeText(m_error);
}

void Command::TakeStatus()
{
    std::int32_t status = 0;
    if (!Take(status) || status == yes)
        return;
    if (status != no)
        return Broken("the number " + std::to_string(status) + " in the place of a status");
    TakeNo();
}

void Command::TakeFirstStatus()
{
    std::int32_t status = 0;
    if (!Take(status) || status == yes)
        return;
    if (status != no)
        return Broken("the number " + std::to_string(status) + " in the place of a status");
    // A refusal looks like the start of the adapter's own failure. But behind it the helper meets the arguments, whose
    // first byte is a zero, as a request, and ends.
    m_okay = false;
    unsigned char length[4];
    const PipeStatus end = m_keeper.Receive(length);
    if (end == PipeStatus::Closed || end == PipeStatus::Failed)
        return Finish(m_keeper.RefusedOrDead());
    if (end != PipeStatus::Done)
        return Finish(m_keeper.EndByPipe(end));
    TakeText(static_cast<std::uint32_t>(FromBigEndian(length)), m_error);
}

void Command::TakeFirstText(std::string &text)
{
    std::uint32_t length = 0;
    if (!Take(length))
        return;
    if (length == mark_of_failure)
        return Refuse();
    TakeText(length, text);
}

void Command::TakeListing(std::vector<AdapterItem> &items, ItemForm form)
{
    std::uint32_t count = 0;
    if (Take(count))
        TakeItems(count, items, form);
}

void Command::TakeItems(std::uint32_t count, std::vector<AdapterItem> &items, ItemForm form)
{
    items.clear();
    if (count > std::uint32_t{std::numeric_limits<std::int32_t>::max()})
        return Broken("a listing of " + std::to_string(count) + " items");
    AdapterItem item;
    for (std::uint32_t i = 0; i < count && TakeItem(item, form); ++i)
        items.push_back(std::move(item));
}

bool Command::TakeItem(AdapterItem &item, ItemForm form)
{
    unsigned char numbers[16];
    const std::span<unsigned char> all(numbers);
    if (!TakeText(item.name) || !Receive(all.first(form == ItemForm::WithExtra ? 16 : 12)))
        return false;
    item.value = FromBigEndian(all.first(8));
    item.number = static_cast<std::int32_t>(FromBigEndian(all.subspan(8, 4)));
    if (form == ItemForm::WithExtra)
        item.extra = static_cast<std::int32_t>(FromBigEndian(all.subspan(12, 4)));
    return true;
}

void Command::TakeBlock(std::span<std::byte> place)
{
    std::uint32_t length = 0;
    if (!Take(length))
        return;
    if (length == mark_of_failure)
        return TakeNo();
    if (length != place.size())
        return Broken("a block of " + std::to_string(length) + " bytes in the place of one of " +
                      std::to_string(place.size()));
    Receive({reinterpret_cast<unsigned char *>(place.data()), place.size()});
}

Answer Command::End()
{
    if (!m_end && m_keeper.HasMore())
        Broken("more bytes behind its answer");
    return MakeAnswer(m_end ? std::move(*m_end) : m_keeper.Answered(), m_okay, std::move(m_error), m_request);
}

Answer Command::AskStatus()
{
    Send();
    TakeLog();
    TakeStatus();
    return End();
}

Answer Command::AskListing(std::vector<AdapterItem> &items, ItemForm form)
{
    Send();
    TakeLog();
    std::uint32_t count = 0;
    if (Take(count) && count == mark_of_failure)
        TakeNo();
    else if (!m_end)
        TakeItems(count, items, form);
    return End();
}

std::optional<std::uint32_t> Command::AskMarkedValue()
{
    Send();
    TakeLog();
    std::uint32_t value = 0;
    if (Take(value) && value == mark_of_failure)
        TakeNo();
    return Okay() ? std::optional(value) : std::nullopt;
}

bool Command::IsIndex(std::uint32_t value)
{
    const bool index = value <= std::uint32_t{std::numeric_limits<std::int32_t>::max()};
    if (!index)
        Broken("the number " + std::to_string(static_cast<std::int32_t>(value)) + " in the place of a handle");
    return index;
}

// A lookup of a message text in a file without a name: it finds nothing and changes nothing.
void Command::AddFence()
{
    FrameWriter writer;
    m_fence = static_cast<std::uint32_t>(std::random_device{}());
    const auto frame = writer.Begin('X').U32(m_fence).Wide({}).Finish();
    m_context.bytes.insert(m_context.bytes.end(), frame.begin(), frame.end());
}

bool Command::LooksLikeFence()
{
    std::span<const unsigned char> start;
    if (m_end)
        return false;
    const PipeStatus status = m_keeper.Look(fence_start, start);
    if (status != PipeStatus::Done) {
        m_end = m_keeper.EndByPipe(status);
        return false;
    }
    return start[0] == 'E' && FromBigEndian(start.subspan(5, 4)) == 0xFFFFFFFF &&
           FromBigEndian(start.subspan(9, 4)) == m_fence;
}

void Command::TakeFence()
{
    if (!m_end && !LooksLikeFence())
        return Broken("another answer than that to the request behind the call");
    unsigned char header[frame_header_size];
    if (!Receive(header))
        return;
    const auto length = static_cast<std::uint32_t>(FromBigEndian(std::span(header).subspan(1)));
    std::string payload;
    if (!TakeText(length, payload))
        return;
    PayloadReader fields({reinterpret_cast<const unsigned char *>(payload.data()), payload.size()});
    fields.U64();
    if (!fields.Wide())
        Broken("a malformed failure frame");
}

std::optional<std::uint32_t> Command::AskValue()
{
    m_fenced = true;
    Send();
    TakeLog();
    std::uint32_t value = 0;
    if (Take(value) && !LooksLikeFence()) {
        m_okay = false;
        TakeText(value, m_error);
    }
    TakeFence();
    return Okay() ? std::optional(value) : std::nullopt;
}

Answer Command::AskEcho(std::uint32_t value)
{
    const std::optional<std::uint32_t> echo = AskValue();
    // A no without a text is a length of 0.
    if (echo == 0U && value != 0)
        m_okay = false;
    else if (echo && *echo != value)
        Broken("the number " + std::to_string(static_cast<std::int32_t>(*echo)) +
               " in the place of the handle that it was given");
    return End();
}

} // namespace kessil::parent
