#include <kessil/parent.h>

#include "parent/adapter/command.h"
#include "parent/section/lists.h"
#include "parent/section/shared_section.h"
#include "parent/session/helper_log.h"
#include "parent/session/request.h"
#include "parent/wire/connection.h"
#include "parent/wire/frame.h"
#include "platform/last_error.h"
#include "platform/process.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <limits>
#include <set>
#include <thread>

namespace kessil::parent {
namespace {

using namespace std::chrono_literals;
using platform::Deadline;
using platform::PipeStatus;
using Clock = std::chrono::steady_clock;

// How often Start looks whether the process has ended while it waits for it to connect.
constexpr auto attach_slice = 20ms;

// How long a helper whose pipe broke may take to end: it gives itself two seconds after a fault.
constexpr auto ending_limit = 5s;

// How a handler's failure frame begins behind which the rest of its answer follows all the same: its library failed and
// had no text to say why.
constexpr std::u16string_view missing_text = u"Failed to get error message (";

constexpr std::uint32_t largest_section = std::numeric_limits<std::uint32_t>::max();

[[maybe_unused]] WideString Wide(const std::string &native)
{
    return platform::FromUtf8(native);
}

[[maybe_unused]] WideString Wide(const std::wstring &native)
{
    return {native.begin(), native.end()};
}

// The helper takes the low byte of each unit of its log file's name. On a system whose file names are bytes they are
// handed over as one unit each.
[[maybe_unused]] WideString LogArgument(const std::string &native)
{
    WideString argument;
    for (const char byte : native)
        argument += static_cast<unsigned char>(byte);
    return argument;
}

[[maybe_unused]] WideString LogArgument(const std::wstring &native)
{
    return Wide(native);
}

// The frame that held a secret, overwritten on every way out.
struct WipedAtEnd
{
    explicit WipedAtEnd(FrameWriter &held) : writer(held) {}
    ~WipedAtEnd() { writer.Wipe(); }
    WipedAtEnd(const WipedAtEnd &) = delete;
    WipedAtEnd &operator=(const WipedAtEnd &) = delete;

    FrameWriter &writer;
};

std::string SystemText(std::uint32_t code)
{
    std::string text = platform::ToUtf8(platform::ErrorText(code));
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
        text.pop_back();
    return text.empty() ? "error " + std::to_string(code) : text;
}

std::string Printed(std::chrono::microseconds time)
{
    char text[32];
    if (time < 1s)
        std::snprintf(text, sizeof text, "%.2f ms", static_cast<double>(time.count()) / 1e3);
    else
        std::snprintf(text, sizeof text, "%.1f s", static_cast<double>(time.count()) / 1e6);
    return text;
}

std::string Quoted(const std::string &text)
{
    return '"' + text + '"';
}

std::chrono::microseconds Since(Clock::time_point start)
{
    return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
}

Deadline After(Clock::time_point start, std::chrono::milliseconds limit)
{
    return limit.count() <= 0 ? Deadline::max() : start + limit;
}

} // namespace

const char *Name(Outcome outcome)
{
    switch (outcome) {
    case Outcome::Answered:
        return "Answered";
    case Outcome::Refused:
        return "Refused";
    case Outcome::Hung:
        return "Hung";
    case Outcome::Died:
        return "Died";
    case Outcome::BrokenProtocol:
        return "BrokenProtocol";
    case Outcome::NeverStarted:
        return "NeverStarted";
    case Outcome::ExitedAtOnce:
        return "ExitedAtOnce";
    case Outcome::NeverAttached:
        return "NeverAttached";
    case Outcome::Cancelled:
        return "Cancelled";
    case Outcome::NotSent:
        return "NotSent";
    }
    return "?";
}

struct Helper::Impl final : SectionKeeper, CommandKeeper
{
    enum class Stage
    {
        Fresh,
        Running,
        Stopped,
        Over
    };

    explicit Impl(Options given) : options(std::move(given)), log(options.log_file) {}
    ~Impl();

