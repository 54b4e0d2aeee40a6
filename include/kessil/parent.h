#pragma once

/// The parent's side of kessil: runs a library in a helper process and calls its functions from here.
///
/// A parent starts one helper process (class Helper), has it load a library, and calls the library's functions one at a
/// time. Arguments and results lie in a section of memory that both processes see; this library lays them out,
/// announces the section and replaces it when it is too small. Whatever the library does there (crash, hang, answer
/// garbage), this process goes on, and gets a Result that says in one sentence what happened.
///
/// A complete parent, which asks a data-source library for its backup type and for an error text:
///
///     #include <kessil/parent.h>
///
///     #include <cstdio>
///     #include <filesystem>
///
///     int main(int argc, char **argv)
///     {
///         if (argc != 3) {
///             std::fprintf(stderr, "usage: first_call KESSIL LIBRARY\n");
///             return 2;
///         }
///         kessil::parent::Options options;
///         options.program = argv[1];
///         kessil::parent::Helper helper(options);
///         const kessil::WideString library = std::filesystem::absolute(argv[2]).u16string();
///
///         kessil::parent::Result result = helper.Start();
///         if (result)
///             result = helper.Load(library);
///
///         // No arguments in, one number out.
///         std::uint32_t type = 0;
///         helper.Begin();
///         if (result)
///             result = helper.Call(library, "GetBackupType", "SIGNATURE_GetBackupType", {});
///         if (result)
///             result = helper.Results().U32(type).Complete();
///
///         // In: three numbers, room for a text, the room's size. Out: the same five, the room filled by the library.
///         constexpr std::uint32_t room = 256;
///         std::uint64_t session = 0;
///         std::uint64_t object = 0;
///         std::uint32_t code = 5;
///         std::uint32_t size = 0;
///         std::span<const std::byte> text;
///         const kessil::parent::TimeLimit limit{std::chrono::seconds(5), std::chrono::seconds(60)};
///         helper.Begin().U64(session).U64(object).U32(code).Room(room).U32(room);
///         if (result)
///             result = helper.Call(library, "VornGetErrorText", "SIGNATURE_VornGetErrorText", limit);
///         if (result)
///             result = helper.Results().U64(session).U64(object).U32(code).Buffer(text).U32(size).Complete();
///         if (result) {
///             const std::string shown(reinterpret_cast<const char *>(text.data()), text.size());
///             std::printf("backup type %u, code %u means: %s\n", type, code, shown.c_str());
///             result = helper.Stop();
///         }
///         if (!result)
///             std::fprintf(stderr, "%s\n", result.message.c_str());
///         return result ? 0 : 1;
///     }
///
/// With an installed kessil its CMakeLists.txt says
///
///     find_package(kessil REQUIRED)
///     add_executable(first_call first_call.cpp)
///     target_link_libraries(first_call PRIVATE kessil::parent)
///
/// The order is: construct, Start, Load, then Begin, Call and Results any number of times, then Stop. A helper serves
/// one request at a time; for concurrent calls use several Helpers. A Helper whose request ended in anything but
/// Answered, Refused or NotSent is over: its process is gone, and every later request returns the same Result. Start a
/// new Helper then. Nothing is repeated automatically, since only the caller knows whether a call may run twice.
///
/// Which elements a signature takes and gives, in which order, is the signature's contract (docs/protocol.md). The
/// lists carry no tags: a list of the wrong shape is read as something else, which can't be detected in general.
///
/// All text in wide strings is UTF-16 in the host's byte order; all `std::string` text is UTF-8 unless stated
/// otherwise.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kessil {

using WideString = std::u16string;

namespace parent {

/// How a request ended.
enum class Outcome
{
    Answered,       ///< Done. For a call: the library's function ran, and Results() has its values.
    Refused,        ///< The helper refused (library not found, unknown signature, ...). It goes on serving, except
                    ///< after some calls of an Adapter.
    Hung,           ///< The time limit passed. The helper was killed.
    Died,           ///< The helper ended before it had answered, or its pipe broke.
    BrokenProtocol, ///< The helper sent something that the protocol doesn't allow. It was killed.
    NeverStarted,   ///< Start: the program could not be run at all.
    ExitedAtOnce,   ///< Start: the program ran and ended without having connected.
    NeverAttached,  ///< Start: the program ran for the whole of the attach limit without connecting. It was killed.
    Cancelled,      ///< Cancel was called. The helper was killed.
    NotSent ///< Nothing was sent, and the helper goes on serving: the arguments can't be sent, or the system gave
            ///< no memory for a section, or the helper isn't started.
};

/// The outcome's name, as "Hung".
const char *Name(Outcome outcome);

/// What came of one request. `if (result)` asks for Answered.
struct Result
{
    Outcome outcome = Outcome::Answered;

    /// One clear text for a person, UTF-8, no line end; empty when Answered. For a helper that died in a call it has
    /// the library, the function, the signature, how long after the request, the exit code, and the last lines of the
    /// log.
    std::string message{};

