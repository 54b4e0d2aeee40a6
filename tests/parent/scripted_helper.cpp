/// Takes the place of the helper in the tests of the parent library: executes the file `script` in its working
/// directory line by line. It has the helper's command line; `--script NAME` names another file.
///
///     attach               connects to the pipe
///     expect HEX           reads that many bytes; ends with code 99 when they differ
///     expect_end           ends with code 99 when the pipe gives anything
///     expect_fill N HEX    reads N bytes; ends with code 99 when they aren't all this byte
///     sentinel             reads the lookup of a message text in a file without a name, and keeps its number
///     take HEX             reads a frame and checks that its payload starts with these bytes
///     section              reads an announcement, opens the section, answers it, and logs its name
///     section_refused      reads an announcement and refuses it
///     arguments HEX        ends with code 99 when the section doesn't start with these bytes; `..` stands for any byte
///     size N               ends with code 99 when the section was announced with another size
///     results OFFSET HEX   puts bytes into the section
///     send HEX             one write; the word NUMBER stands for the number that was kept
///     send_fill N HEX      one write of N bytes that are all this one
///     dribble HEX          one write for each byte
///     create N             creates the section of the next name, with N bytes, and moves to it
///     announce N           announces the section of the next name (of the one just created, if any) with a size of N
///     announce_as NAME N   announces a section of that name
///     log TEXT             one line into the log file
///     log_names            the pipe's and all sections' names, one on each line of the file `names`
///     log_handles          the number of open descriptors into the log, where the system shows it
///     log_arguments        all arguments into the log
///     witness NAME         connects to another pipe and holds it until the end
///     gate NAME            connects to another pipe and waits for a byte from there
///     run NAME             runs this program with another script and takes a code other than 0 as a failure
///     drop                 closes the pipe
///     hang                 waits for ever
///     exit N               ends with that code; the end of the file is an exit with code 0
#include "platform/entry_point.h"
#include "platform/pipe.h"
#include "platform/process.h"
#include "platform/section.h"

#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <iostream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace {

using namespace kessil;
using Bytes = std::vector<unsigned char>;

struct Mismatch : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

struct Ending
{
    int code;
};

std::string Hex(const Bytes &bytes)
{
    std::string text;
    for (const unsigned char byte : bytes) {
        text += "0123456789ABCDEF"[byte >> 4];
        text += "0123456789ABCDEF"[byte & 15];
    }
    return text;
}

class Player
{
public:
    explicit Player(const std::vector<WideString> &arguments);
    int Play();

private:
    void Do(const std::string &verb, std::istringstream &rest);
    void DoSection(const std::string &verb, std::istringstream &rest);
    void DoOther(const std::string &verb, std::istringstream &rest);

    void Attach();
    Bytes Read(std::size_t size);
    void Write(const Bytes &bytes);
    void Expect(const Bytes &bytes);
    void ExpectEnd();
    void ReadSentinel();
    void Take(const Bytes &start);
    void TakeSection(bool accept);
    void CheckArguments(std::istringstream &rest);
    void CreateNext(std::uint32_t size);
    void Announce(const WideString &name, std::uint64_t size);
    void LogNames();
    void LogHandles();
    void Run(const std::string &script);
    void Log(const std::string &line) const;

    Bytes RestOfHex(std::istringstream &rest) const;
    Bytes Fill(std::istringstream &rest) const;
    WideString NextName() const;

    std::vector<WideString> m_arguments;
    std::map<WideString, WideString> m_options;
    platform::PipeHandle m_pipe = platform::invalid_pipe;
    platform::PipeHandle m_witness = platform::invalid_pipe;
    platform::SectionHandle m_section = nullptr;
    unsigned char *m_view = nullptr;
    std::uint64_t m_size = 0;
    WideString m_name;
    bool m_created = false;
    Bytes m_number;
    std::vector<WideString> m_names;
};

Player::Player(const std::vector<WideString> &arguments) : m_arguments(arguments)
{
    for (std::size_t i = 2; i + 1 < arguments.size(); i += 2)
        m_options[arguments[i]] = arguments[i + 1];
}

int Player::Play()
{
    const auto chosen = m_options.find(u"--script");
    std::ifstream script(chosen == m_options.end() ? "script" : platform::ToUtf8(chosen->second));
    std::string line;
    try {
        while (std::getline(script, line)) {
            std::istringstream words(line);
            std::string verb;
            if (words >> verb)
                Do(verb, words);
        }
    } catch (const Ending &ending) {
        return ending.code;
    } catch (const std::exception &error) {
        Log("script failed at '" + line + "': " + error.what());
        return 99;
    }
    return 0;
}

void Player::Do(const std::string &verb, std::istringstream &rest)
{
    if (verb == "attach")
        Attach();
    else if (verb == "expect")
        Expect(RestOfHex(rest));
    else if (verb == "expect_end")
        ExpectEnd();
    else if (verb == "expect_fill")
        Expect(Fill(rest));
    else if (verb == "sentinel")
        ReadSentinel();
    else if (verb == "send_fill")
        Write(Fill(rest));
    else if (verb == "take")
        Take(RestOfHex(rest));
    else if (verb == "send")
        Write(RestOfHex(rest));
    else if (verb == "dribble")
        for (const unsigned char byte : RestOfHex(rest))
            Write({byte});
    else
        DoSection(verb, rest);
}