    // SectionKeeper
    bool Grow(std::uint64_t needed, std::uint32_t used, std::string &fault) override;
    unsigned char *View() const override { return section.View(); }
    std::uint32_t Size() const override { return section.Size(); }
    Result NoResults() override;
    Result ImpossibleResults(std::string_view reason) override;

    // CommandKeeper
    std::u16string_view AdapterName() const override;
    Result LoadAdapter(std::u16string_view library) override;
    std::optional<Result> BeginCommand(const Request &request, const TimeLimit &limit) override;
    PipeStatus Send(std::span<const unsigned char> bytes) override { return connection.Write(bytes, kill_at); }
    PipeStatus Receive(std::span<unsigned char> place) override;
    PipeStatus Look(std::size_t size, std::span<const unsigned char> &bytes) override;
    bool HasMore() const override { return connection.HasMore(); }
    void CountNotice() override { ++figures.notices; }
    Result CallBySection(const Request &request, const TimeLimit &limit) override;
    Result Answered() override { return {.elapsed = Since(sent_at)}; }
    Result NotSent(std::string reason) const override;
    Result EndByPipe(PipeStatus status) override { return EndByPipe(status, command, command_limit); }
    Result EndBroken(const std::string &reason) override { return EndBroken(command, reason); }
    Result Refused(bool in_step) override;
    Result RefusedOrDead() override;

    Result Start();
    Result Attach(const std::string &what);
    Result Call(const Request &request, const TimeLimit &limit);
    Result Stop(std::chrono::milliseconds limit);
    void Cancel() noexcept;

    /// Sends what `writer` holds and waits for the final answer. On Answered and Refused `answer` is that frame.
    Result Exchange(const Request &request, const TimeLimit &limit, Frame &answer);
    Result Exchange(const Request &request)
    {
        Frame answer;
        return Exchange(request, options.request_limit, answer);
    }

    /// The same for these bytes.
    Result Exchange(const Request &request, const TimeLimit &limit, std::span<const unsigned char> bytes,
                    Frame &answer);
    void BeginRequest(const TimeLimit &limit);

    /// Waits by `read`, which takes a deadline and goes on where it stopped, and tells when that is slow.
    template <class Read>
    PipeStatus Await(const Request &request, const TimeLimit &limit, Read read);
    std::optional<Result> Settle(const Request &request, const Frame &frame);
    bool TakeExcuse(const Frame &frame);
    Result Refusal(const Request &request, const Frame &frame);
    bool TakeNotice(const Request &request, const Frame &frame);

    /// Moves to the section that the helper has announced, or tells it that this can't be done. The text of what is
    /// wrong with the announcement; empty when nothing is.
    std::string TakeAnnouncement(const Frame &frame, PipeStatus &answered);

    /// How a frame that no helper sends ends the request.
    Result EndStray(const Request &request, const TimeLimit &limit, const Frame &frame);
    Result EndByPipe(PipeStatus status, const Request &request, const TimeLimit &limit);
    Result EndDead(const Request &request, const std::string &reason);
    Result EndBroken(const Request &request, const std::string &reason);

    /// Ends the helper and everything kept for it, and makes the Result that all later requests get.
    Result End(Outcome outcome, std::string message, std::optional<std::uint32_t> exit_code);
    std::optional<std::uint32_t> AwaitExit(std::chrono::milliseconds limit);
    std::string LogTail() const;
    void RemoveSectionNames();

    Options options;
    HelperLog log;
    Connection connection;
    std::atomic<platform::Process *> process{nullptr};
    std::atomic<bool> cancelled{false};
    std::atomic<int> cancellers{0};
    Stage stage = Stage::Fresh;
    Result end;
    Clock::time_point sent_at{};
    bool warned = false;
    Deadline warn_at{};
    Deadline kill_at{};
    WideString excuse; ///< of a library that failed without a text

    Request command{}; ///< begun last
    TimeLimit command_limit{};
    std::set<WideString> adapters; ///< loaded for commands