    /// Refused: what the helper's answer carried. `return_code` and `system_error` are both -1 for a failure of
    /// marshalling and for an unknown signature; `return_code` is 0 for a library that didn't load (`system_error` is
    /// then the system's code), or a library or export that wasn't found (`system_error` 0). A refusal of an Adapter's
    /// request carries nothing, and they are 0.
    ///
    /// Answered: empty, except that `text` is "Failed to get error message (...)" when an adapter's function failed and
    /// the adapter gives no error texts (some functions are asked for one after a success, too). The results are there
    /// all the same, with an empty error text.
    std::int32_t return_code = 0;
    std::int32_t system_error = 0;
    WideString text{};

    /// The helper's exit code, when it has ended by itself: 0 after an orderly stop, and also when an exception or a
    /// fault inside the library ended it; 1 for an error, which its log has; on Linux 128 plus the signal's number.
    std::optional<std::uint32_t> exit_code{};

    /// From the sending of the request to its end. For Start: from the start of the process.
    std::chrono::microseconds elapsed{0};

    explicit operator bool() const { return outcome == Outcome::Answered; }
};

/// How long one request may take, from when it is sent. Zero stands for "no limit".
struct TimeLimit
{
    std::chrono::milliseconds warn_after{0}; ///< then Options::on_slow is called, once; the request continues
    std::chrono::milliseconds kill_after{0}; ///< then the helper is killed, and the request ends as Hung
};

/// What Options::on_slow receives. The texts are valid until the callback returns.
struct SlowRequest
{
    std::string_view description; ///< the request in words, as "VornReadFile (SIGNATURE_VornReadFile) of library x.so"
    std::chrono::milliseconds elapsed;
    std::chrono::milliseconds kill_after; ///< zero: no limit
};

/// How detailed the helper's log is.
enum class LogLevel
{
    Error,
    Debug
};

struct Options
{
    /// The helper's program. A relative path is taken from this process's directory.
    std::filesystem::path program{};

    /// The helper appends its log here, and everything that the library prints. Empty: a file of its own in the
    /// temporary directory, removed with the Helper. A relative path is taken from this process's directory. The last
    /// lines of this file appear in the messages of a Result.
    std::filesystem::path log_file{};
    LogLevel log_level = LogLevel::Error;

    /// The helper's working directory. Empty: this process's own.
    std::filesystem::path working_directory{};

    /// How long Start waits for the helper to connect.
    std::chrono::milliseconds attach_limit{30000};

    /// For Load, AddPath, Logon, ErrorText, and for the announcement of a section.
    TimeLimit request_limit{};

    /// How large the first section is, in bytes. It is made at the first Begin and grows by itself.
    std::uint32_t section_size = 64 * 1024;

    /// Called on the thread that makes the request, while it waits; may call Helper::Cancel, nothing else of the
    /// Helper.
    std::function<void(const SlowRequest &)> on_slow{};

    /// A notice that a library sent during a call (an 'M' frame): a value of one byte, and a text. Called as on_slow
    /// is.
    std::function<void(std::uint8_t value, const WideString &text)> on_notice{};
};

/// Counted since the Helper was constructed.
struct Statistics
{
    std::uint64_t calls = 0;                    ///< function calls sent
    std::uint64_t refused = 0;                  ///< of all requests, those that ended as Refused
    std::uint64_t notices = 0;                  ///< notices received, an adapter's log lines included
    std::uint64_t sections_announced = 0;       ///< sections that this side made, the first one included
    std::uint64_t sections_grown_by_helper = 0; ///< sections that the helper made, in the middle of a call
    std::uint64_t section_size = 0;             ///< bytes of the section in use now
    std::uint64_t argument_bytes = 0;           ///< bytes of all in-lists sent, padding included
    std::uint64_t result_bytes = 0;             ///< bytes of all out-lists read with Results(), padding included
    std::uint64_t pipe_bytes_sent = 0;
    std::uint64_t pipe_bytes_received = 0;
    std::uint64_t rejected_clients = 0; ///< processes other than the helper that connected to the pipe
};

class Session;

/// The arguments of the next call, written straight into the section, element after element. Obtained from
/// Helper::Begin. A list that can't be sent (a text with a zero inside, no memory) stays so: the elements that follow
/// do nothing, spans are empty, and Call returns NotSent with the reason.
///
/// Spans into the section stay valid until an element is added that makes the section grow, until the Call, or until
/// the next Begin, whichever comes first. Give Begin the total size to rule out growth.
class InList
{
public:
    /// Integers: big-endian, no alignment.
    InList &U8(std::uint8_t value);
    InList &U16(std::uint16_t value);
    InList &U32(std::uint32_t value);
    InList &U64(std::uint64_t value);

    /// STR: 8-bit text and a zero byte. The text is sent as it is, in whatever encoding the library expects.
    InList &Str(std::string_view text);

    /// WSTR: 16-bit text and a zero unit, on an even address. The protocol makes the element behind a wide string that
    /// needed padding begin inside the string's zero unit; that works only while those two bytes are zero, and a list
    /// where they aren't can't be sent.
    InList &WStr(std::u16string_view text);

