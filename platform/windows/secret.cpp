#include "platform/secret.h"

#include "platform/secret_bytes.h"
#include "platform/windows/handle.h"

#include <io.h>

namespace kessil::platform {
namespace {

Handle OpenConsole(const wchar_t *name)
{
    return Handle(CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_EXISTING, 0, nullptr));
}

void Show(HANDLE console, const WideString &text)
{
    DWORD count = 0;
    WriteConsoleW(console, text.data(), static_cast<DWORD>(text.size()), &count, nullptr);
}

// While it exists, the console delivers each typed unit, Ctrl-C included, and echoes none.
class HiddenTyping
{
public:
    explicit HiddenTyping(HANDLE input)
    {
        s_input = input;
        m_hidden = GetConsoleMode(input, &s_before) && SetConsoleCtrlHandler(Restore, TRUE) && SetConsoleMode(input, 0);
    }
    ~HiddenTyping()
    {
        if (m_hidden)
            Restore(0);
        SetConsoleCtrlHandler(Restore, FALSE);
    }
    HiddenTyping(const HiddenTyping &) = delete;
    HiddenTyping &operator=(const HiddenTyping &) = delete;

    bool Works() const { return m_hidden; }

private:
    // Runs before anything that still ends the process, such as Ctrl-Break.
    static BOOL WINAPI Restore(DWORD)
    {
        SetConsoleMode(s_input, s_before);
        return FALSE;
    }

    static HANDLE s_input;
    static DWORD s_before;
    bool m_hidden = false;
};

HANDLE HiddenTyping::s_input = nullptr;
DWORD HiddenTyping::s_before = 0;

bool IsLowSurrogate(char16_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// The line being typed, in memory that is never reallocated.
class TypedLine
{
public:
    explicit TypedLine(WideString &line) : m_line(line)
    {
        m_line.clear();
        m_line.reserve(longest_secret);
    }

    // Returns true while the line continues.
    bool Take(char16_t unit)
    {
        constexpr char16_t control_c = 3;
        if (unit == u'\r' || unit == u'\n')
            return false;
        m_interrupted = unit == control_c;
        if (unit == u'\b' || unit == 0x7F)
            DropLast();
        else if (m_line.size() < longest_secret)
            m_line.push_back(unit);
        else
            m_too_long = true;
        return !m_interrupted;
    }

    SecretStatus Status() const
    {
        if (m_interrupted)
            return SecretStatus::Interrupted;
        return m_too_long ? SecretStatus::TooLong : SecretStatus::Read;
    }

private:
    void DropLast()
    {
        const bool pair = m_line.size() > 1 && IsLowSurrogate(m_line.back());
        for (int units = pair ? 2 : 1; units > 0 && !m_line.empty(); --units) {
            Wipe(&m_line.back(), sizeof m_line.back());
            m_line.pop_back();
        }
    }

    WideString &m_line;
    bool m_interrupted = false;
    bool m_too_long = false;
};

} // namespace

SecretStatus ReadHiddenLine(std::string_view prompt, WideString &line)
{
    const Handle input = OpenConsole(L"CONIN$");
    const Handle output = OpenConsole(L"CONOUT$");
    if (!input || !output)
        return SecretStatus::NoTerminal;
    const HiddenTyping hidden(input.Get());
    if (!hidden.Works())
        return SecretStatus::NoTerminal;
    Show(output.Get(), FromUtf8(prompt));
    TypedLine typed(line);
    wchar_t unit = 0;
    DWORD count = 0;
    bool read = false;
    do
        read = ReadConsoleW(input.Get(), &unit, 1, &count, nullptr) && count == 1;
    while (read && typed.Take(static_cast<char16_t>(unit)));
    Wipe(&unit, sizeof unit);
    Show(output.Get(), u"\r\n");
    return read ? typed.Status() : SecretStatus::Nothing;
}

SecretStatus ReadSecretLine(int descriptor, WideString &line)
{
    SecretBytes bytes;
    while (_read(descriptor, bytes.Next(), 1) == 1 && bytes.Take()) {
    }
    return bytes.Into(line);
}

} // namespace kessil::platform
