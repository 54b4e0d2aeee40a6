#include "protocol/conversation.h"

#include "platform/last_error.h"
#include "platform/private_section.h"

#include "support/under_wine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <exception>
#include <fstream>
#include <iterator>
#include <random>
#include <regex>
#include <stdexcept>
#include <thread>

namespace kessil::test {
namespace {

namespace fs = std::filesystem;

std::string RandomToken()
{
    std::random_device source;
    return std::to_string(source()) + "-" + std::to_string(source());
}

WideString PipeName(const WideString &token, const fs::path &directory)
{
    if (on_windows)
        return uR"(\\.\pipe\kessil-test-)" + token;
    return platform::FromUtf8((directory / "pipe").string());
}

platform::Deadline Soon()
{
    return std::chrono::steady_clock::now() + std::chrono::seconds(2);
}

std::string WithoutReturns(std::string text)
{
    std::erase(text, '\r');
    return text;
}

} // namespace

platform::Deadline WaitLimit()
{
    return std::chrono::steady_clock::now() + std::chrono::seconds(60);
}

WideString TargetLibrary(const std::string &name)
{
    return NativePath(KESSIL_TEST_LIBRARIES "/" + name + (on_windows ? ".dll" : ".so"));
}

WideString SystemText(const std::u16string &linux_text, std::uint32_t windows_code)
{
    return on_windows ? platform::ErrorText(windows_code) : linux_text;
}

std::string Printed(const WideString &failure)
{
    return WithoutReturns("ERROR: '" + platform::ToUtf8(failure) + "'\n");
}

std::string ReadText(const fs::path &file)
{
    std::ifstream stream(file, std::ios::binary);
    return WithoutReturns({std::istreambuf_iterator<char>(stream), {}});
}

TestDirectory::TestDirectory() : m_path(fs::temp_directory_path() / ("kt-" + RandomToken()))
{
    fs::create_directory(m_path);
}

TestDirectory::~TestDirectory()
{
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

HelperRun::HelperRun(std::uint32_t exit_code, Place place) : m_exitCode(exit_code), m_place(place) {}

HelperRun::~HelperRun()
{
    if (!m_ended && std::uncaught_exceptions() > 0)
        Kill();
    if (!m_ended)
        End();
}

void HelperRun::Start(const std::vector<WideString> &arguments)
{
    const auto start = [&] {
        m_process = platform::StartProcess(NativePath(KESSIL_TEST_PROGRAM), arguments,
                                           platform::FromUtf8(Directory().string()));
        return m_process != nullptr;
    };
    // Wine now and then fails to make a process, with this code, while many are being made.
    constexpr std::uint32_t internal_error = 1359;
    for (int again = 3; !start() && UnderWine() && platform::LastError() == internal_error && again > 0;)
        --again;
    if (m_process == nullptr)
        throw std::runtime_error("the helper didn't start, error " + std::to_string(platform::LastError()));
}

void HelperRun::End()
{
    m_ended = true;
    std::uint32_t exit_code = 0;
    const bool over = platform::WaitForProcess(*m_process, WaitLimit(), exit_code);
    if (!over || exit_code != m_exitCode)
        ADD_FAILURE_AT(m_place.file, m_place.line)
            << "The helper was to end with " << m_exitCode << ", but "
            << (over ? "ended with " + std::to_string(exit_code) : "doesn't end") << ". Its log:\n"
            << Log();
    platform::ReleaseProcess(m_process);
    m_process = nullptr;
}

void HelperRun::Kill()
{
    m_ended = true;
    platform::ReleaseProcess(m_process);
    m_process = nullptr;
}

std::string HelperRun::Log(const std::string &name) const
{
    return ReadText(Directory() / name);
}

std::string HelperRun::PlainLog(const std::string &name) const
{
    static const std::regex record(R"(^T[0-9a-f]{8} \d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3} (\w+):\d+ (\w+: .*)$)");
    static const std::regex handle(R"((Closing handle \w+) (0x)?[0-9a-fA-F]+$)");
    std::istringstream lines(Log(name));
    std::string log;
    for (std::string line; std::getline(lines, line);) {
        const std::string plain = std::regex_replace(line, record, "$1 $2");
        log += std::regex_replace(plain, handle, "$1 #") + "\n";
    }
    return log;
}

void HelperRun::AwaitLog(const std::string &text) const
{
    const platform::Deadline limit = WaitLimit();
    while (Log().find(text) == std::string::npos) {
        if (std::chrono::steady_clock::now() > limit)
            throw std::runtime_error("the log doesn't say: " + text);
        std::this_thread::yield();
    }
}

Conversation::Conversation(std::uint32_t exit_code, const std::vector<WideString> &options, Place place)
    : m_token(platform::FromUtf8(RandomToken())), m_run(exit_code, place)
{
    const WideString name = PipeName(m_token, m_run.Directory());
    m_pipe = std::make_unique<PipeEnd>(name);
    std::vector<WideString> arguments = {name};
    arguments.insert(arguments.end(), options.begin(), options.end());
    m_run.Start(arguments);
    m_pipe->Accept();
}

Conversation::~Conversation()
{
    if (m_broken || std::uncaught_exceptions() > 0) {
        if (!m_run.HasEnded())
            m_run.Kill();
        return;
    }
    if (!m_run.HasEnded())
        End();
    ExpectNoNamesLeft();
}

void Conversation::Fail(const std::string &what, Place place)
{
    m_broken = true;
    std::uint32_t exit_code = 0;
    const bool over = platform::WaitForProcess(m_run.Process(), Soon(), exit_code);
    ADD_FAILURE_AT(place.file, place.line)
        << what << "\nThe helper " << (over ? "ended with " + std::to_string(exit_code) : "still runs")
        << ". Its log:\n"
        << m_run.Log();
    throw std::runtime_error("the conversation went wrong");
}

void Conversation::Send(const Bytes &bytes, Place place)
{
    if (!bytes.empty() && !m_pipe->Write(bytes))
        Fail("The helper closed the pipe before it was sent " + Show(bytes), place);
}

void Conversation::SendEachByte(const Bytes &bytes, Place place)
{
    for (const unsigned char byte : bytes)
        Send({byte}, place);
}

void Conversation::Expect(const Bytes &bytes, Place place)
{
    Bytes received;
    while (received.size() < bytes.size()) {
        const Bytes more = m_pipe->Read(bytes.size() - received.size());
        if (more.empty() || First(received.size() + more.size(), bytes) != received + more)
            Fail("Expected " + Show(bytes) + "\n   received " + Show(received + more) +
                     (more.empty() ? "and then nothing" : ""),
                 place);
        received += more;
    }
}

Bytes Conversation::ReadFrame(Place place)
{
    Bytes frame;
    const auto read = [&](std::size_t size) {
        while (frame.size() < size) {
            const Bytes more = m_pipe->Read(size - frame.size());
            if (more.empty())
                Fail("Expected a frame\n   received " + Show(frame), place);
            frame += more;
        }
    };
    read(5);
    std::size_t length = 0;
    for (std::size_t at = 1; at < 5; ++at)
        length = length * 256 + frame[at];
    read(5 + length);
    return frame;
}

void Conversation::ExpectClosed(Place place)
{
    const Bytes received = m_pipe->Read(4096);
    if (!received.empty())
        Fail("Expected the end\n   received " + Show(received), place);
}

void Conversation::EndStream()
{
    m_pipe->EndStream();
}

void Conversation::Close()
{
    m_pipe->Close();
    m_closed = true;
}

void Conversation::Load(const WideString &library, Place place)
{
    Send(LoadFrame(library), place);
    Expect(SuccessFrame(), place);
}

void Conversation::Call(const std::string &function, Place place)
{
    Send(CallFrame(u"", function, "SIGNATURE_" + function), place);
    Expect(SuccessFrame(), place);
}

void Conversation::End(Place place)
{
    if (!m_closed)
        ExpectClosed(place);
    m_run.End();
}

void Conversation::Abandon()
{
    m_broken = true;
    m_run.Kill();
}

WideString Conversation::SectionName(char16_t digit) const
{
    return u"kessil-test-" + m_token + u"." + digit;
}

void Conversation::ExpectNoNamesLeft() const
{
    for (char16_t digit = u'0'; digit <= u'9'; ++digit) {
        const platform::SectionHandle section = platform::OpenSection(SectionName(digit), 0);
        EXPECT_EQ(section, nullptr) << "left behind: " << platform::ToUtf8(SectionName(digit));
        if (section != nullptr)
            platform::CloseSection(section);
    }
}

Section::Section(const WideString &name, std::uint32_t size, platform::SectionHandle handle, bool own)
    : m_name(name), m_size(size), m_handle(handle), m_view(nullptr), m_own(own)
{
    if (m_handle == nullptr)
        throw std::runtime_error("no section, error " + std::to_string(platform::LastError()));
    m_view = platform::MapOpenedSection(m_handle, size);
    if (m_view == nullptr)
        throw std::runtime_error("no view of a section, error " + std::to_string(platform::LastError()));
}

Section::Section(Section &&other) noexcept
    : m_name(std::move(other.m_name)), m_size(other.m_size), m_handle(std::exchange(other.m_handle, nullptr)),
      m_view(other.m_view), m_own(other.m_own)
{}

Section::~Section()
{
    if (m_handle == nullptr)
        return;
    platform::UnmapSection(m_view, m_size);
    platform::CloseSection(m_handle);
    if (m_own)
        platform::RemoveSectionName(m_name);
}

Section Section::Create(const WideString &name, std::uint32_t size)
{
    return {name, size, platform::CreatePrivateSection(name, size), true};
}

Section Section::Open(const WideString &name, std::uint32_t size)
{
    return {name, size, platform::OpenSection(name, size), false};
}

void Section::Put(std::size_t offset, const Bytes &bytes)
{
    if (offset + bytes.size() > m_size)
        throw std::out_of_range("behind the section");
    std::copy(bytes.begin(), bytes.end(), m_view + offset);
}

Bytes Section::Get(std::size_t offset, std::size_t count) const
{
    if (offset + count > m_size)
        throw std::out_of_range("behind the section");
    return {m_view + offset, m_view + offset + count};
}

void Section::Expect(std::size_t offset, const Bytes &bytes, Place place) const
{
    const Bytes there = Get(offset, bytes.size());
    if (there != bytes)
        ADD_FAILURE_AT(place.file, place.line)
            << "Expected " << Show(bytes) << "\n   found " << Show(there) << "\n   at offset " << offset;
}

WideString Report(Conversation &talk, Section &section, std::uint32_t number, Place place)
{
    constexpr std::uint32_t room = report_size / 2;
    section.Put(0, Be64(0) + Be64(0) + Be32(number) + Be32(room) + Repeat(0, room) + Be32(room));
    talk.Send(CallFrame(u"", "VornGetErrorText", "SIGNATURE_VornGetErrorText"), place);
    talk.Expect(SuccessFrame(), place);
    const Bytes text = section.Get(24, room);
    return platform::FromUtf8(std::string(text.begin(), std::find(text.begin(), text.end(), 0)));
}

Section Announce(Conversation &talk, std::uint32_t size, char16_t digit, Place place)
{
    Section section = Section::Create(talk.SectionName(digit), size);
    talk.Send(ResizeFrame(section.Name(), size), place);
    talk.Expect(SuccessFrame(), place);
    return section;
}

} // namespace kessil::test