void Player::DoSection(const std::string &verb, std::istringstream &rest)
{
    std::uint64_t number = 0;
    std::string name;
    if (verb == "section") {
        TakeSection(true);
    } else if (verb == "section_refused") {
        TakeSection(false);
    } else if (verb == "arguments") {
        CheckArguments(rest);
    } else if (verb == "size" && rest >> number) {
        if (number != m_size)
            throw Mismatch("the section has " + std::to_string(m_size) + " bytes");
    } else if (verb == "results" && rest >> number) {
        const Bytes bytes = RestOfHex(rest);
        std::memcpy(m_view + number, bytes.data(), bytes.size());
    } else if (verb == "create" && rest >> number) {
        CreateNext(static_cast<std::uint32_t>(number));
    } else if (verb == "announce" && rest >> number) {
        if (!m_created)
            m_name = NextName();
        m_created = false;
        Announce(m_name, number);
    } else if (verb == "announce_as" && rest >> name >> number) {
        Announce(platform::FromUtf8(name), number);
    } else {
        DoOther(verb, rest);
    }
}

void Player::DoOther(const std::string &verb, std::istringstream &rest)
{
    std::string text;
    std::getline(rest >> std::ws, text);
    if (verb == "log") {
        Log(text);
    } else if (verb == "log_names") {
        LogNames();
    } else if (verb == "log_handles") {
        LogHandles();
    } else if (verb == "log_arguments") {
        for (const WideString &argument : m_arguments)
            Log("argument " + platform::ToUtf8(argument));
    } else if (verb == "witness") {
        m_witness = platform::ConnectPipe(platform::FromUtf8(text), 10000);
        if (m_witness == platform::invalid_pipe)
            throw Mismatch("no witness");
    } else if (verb == "gate") {
        const platform::PipeHandle gate = platform::ConnectPipe(platform::FromUtf8(text), 10000);
        unsigned char byte = 0;
        std::uint32_t count = 0;
        if (gate == platform::invalid_pipe || !platform::ReadPipe(gate, &byte, 1, count))
            throw Mismatch("the gate is closed");
        platform::ClosePipe(gate);
    } else if (verb == "run") {
        Run(text);
    } else if (verb == "drop") {
        platform::ClosePipe(m_pipe);
    } else if (verb == "hang") {
        std::promise<void> never;
        never.get_future().wait();
    } else if (verb == "exit") {
        throw Ending{std::stoi(text)};
    } else {
        throw Mismatch("unknown line");
    }
}

void Player::Attach()
{
    m_pipe = platform::ConnectPipe(m_arguments.at(1), 10000);
    if (m_pipe == platform::invalid_pipe)
        throw Mismatch("can't connect");
}

Bytes Player::Read(std::size_t size)
{
    Bytes bytes(size);
    for (std::size_t at = 0; at < size;) {
        std::uint32_t count = 0;
        if (!platform::ReadPipe(m_pipe, bytes.data() + at, static_cast<std::uint32_t>(size - at), count) || count == 0)
            throw Mismatch("the pipe ended after " + Hex({bytes.begin(), bytes.begin() + static_cast<long>(at)}));
        at += count;
    }
    return bytes;
}

void Player::Write(const Bytes &bytes)
{
    std::uint32_t count = 0;
    if (!platform::WritePipe(m_pipe, bytes.data(), static_cast<std::uint32_t>(bytes.size()), count))
        throw Mismatch("can't write");
}

void Player::Expect(const Bytes &bytes)
{
    const Bytes came = Read(bytes.size());
    if (came != bytes)
        throw Mismatch("came " + Hex(came));
}

void Player::ExpectEnd()
{
    unsigned char byte = 0;
    std::uint32_t count = 0;
    if (platform::ReadPipe(m_pipe, &byte, 1, count) && count != 0)
        throw Mismatch("a byte came");
}

void Player::ReadSentinel()
{
    Expect({'X', 0, 0, 0, 6});
    m_number = Read(4);
    Expect({0, 0});
}

void Player::Take(const Bytes &start)
{
    const Bytes head = Read(5);
    const Bytes payload = Read(std::size_t{head[1]} << 24 | head[2] << 16 | head[3] << 8 | head[4]);
    if (payload.size() < start.size() || !std::equal(start.begin(), start.end(), payload.begin()))
        throw Mismatch("came " + Hex(payload));
}

