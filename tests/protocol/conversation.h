#pragma once

#include "platform/process.h"
#include "platform/section.h"
#include "protocol/system.h"
#include "support/wire.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace kessil::test {

/// Where a test calls; what std::source_location does, which not every compiler in use has yet.
struct Place
{
    const char *file;
    int line;

    static Place Here(const char *file = __builtin_FILE(), int line = __builtin_LINE()) { return {file, line}; }
};

/// The path of a library of tests/targets.
WideString TargetLibrary(const std::string &name);

/// The system's text for a code: on Linux the text given, on Windows what the system has for `windows_code`.
WideString SystemText(const std::u16string &linux_text, std::uint32_t windows_code);

/// How the program prints a failure, as ReadText returns it.
std::string Printed(const WideString &failure);

/// Reads a whole text file, without the carriage returns that Windows puts into it.
std::string ReadText(const std::filesystem::path &file);

/// An empty directory, removed with all that is in it at the end of its life.
class TestDirectory
{
public:
    TestDirectory();
    ~TestDirectory();
    TestDirectory(const TestDirectory &) = delete;
    TestDirectory &operator=(const TestDirectory &) = delete;

    const std::filesystem::path &Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

/// One run of the program, in an empty directory of its own, which is also where it puts its log. Its exit code is
/// declared before it begins, and checked at the end of this object's life at the latest.
class HelperRun
{
public:
    explicit HelperRun(std::uint32_t exit_code, Place place = Place::Here());
    ~HelperRun();
    HelperRun(const HelperRun &) = delete;
    HelperRun &operator=(const HelperRun &) = delete;

    void Start(const std::vector<WideString> &arguments);

    /// Waits for the end and checks the exit code.
    void End();
    bool HasEnded() const { return m_ended; }

    /// Gives up on a run that went wrong.
    void Kill();

    const std::filesystem::path &Directory() const { return m_directory.Path(); }
    platform::Process &Process() { return *m_process; }

    /// The log: as it stands, and without what differs from run to run, each record as "<component> <level>: <text>"
    /// and each handle as "#". A line that isn't a record, or only looks like one, stays as it is.
    std::string Log(const std::string &name = "kessil_log.out") const;
    std::string PlainLog(const std::string &name = "kessil_log.out") const;

    /// Waits until the log holds that text.
    void AwaitLog(const std::string &text) const;

private:
    TestDirectory m_directory;
    std::uint32_t m_exitCode;
    Place m_place;
    platform::Process *m_process = nullptr;
    bool m_ended = false;
};

/// A run that is attached to a pipe of this process: both ends of a conversation, in the order in which it happens.
/// Bytes that come without being expected fail the test, at the end of the conversation at the latest. After a
/// failure the test is over.
class Conversation
{
public:
    explicit Conversation(std::uint32_t exit_code, const std::vector<WideString> &options = {u"--log_level", u"debug"},
                          Place place = Place::Here());
    ~Conversation();
    Conversation(const Conversation &) = delete;
    Conversation &operator=(const Conversation &) = delete;

    /// The parent sends these bytes, in one write or in a write for each byte.
    void Send(const Bytes &bytes, Place place = Place::Here());
    void SendEachByte(const Bytes &bytes, Place place = Place::Here());

    /// The helper sends exactly these bytes next.
    void Expect(const Bytes &bytes, Place place = Place::Here());

    /// Reads one whole frame, for those whose bytes aren't known beforehand.
    Bytes ReadFrame(Place place = Place::Here());

    /// The helper closes its end, with nothing sent before.
    void ExpectClosed(Place place = Place::Here());

    /// The parent ends its stream but still reads.
    void EndStream();

    /// The parent closes its end.
    void Close();

    /// Send and Expect in one, for steps that the test isn't about.
    void Load(const WideString &library, Place place = Place::Here());
    void Call(const std::string &function, Place place = Place::Here());

    /// Waits for the end of the run: nothing more is sent and the exit code is the one declared.
    void End(Place place = Place::Here());

    /// Gives up on it: the helper is killed, and nothing is expected of it any more.
    void Abandon();

    HelperRun &Helper() { return m_run; }

    /// A section name of this conversation's own, and no other test's, that ends in `digit`.
    WideString SectionName(char16_t digit) const;

private:
    [[noreturn]] void Fail(const std::string &what, Place place);
    void ExpectNoNamesLeft() const;

    WideString m_token;
    HelperRun m_run;
    std::unique_ptr<PipeEnd> m_pipe;
    bool m_closed = false;
    bool m_broken = false;
};

/// A section of the parent's, or one that the helper announced, open and mapped.
class Section
{
public:
    static Section Create(const WideString &name, std::uint32_t size);
    static Section Open(const WideString &name, std::uint32_t size);
    Section(Section &&other) noexcept;
    Section &operator=(Section &&) = delete;
    ~Section();

    const WideString &Name() const { return m_name; }

    void Put(std::size_t offset, const Bytes &bytes);
    Bytes Get(std::size_t offset, std::size_t count) const;

    /// These bytes stand there now.
    void Expect(std::size_t offset, const Bytes &bytes, Place place = Place::Here()) const;

private:
    Section(const WideString &name, std::uint32_t size, platform::SectionHandle handle, bool own);

    WideString m_name;
    std::uint32_t m_size;
    platform::SectionHandle m_handle;
    unsigned char *m_view;
    bool m_own;
};

/// What reports_process, the first library of the conversation, reports under that number. The section has
/// `report_size` bytes.
inline constexpr std::uint32_t report_size = 65536;
WideString Report(Conversation &talk, Section &section, std::uint32_t number, Place place = Place::Here());

/// Creates a section of the parent's for this conversation and has the helper take it.
Section Announce(Conversation &talk, std::uint32_t size, char16_t digit = u'7', Place place = Place::Here());

} // namespace kessil::test