    /// BUF with room for the library to fill: `size` bytes whose content is left as it is.
    InList &Room(std::uint32_t size);

    /// BUF or IN (both look alike here) with these bytes, copied into the section.
    InList &Bytes(std::span<const std::byte> bytes);

    /// BUF or IN to be filled in place: the `size` bytes in the section, for the caller to write to before the Call.
    std::span<std::byte> Block(std::uint32_t size);

    /// The bytes laid out so far, padding included.
    std::uint32_t Size() const;

    /// Whether all elements so far could be laid out.
    bool Good() const;

private:
    friend class Session;
    explicit InList(Session &session) : m_session(session) {}
    Session &m_session;
};

/// The results of the last call, read out of the section, element after element. Obtained from Helper::Results. A value
/// that doesn't lie within the section leaves its variable as it was, and so do all that follow; Complete reports it.
/// Spans point into the section, without a copy, and stay valid until the next Begin or request.
class OutList
{
public:
    OutList &U8(std::uint8_t &value);
    OutList &U16(std::uint16_t &value);
    OutList &U32(std::uint32_t &value);
    OutList &U64(std::uint64_t &value);
    OutList &Str(std::string &text);

    /// The helper puts the element behind a wide string that needed padding inside the string's zero unit; it is read
    /// from there. The string's own end can only be found while those two bytes are zero.
    OutList &WStr(WideString &text);

    /// BUF or IN: its bytes, in the section.
    OutList &Buffer(std::span<const std::byte> &bytes);

    /// Answered when every element read so far lay within the section; otherwise BrokenProtocol, and the helper has
    /// been killed.
    Result Complete();

private:
    friend class Session;
    explicit OutList(Session &session) : m_session(session) {}
    Session &m_session;
};

/// One helper process and the conversation with it. For one thread at a time, except Cancel. The destructor kills the
/// process if it still runs. The process never outlives this one, however this one ends.
///
/// The helper gets a pipe of a random name that only the process that was started, as this user, can connect
/// to; no handles but the standard streams; no console window and no error dialog. No pipe name, section name
/// or socket file is left behind, whichever side ends first: a name is removed as soon as the helper has opened what it
/// names. (On Linux a parent that is killed outright between the two leaves that one name.)
class Helper
{
public:
    explicit Helper(Options options);
    ~Helper();
    Helper(const Helper &) = delete;
    Helper &operator=(const Helper &) = delete;

    /// Starts the process and waits until it has connected. NeverStarted, ExitedAtOnce and NeverAttached each name the
    /// program, its arguments and the end of its log. May be called once.
    Result Start();

    /// Puts directories (separated as in PATH) in front of the helper's PATH.
    Result AddPath(std::u16string_view directories);

    /// Logs the helper on as another user. `system_name` empty means the local system. The password crosses the pipe in
    /// clear; no copy of it is kept on this side. `interactive` false: for outgoing connections alone.
    Result Logon(std::u16string_view user, std::u16string_view domain, std::u16string_view password,
                 std::u16string_view system_name, bool interactive);

    /// Loads a library by name or path. The name as given here is the key by which Call finds it. Loading a name again
    /// releases the earlier load first.
    Result Load(std::u16string_view library);

    /// Asks for a message text out of a file's message table. `text` is set when Answered.
    Result ErrorText(std::uint32_t message, std::u16string_view file, WideString &text);

    /// Starts the argument list of the next call, empty. `total_size`, in bytes, makes the section that large at once;
    /// reserve for the results too, and the helper needn't replace the section during the call.
    InList &Begin(std::uint32_t total_size = 0);

    /// Calls a function with the arguments laid out since Begin. `library` is a name given to Load, or empty for the
    /// one whose name sorts first. A steady small call allocates nothing and makes one write and one read.
    Result Call(std::u16string_view library, std::string_view function, std::string_view signature,
                const TimeLimit &limit);

    /// The results of the call answered last. Each call to Results starts again at the first one.
    OutList &Results();

    /// For a caller that finds results to be impossible: kills the helper and returns BrokenProtocol with this reason.
    Result RejectResults(std::string_view reason);

    /// The orderly stop: asks the helper to end and waits for it. Answered when it ended with exit code 0; Hung when it
    /// was killed after `limit` milliseconds; Died for any other exit code. Answered, too, when it was stopped before.
    Result Stop(std::chrono::milliseconds limit = std::chrono::milliseconds(10000));

    /// Ends the request under way, or else the next one, as Cancelled. Returns at once. May be called from any thread
    /// and, on Linux, from a signal handler, as long as the Helper exists.
    void Cancel() noexcept;

    /// Whether the helper is started and serves.
    bool Running() const;

    /// The process's id; 0 before Start.
    std::uint32_t ProcessId() const;

    /// Where the helper's log is.
    const std::filesystem::path &LogFile() const;

    Statistics Figures() const;

private:
    friend class Adapter; // makes its requests in the same session
    std::unique_ptr<Session> m_session;
};

} // namespace parent
} // namespace kessil