void Player::TakeSection(bool accept)
{
    const Bytes head = Read(5);
    const Bytes payload = Read(std::size_t{head[1]} << 24 | head[2] << 16 | head[3] << 8 | head[4]);
    if (head[0] != 'R' || payload.size() < 10 || payload.size() % 2 != 0)
        throw Mismatch("no announcement: " + Hex(head) + Hex(payload));
    m_name.clear();
    for (std::size_t i = 0; i + 10 < payload.size(); i += 2)
        m_name += static_cast<char16_t>(payload[i] | payload[i + 1] << 8);
    m_size = 0;
    for (std::size_t i = payload.size() - 8; i < payload.size(); ++i)
        m_size = m_size << 8 | payload[i];
    m_names.push_back(m_name);
    if (!accept) {
        Write({'E', 0, 0, 0, 12, 255, 255, 255, 255, 255, 255, 255, 255, 'n', 0, 0, 0});
        return;
    }
    const auto size = static_cast<std::uint32_t>(m_size);
    m_section = platform::OpenSection(m_name, size);
    m_view = m_section == nullptr ? nullptr : platform::MapOpenedSection(m_section, size);
    if (m_view == nullptr)
        throw Mismatch("can't open the section");
    Write({'S', 0, 0, 0, 0});
}

void Player::CheckArguments(std::istringstream &rest)
{
    std::string pair;
    for (std::size_t at = 0; rest >> pair; ++at) {
        if (at >= m_size || (pair != ".." && std::stoul(pair, nullptr, 16) != m_view[at]))
            throw Mismatch("differs at " + std::to_string(at) + ": " +
                           Hex({m_view, m_view + std::min<std::uint64_t>(m_size, at + 8)}));
    }
}

void Player::CreateNext(std::uint32_t size)
{
    m_name = NextName();
    m_names.push_back(m_name);
    const Bytes kept(m_view, m_view + std::min<std::size_t>(size, m_size));
    platform::UnmapSection(m_view, static_cast<std::uint32_t>(m_size));
    platform::CloseSection(m_section);
    const platform::SectionHandle section = platform::CreateSection(m_name, size, true);
    unsigned char *view = section == nullptr ? nullptr : platform::MapCreatedSection(section, size);
    if (view == nullptr)
        throw Mismatch("can't create a section");
    std::memcpy(view, kept.data(), kept.size());
    m_section = section;
    m_view = view;
    m_size = size;
    m_created = true;
}

void Player::Announce(const WideString &name, std::uint64_t size)
{
    Bytes payload;
    for (const char16_t unit : name) {
        payload.push_back(static_cast<unsigned char>(unit));
        payload.push_back(static_cast<unsigned char>(unit >> 8));
    }
    payload.insert(payload.end(), 2, 0);
    for (int shift = 56; shift >= 0; shift -= 8)
        payload.push_back(static_cast<unsigned char>(size >> shift));
    Bytes frame = {'R', 0, 0, static_cast<unsigned char>(payload.size() >> 8),
                   static_cast<unsigned char>(payload.size())};
    frame.insert(frame.end(), payload.begin(), payload.end());
    Write(frame);
}

void Player::LogNames()
{
    std::ofstream file("names");
    file << platform::ToUtf8(m_arguments.at(1)) << '\n';
    for (const WideString &name : m_names)
        file << platform::ToUtf8(name) << '\n';
}

void Player::LogHandles()
{
    int count = 0;
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        // The listing's own descriptor shows in the listing.
        const bool listing = std::filesystem::read_symlink(entry).string().starts_with("/proc/");
        count += !listing && std::stoi(entry.path().filename().string()) > 2;
    }
    Log("open handles: " + std::to_string(count));
}

void Player::Run(const std::string &script)
{
    const std::vector<WideString> arguments = {m_arguments.at(1), u"--out_file", m_options[u"--out_file"], u"--script",
                                               platform::FromUtf8(script)};
    platform::Process *process = platform::StartProcess(m_arguments.at(0), arguments, {});
    std::uint32_t code = 1;
    if (process != nullptr)
        platform::WaitForProcess(*process, std::chrono::steady_clock::now() + std::chrono::seconds(20), code);
    platform::ReleaseProcess(process);
    if (code != 0)
        throw Mismatch("the other program ended with " + std::to_string(code));
}

void Player::Log(const std::string &line) const
{
    const auto file = m_options.find(u"--out_file");
    if (file != m_options.end())
        std::ofstream(platform::ToUtf8(file->second), std::ios::app) << line << '\n';
}

Bytes Player::Fill(std::istringstream &rest) const
{
    std::size_t size = 0;
    rest >> size;
    return Bytes(size, RestOfHex(rest).at(0));
}

Bytes Player::RestOfHex(std::istringstream &rest) const
{
    Bytes bytes;
    std::string digits;
    std::string word;
    while (rest >> word)
        digits += word == "NUMBER" ? Hex(m_number) : word;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(static_cast<unsigned char>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}

WideString Player::NextName() const
{
    WideString name = m_name;
    if (!name.empty())
        name.back() = name.back() == u'0' ? u'1' : u'0';
    return name;
}

} // namespace

int kessil::platform::Main(const std::vector<WideString> &arguments)
{
    if (arguments.size() < 2)
        return 2;
    return Player(arguments).Play();
}