    FrameWriter writer;
    SharedSection section;
    WideString section_name; ///< as the helper knows it
    Statistics figures;
    InList::State in_state{*this};
    OutList::State out_state{*this};
    InList in{in_state};
    OutList out{out_state};
};

Helper::Impl::~Impl()
{
    if (stage == Stage::Running)
        End(Outcome::Cancelled, {}, std::nullopt);
    platform::Process *child = process.exchange(nullptr);
    while (cancellers != 0)
        std::this_thread::yield();
    platform::ReleaseProcess(child);
}

Result Helper::Impl::Start()
{
    if (stage != Stage::Fresh)
        return NotSent("the helper was started before");
    sent_at = Clock::now();
    if (cancelled)
        return End(Outcome::Cancelled, "the start was cancelled", std::nullopt);
    const std::string program = platform::ToUtf8(Wide(options.program.native()));
    if (!connection.Create())
        return End(Outcome::NeverStarted,
                   "the helper " + Quoted(program) +
                       " was not started: no pipe could be made for it: " + SystemText(platform::LastError()),
                   std::nullopt);

    const std::vector<WideString> arguments = {connection.Name(), u"--log_level",
                                               options.log_level == LogLevel::Debug ? u"debug" : u"error",
                                               u"--out_file", LogArgument(log.Path().native())};
    std::string what = "the helper " + Quoted(program) + " (arguments:";
    for (const WideString &argument : arguments)
        what += ' ' + Quoted(platform::ToUtf8(argument));
    what += ')';

    std::error_code ignored;
    const auto path = std::filesystem::absolute(options.program, ignored);
    process = platform::StartProcess(Wide(path.native()), arguments, Wide(options.working_directory.native()));
    if (process == nullptr)
        return End(Outcome::NeverStarted, what + " could not be started: " + SystemText(platform::LastError()),
                   std::nullopt);
    return Attach(what);
}

Result Helper::Impl::Attach(const std::string &what)
{
    const Deadline limit = sent_at + options.attach_limit;
    bool ended = false;
    for (;;) {
        // A process that has ended may still have connected before.
        const auto slice = Clock::now() + attach_slice;
        const PipeStatus status =
            connection.Accept(platform::ProcessId(*process), ended ? slice : std::min(slice, limit));
        if (status == PipeStatus::Done)
            break;
        if (status == PipeStatus::WrongClient) {
            ++figures.strangers_turned_away;
            continue;
        }
        if (status == PipeStatus::Interrupted || cancelled)
            return End(Outcome::Cancelled, "the start of " + what + " was cancelled", std::nullopt);
        if (status != PipeStatus::TimedOut)
            return End(Outcome::NeverAttached, what + " could not be waited for: " + SystemText(platform::LastError()),
                       std::nullopt);
        std::uint32_t code = 0;
        if (ended) {
            platform::WaitForProcess(*process, Clock::now(), code);
            return End(Outcome::ExitedAtOnce,
                       what + " ended with exit code " + std::to_string(code) + " without having connected", code);
        }
        ended = platform::WaitForProcess(*process, Clock::now(), code);
        if (!ended && Clock::now() >= limit)
            return End(Outcome::NeverAttached,
                       what + " did not connect within " + Printed(options.attach_limit) + " and was killed",
                       std::nullopt);
    }
    stage = Stage::Running;
    return {.elapsed = Since(sent_at)};
}

Result Helper::Impl::Exchange(const Request &request, const TimeLimit &limit, Frame &answer)
{
    if (writer.Spoiled())
        return NotSent(request.Description() + ": a text holds a zero");
    return Exchange(request, limit, writer.Finish(), answer);
}

Result Helper::Impl::Exchange(const Request &request, const TimeLimit &limit, std::span<const unsigned char> bytes,
                              Frame &answer)
{
    if (stage != Stage::Running)
        return NotSent("the helper is not running");
    BeginRequest(limit);
    PipeStatus status = connection.Write(bytes, kill_at);
    while (status == PipeStatus::Done) {
        status = Await(request, limit, [&](Deadline deadline) { return connection.ReadFrame(answer, deadline); });
        if (status != PipeStatus::Done)
            break;
        if (!answer.allowed)
            return EndStray(request, limit, answer);
        if (answer.type == 'R' && request.IsCall()) {
            const std::string wrong = TakeAnnouncement(answer, status);
            if (!wrong.empty())
                return EndBroken(request, wrong);
        } else if (std::optional<Result> result = Settle(request, answer)) {
            return std::move(*result);
        }
    }
    return EndByPipe(status, request, limit);
}

void Helper::Impl::BeginRequest(const TimeLimit &limit)
{
    sent_at = Clock::now();
    warn_at = After(sent_at, limit.warn_after);
    kill_at = After(sent_at, limit.kill_after);
    warned = false;
    excuse.clear();
}

template <class Read>
PipeStatus Helper::Impl::Await(const Request &request, const TimeLimit &limit, Read read)
{
    if (!warned && warn_at < kill_at) {
        const PipeStatus status = read(warn_at);
        if (status != PipeStatus::TimedOut)
            return status;
        warned = true;
        if (options.on_slow) {
            const std::string description = request.Description();
            options.on_slow(
                {description, std::chrono::duration_cast<std::chrono::milliseconds>(Since(sent_at)), limit.kill_after});
        }
    }
    return read(kill_at);
}

// A call by command is refused by four bytes that are no frame.
Result Helper::Impl::EndStray(const Request &request, const TimeLimit &limit, const Frame &frame)
{
    if (request.command != 0 && frame.type == '\xFF') {
        std::span<const unsigned char> bytes;
        const PipeStatus status =
            Await(request, limit, [&](Deadline deadline) { return connection.Look(4, bytes, deadline); });
        if (status != PipeStatus::Done)
            return EndByPipe(status, request, limit);
        if (FromBigEndian(bytes) == 0xFFFFFFFF) {
            unsigned char taken[4];
            std::size_t done = 0;
            connection.ReadBytes(taken, done, kill_at);
            if (connection.HasMore())
                return EndBroken(request, "more bytes behind its answer");
            command = request;
            return Refused(true);
        }
    }
    return EndBroken(request, "a frame that no helper sends (type " +
                                  std::to_string(static_cast<unsigned char>(frame.type)) + ", length " +
                                  std::to_string(frame.length) + ")");
}

// The end of the request by this frame; nothing when the request goes on.
std::optional<Result> Helper::Impl::Settle(const Request &request, const Frame &frame)
{
    switch (frame.type) {
    case 'S':
        if (connection.HasMore())
            return EndBroken(request, "more bytes behind its answer");
        return Result{.text = std::move(excuse), .exit_code = std::nullopt, .elapsed = Since(sent_at)};
    case 'E':
        if (request.IsCall() && excuse.empty() && TakeExcuse(frame))
            return std::nullopt;
        if (connection.HasMore())
            return EndBroken(request, "more bytes behind its answer");
        return Refusal(request, frame);
    case 'M':
        if (request.IsCall() && TakeNotice(request, frame))
            return std::nullopt;
        return EndBroken(request, "a notice that is malformed or out of place");
    default:
        return EndBroken(request, "an announcement of a section outside a call");
    }
}

Result Helper::Impl::Refusal(const Request &request, const Frame &frame)
{
    PayloadReader payload(frame.payload);
    const auto return_code = payload.U32();
    const auto system_error = payload.U32();
    auto text = payload.Wide();
    if (!return_code || !system_error || !text)
        return EndBroken(request, "a malformed failure frame");
    ++figures.refused;
    Result result{.outcome = Outcome::Refused,
                  .return_code = static_cast<std::int32_t>(*return_code),
                  .system_error = static_cast<std::int32_t>(*system_error),
                  .text = std::move(*text),
                  .exit_code = std::nullopt,
                  .elapsed = Since(sent_at)};
    std::string reason = platform::ToUtf8(result.text);
    while (!reason.empty() && (reason.back() == '\n' || reason.back() == '\r'))
        reason.pop_back();
    result.message = "the helper refused " + request.Description() + ": " + reason + " (return code " +
                     std::to_string(result.return_code) + ", system error " + std::to_string(result.system_error) + ")";
    return result;
}

bool Helper::Impl::TakeExcuse(const Frame &frame)
{
    PayloadReader payload(frame.payload);
    if (payload.U64() != std::numeric_limits<std::uint64_t>::max())
        return false;
    std::optional<WideString> text = payload.Wide();
    if (!text || !text->starts_with(missing_text))
        return false;
    excuse = std::move(*text);
    return true;
}

bool Helper::Impl::TakeNotice(const Request &request, const Frame &frame)
{
    PayloadReader payload(frame.payload);
    const auto value = payload.U32();
    const auto text = payload.Wide();
    if (!value || *value > 255 || !text)
        return false;
    ++figures.notices;
    if (request.on_log != nullptr) {
        if (*request.on_log)
            (*request.on_log)(static_cast<std::uint8_t>(*value), platform::ToUtf8(*text));
    } else if (options.on_notice)
        options.on_notice(static_cast<std::uint8_t>(*value), *text);
    return true;
}

std::string Helper::Impl::TakeAnnouncement(const Frame &frame, PipeStatus &answered)
{
    PayloadReader payload(frame.payload);
    const auto name = payload.Wide();
    const auto size = payload.U64();
    if (!name || !size || *size == 0 || *size > largest_section)
        return "a malformed announcement of a section";
    if (*name != ToggledName(section_name))
        return "an announcement of an unknown section " + Quoted(platform::ToUtf8(*name));

    section_name = *name;
    SharedSection opened = SharedSection::Open(*name, static_cast<std::uint32_t>(*size));
    const std::uint32_t code = platform::LastError();
    platform::RemoveSectionName(*name);
    // The old section has to be gone before the answer goes out: the helper uses its name again.
    section = std::move(opened);
    if (section.View() != nullptr) {
        ++figures.sections_grown_by_helper;
        writer.Begin('S');
    } else {
        writer.Begin('E').U32(0xFFFFFFFF).U32(0xFFFFFFFF).Wide(platform::FromUtf8(SystemText(code)));
    }
    answered = connection.Write(writer.Finish(), kill_at);
    return {};
}

bool Helper::Impl::Grow(std::uint64_t needed, std::uint32_t used, std::string &fault)
{
    if (stage != Stage::Running) {
        fault = "the helper is not running";
        return false;
    }
    if (needed > largest_section) {
        fault = "the arguments take more than a section can hold";
        return false;
    }
    const std::uint64_t doubled = std::uint64_t{section.Size()} * 2;
    const auto size = static_cast<std::uint32_t>(std::clamp<std::uint64_t>(doubled, needed, largest_section));
    const WideString name = RandomSectionName();
    SharedSection grown = SharedSection::Create(name, size);
    if (grown.View() == nullptr) {
        fault = "no section of " + std::to_string(size) + " bytes: " + SystemText(platform::LastError());
        platform::RemoveSectionName(name);
        return false;
    }
    if (used != 0)
        std::memcpy(grown.View(), section.View(), used);

    writer.Begin('R').Wide(name).U64(size);
    const Request request{"opening the section", name};
    const Result result = Exchange(request);
    platform::RemoveSectionName(name);
    if (result.outcome == Outcome::Refused)
        EndDead(request, "it refused: " + platform::ToUtf8(result.text));
    if (!result) {
        fault = "the helper is not running";
        return false;
    }
    section = std::move(grown);
    section_name = name;
    ++figures.sections_announced;
    return true;
}

Result Helper::Impl::Call(const Request &request, const TimeLimit &limit)
{
    out_state.present = false;
    if (stage != Stage::Running)
        return NotSent("the helper is not running");
    if (!in_state.begun)
        return NotSent(request.Description() + ": no argument list was begun");
    if (!in_state.Finish())
        return NotSent(request.Description() + ": " + in_state.fault);
    ++figures.calls;
    figures.argument_bytes += in_state.position;
    Frame answer;
    Result result;
    if (request.command != 0) {
        const unsigned char bytes[] = {0x66, static_cast<unsigned char>(request.command)};
        result = Exchange(request, limit, bytes, answer);
    } else {
        writer.Begin('F').Wide(request.subject).Narrow(request.function).Narrow(request.signature);
        result = Exchange(request, limit, answer);
    }
    if (result && section.View() == nullptr)
        return EndBroken(request, "an answer in a section that this side could not open");
    out_state.present = bool(result);
    return result;
}

std::u16string_view Helper::Impl::AdapterName() const
{
    return adapters.empty() ? std::u16string_view() : std::u16string_view(*adapters.begin());
}

Result Helper::Impl::LoadAdapter(std::u16string_view library)
{
    std::string name;
    for (const char16_t unit : library)
        name += static_cast<char>(unit);
    if (stage != Stage::Running)
        return NotSent("the helper is not running");
    command = {"loading", library};
    command_limit = options.request_limit;
    BeginRequest(command_limit);
    PipeStatus status = connection.Write(writer.Begin('l').Raw(name).Finish(), kill_at);
    unsigned char answer[4] = {};
    if (status == PipeStatus::Done)
        status = Receive(answer);
    if (status != PipeStatus::Done)
        return EndByPipe(status);
    if (connection.HasMore())
        return EndBroken("more bytes behind its answer");
    switch (FromBigEndian(answer)) {
    case 1:
        adapters.emplace(library);
        return Answered();
    case 0xFFFFFFFF:
        adapters.erase(WideString(library));
        return Refused(true);
    default:
        return EndBroken("an answer other than yes and no");
    }
}

std::optional<Result> Helper::Impl::BeginCommand(const Request &request, const TimeLimit &limit)
{
    if (stage != Stage::Running)
        return NotSent("the helper is not running");
    if (adapters.empty())
        return NotSent(request.Description() + ": no adapter is loaded");
    ++figures.calls;
    command = request;
    command_limit = limit;
    BeginRequest(limit);
    return std::nullopt;
}

PipeStatus Helper::Impl::Receive(std::span<unsigned char> place)
{
    std::size_t done = 0;
    return Await(command, command_limit,
                 [&](Deadline deadline) { return connection.ReadBytes(place, done, deadline); });
}

PipeStatus Helper::Impl::Look(std::size_t size, std::span<const unsigned char> &bytes)
{
    return Await(command, command_limit, [&](Deadline deadline) { return connection.Look(size, bytes, deadline); });
}

Result Helper::Impl::CallBySection(const Request &request, const TimeLimit &limit)
{
    if (stage == Stage::Running && adapters.empty())
        return NotSent(request.Description() + ": no adapter is loaded");
    return Call(request, limit);
}

Result Helper::Impl::Refused(bool in_step)
{
    ++figures.refused;
    const std::string reason =
        command.IsCall() ? ", a function that the library doesn't have" : ", for a reason that its log may tell";
    std::string message = "the helper refused " + command.Description() + reason;
    if (!in_step)
        return End(Outcome::Refused, message + ", and took the arguments for requests, so it was ended", std::nullopt);
    return {.outcome = Outcome::Refused,
            .message = message + LogTail(),
            .text = {},
            .exit_code = std::nullopt,
            .elapsed = Since(sent_at)};
}

Result Helper::Impl::RefusedOrDead()
{
    constexpr std::uint32_t request_not_understood = 1;
    if (AwaitExit(ending_limit) != request_not_understood)
        return EndDead(command, {});
    return Refused(false);
}

Result Helper::Impl::Stop(std::chrono::milliseconds limit)
{
    if (stage == Stage::Stopped)
        return {};
    if (stage != Stage::Running)
        return NotSent("the helper is not running");
    static constexpr unsigned char orderly_stop[] = {0x66, 0x01};
    const Request request{"the orderly stop", {}};
    sent_at = Clock::now();
    kill_at = After(sent_at, limit);
    const PipeStatus status = connection.Write(orderly_stop, kill_at);
    if (status != PipeStatus::Done)
        return EndByPipe(status, request, {{}, limit});
    std::uint32_t code = 0;
    if (!platform::WaitForProcess(*process, kill_at, code))
        return EndByPipe(PipeStatus::TimedOut, request, {{}, limit});
    if (code != 0 || cancelled)
        return EndDead(request, "it should have ended with exit code 0");
    const auto elapsed = Since(sent_at);
    End(Outcome::Answered, {}, code);
    stage = Stage::Stopped;
    return {.exit_code = code, .elapsed = elapsed};
}

void Helper::Impl::Cancel() noexcept
{
    ++cancellers;
    cancelled = true;
    connection.Interrupt();
    if (platform::Process *child = process)
        platform::KillProcess(*child);
    --cancellers;
}

Result Helper::Impl::NotSent(std::string reason) const
{
    if (stage == Stage::Over)
        return end;
    return {.outcome = Outcome::NotSent, .message = std::move(reason), .text = {}, .exit_code = std::nullopt};
}

Result Helper::Impl::NoResults()
{
    return NotSent("there are no results: no call has been answered");
}

Result Helper::Impl::ImpossibleResults(std::string_view reason)
{
    if (stage != Stage::Running)
        return NotSent("the helper is not running");
    sent_at = Clock::now();
    return End(Outcome::BrokenProtocol, "the helper broke the protocol and was killed: " + std::string(reason),
               std::nullopt);
}

Result Helper::Impl::EndByPipe(PipeStatus status, const Request &request, const TimeLimit &limit)
{
    switch (status) {
    case PipeStatus::TimedOut:
        return End(Outcome::Hung,
                   "the helper hung in " + request.Description() + ": no answer within " + Printed(limit.kill_after) +
                       ", so it was killed",
                   std::nullopt);
    case PipeStatus::Failed:
        return EndDead(request, "its pipe failed: " + SystemText(platform::LastError()));
    default:
        return EndDead(request, {});
    }
}

Result Helper::Impl::EndDead(const Request &request, const std::string &reason)
{
    std::string message =
        "the helper died in " + request.Description() + ", " + Printed(Since(sent_at)) + " after the request, ";
    const std::optional<std::uint32_t> code = AwaitExit(ending_limit);
    message +=
        code ? "exit code " + std::to_string(*code) : "its pipe closed and the process still running, so it was killed";
    if (code == 0U && request.IsCall())
        message += " (an exception or a fault inside the library ends it so)";
    if (!reason.empty())
        message += "; " + reason;
    return End(Outcome::Died, std::move(message), code);
}

Result Helper::Impl::EndBroken(const Request &request, const std::string &reason)
{
    return End(Outcome::BrokenProtocol,
               "the helper broke the protocol in " + request.Description() + " and was killed: it sent " + reason,
               std::nullopt);
}

Result Helper::Impl::End(Outcome outcome, std::string message, std::optional<std::uint32_t> exit_code)
{
    const auto elapsed = Since(sent_at);
    if (platform::Process *child = process) {
        platform::KillProcess(*child);
        AwaitExit(ending_limit);
    }
    connection.Close();
    section = {};
    RemoveSectionNames();
    out_state.present = false;
    in_state.begun = false;

    if (cancelled && outcome != Outcome::Answered) {
        outcome = Outcome::Cancelled;
        message = "cancelled: " + message;
        exit_code.reset();
    }
    if (outcome != Outcome::Answered)
        message += LogTail();
    stage = Stage::Over;
    end = {.outcome = outcome, .message = std::move(message), .text = {}, .exit_code = exit_code, .elapsed = elapsed};
    return end;
}

std::optional<std::uint32_t> Helper::Impl::AwaitExit(std::chrono::milliseconds limit)
{
    std::uint32_t code = 0;
    if (!platform::WaitForProcess(*process, Clock::now() + limit, code))
        return std::nullopt;
    return code;
}

std::string Helper::Impl::LogTail() const
{
    const std::string tail = log.Tail();
    return tail.empty() ? tail
                        : "; the last lines of its log " + platform::ToUtf8(Wide(log.Path().native())) + ':' + tail;
}

// A helper that was killed while it replaced the section may have left the name that it had just made.
void Helper::Impl::RemoveSectionNames()
{
    if (section_name.empty())
        return;
    platform::RemoveSectionName(section_name);
    platform::RemoveSectionName(ToggledName(section_name));
}

CommandKeeper &Helper::Commands()
{
    return *m_impl;
}

Helper::Helper(Options options) : m_impl(std::make_unique<Impl>(std::move(options))) {}

Helper::~Helper() = default;

Result Helper::Start()
{
    return m_impl->Start();
}

Result Helper::AddPath(std::u16string_view directories)
{
    m_impl->writer.Begin('P').Wide(directories);
    return m_impl->Exchange({"adding to the search path:", directories});
}

Result Helper::Logon(std::u16string_view user, std::u16string_view domain, std::u16string_view password,
                     std::u16string_view system_name, bool interactive)
{
    const WipedAtEnd wiped{m_impl->writer};
    const std::size_t units = user.size() + domain.size() + password.size() + system_name.size() + 4;
    m_impl->writer.Begin('A').Reserve(units * sizeof(char16_t) + sizeof(std::uint32_t));
    m_impl->writer.Wide(user).Wide(domain).Wide(password).Wide(system_name).U32(interactive ? 1 : 0);
    return m_impl->Exchange({"logging on", user});
}

Result Helper::Load(std::u16string_view library)
{
    m_impl->writer.Begin('L').Wide(library);
    return m_impl->Exchange({"loading", library});
}

Result Helper::ErrorText(std::uint32_t message, std::u16string_view file, WideString &text)
{
    m_impl->writer.Begin('X').U32(message).Wide(file);
    const Request request{"looking up an error text in", file};
    Result result = m_impl->Exchange(request);
    if (result)
        return m_impl->EndBroken(request, "a success frame in the place of a text");
    if (result.outcome != Outcome::Refused)
        return result;
    if (result.system_error != static_cast<std::int32_t>(message))
        return m_impl->EndBroken(request, "the text of another message");
    --m_impl->figures.refused;
    text = std::move(result.text);
    return {.elapsed = result.elapsed};
}

InList &Helper::Begin(std::uint32_t total_size)
{
    Impl &impl = *m_impl;
    impl.out_state.present = false;
    impl.in_state.Begin();
    const std::uint32_t first = impl.section.View() == nullptr ? impl.options.section_size : 0;
    const std::uint32_t wanted = std::max({total_size, first, 1U});
    if (wanted > impl.section.Size())
        impl.Grow(wanted, 0, impl.in_state.fault);
    return impl.in;
}

Result Helper::Call(std::u16string_view library, std::string_view function, std::string_view signature,
                    const TimeLimit &limit)
{
    return m_impl->Call({{}, library, function, signature}, limit);
}

OutList &Helper::Results()
{
    m_impl->out_state.Begin();
    return m_impl->out;
}

Result Helper::Distrust(std::string_view reason)
{
    return m_impl->ImpossibleResults(reason);
}

Result Helper::Stop(std::chrono::milliseconds limit)
{
    return m_impl->Stop(limit);
}

void Helper::Cancel() noexcept
{
    m_impl->Cancel();
}

bool Helper::Running() const
{
    return m_impl->stage == Impl::Stage::Running;
}

std::uint32_t Helper::ProcessId() const
{
    const platform::Process *process = m_impl->process;
    return process == nullptr ? 0 : platform::ProcessId(*process);
}

const std::filesystem::path &Helper::LogFile() const
{
    return m_impl->log.Path();
}

Statistics Helper::Figures() const
{
    Statistics figures = m_impl->figures;
    figures.section_size = m_impl->section.Size();
    figures.result_bytes = m_impl->out_state.bytes_read;
    figures.pipe_bytes_sent = m_impl->connection.BytesSent();
    figures.pipe_bytes_received = m_impl->connection.BytesReceived();
    return figures;
}

} // namespace kessil::parent
