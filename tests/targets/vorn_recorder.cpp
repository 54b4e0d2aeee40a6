#include "record.h"
#include "script.h"
#include "target.h"

#include <cstdio>
#include <cstring>

/// A data-source plug-in that does nothing but tell what it was called with, and answer what it was told to.
///
/// KESSIL_RECORD names the file that each call adds one line to, before anything else happens:
///
///     VornReadFile session=0x1 file=0x2 size=16 data=0102030405060708
///
/// Handles are hexadecimal, `mode`, `size` and `code` decimal, `path="..."` has every byte outside printable ASCII, and
/// `"` and `\`, as \xHH. `data` shows the data area as the call found it: the first `peek` bytes; where the script
/// gives no `peek`, that is at most 32 bytes of the size passed, and nothing of an item, whose size isn't passed.
///
/// KESSIL_SCRIPT names the file that says what each call does (script.h). Without it GetLibApiVersion returns 2,
/// everything else returns 0, and no out-value and no data area is touched.
namespace {

std::string Format(const char *format, unsigned long long number)
{
    char text[32];
    std::snprintf(text, sizeof text, format, number);
    return text;
}

std::string Quoted(const char *text)
{
    std::string quoted = "\"";
    for (; *text; ++text) {
        const auto byte = static_cast<unsigned char>(*text);
        if (byte < 0x20 || byte > 0x7E || byte == '"' || byte == '\\')
            quoted += Format("\\x%02llX", byte);
        else
            quoted += *text;
    }
    return quoted + "\"";
}

/// One call while it runs: collects the record line and knows the behaviour.
class Call
{
public:
    explicit Call(const char *function) : m_line(function), m_behaviour(NextBehaviour(function)) {}

    Call &Handle(const char *name, std::uint64_t value)
    {
        Word(name, Format("0x%llx", value));
        return *this;
    }

    Call &Value(const char *name, std::uint32_t value)
    {
        Word(name, Format("%llu", value));
        return *this;
    }

    Call &Text(const char *name, const char *value)
    {
        Word(name, value ? Quoted(value) : "null");
        return *this;
    }

    Call &Data(const void *data, std::uint32_t size)
    {
        const auto *bytes = static_cast<const unsigned char *>(data);
        const std::uint64_t shown = m_behaviour.peek.value_or(size < 32 ? size : 32);
        std::string digits;
        for (std::uint64_t at = 0; data && at < shown; ++at)
            digits += Format("%02llx", bytes[at]);
        Word("data", data ? digits : "null");
        return *this;
    }

    Behaviour Done() const
    {
        Record(m_line);
        return m_behaviour;
    }

private:
    void Word(const char *name, const std::string &value)
    {
        m_line += ' ';
        m_line += name;
        m_line += '=';
        m_line += value;
    }

    std::string m_line;
    Behaviour m_behaviour;
};

std::uint32_t Result(const Behaviour &behaviour)
{
    return static_cast<std::uint32_t>(behaviour.result.value_or(0));
}

template <typename T>
void SetOut(const Behaviour &behaviour, T *out)
{
    if (behaviour.out)
        *out = static_cast<T>(*behaviour.out);
}

void Fill(const Behaviour &behaviour, void *data)
{
    std::memcpy(data, behaviour.fill.data(), behaviour.fill.size());
    auto *bytes = static_cast<unsigned char *>(data);
    for (std::uint64_t at = 0; at < behaviour.count_up; ++at)
        bytes[at] = static_cast<unsigned char>(at);
}

} // namespace

TARGET_EXPORT std::uint32_t VornCreateSession(std::uint64_t *session)
{
    const Behaviour behaviour = Call("VornCreateSession").Done();
    SetOut(behaviour, session);
    return Result(behaviour);
}

TARGET_EXPORT std::uint32_t VornCloseSession(std::uint64_t session)
{
    return Result(Call("VornCloseSession").Handle("session", session).Done());
}

TARGET_EXPORT std::uint32_t VornCreateDir(std::uint64_t session, std::uint64_t *dir)
{
    const Behaviour behaviour = Call("VornCreateDir").Handle("session", session).Done();
    SetOut(behaviour, dir);
    return Result(behaviour);
}

TARGET_EXPORT std::uint32_t VornOpenDir(std::uint64_t session, std::uint64_t dir, const char *path)
{
    return Result(Call("VornOpenDir").Handle("session", session).Handle("dir", dir).Text("path", path).Done());
}

TARGET_EXPORT std::uint32_t VornGetNextDirItem(std::uint64_t session, std::uint64_t dir, void *item)
{
    const Behaviour behaviour =
        Call("VornGetNextDirItem").Handle("session", session).Handle("dir", dir).Data(item, 0).Done();
    Fill(behaviour, item);
    return Result(behaviour);
}

TARGET_EXPORT std::uint32_t VornCloseDir(std::uint64_t session, std::uint64_t dir)
{
    return Result(Call("VornCloseDir").Handle("session", session).Handle("dir", dir).Done());
}

TARGET_EXPORT std::uint32_t VornCreateFile(std::uint64_t session, std::uint64_t *file)
{
    const Behaviour behaviour = Call("VornCreateFile").Handle("session", session).Done();
    SetOut(behaviour, file);
    return Result(behaviour);
}

TARGET_EXPORT std::uint32_t VornOpenFile(std::uint64_t session, std::uint64_t file, const char *path,
                                         std::uint32_t mode)
{
    return Result(Call("VornOpenFile")
                      .Handle("session", session)
                      .Handle("file", file)
                      .Text("path", path)
                      .Value("mode", mode)
                      .Done());
}

TARGET_EXPORT std::uint32_t VornReadFile(std::uint64_t session, std::uint64_t file, void *block, std::uint32_t size,
                                         std::uint32_t *count)
{
    const Behaviour behaviour = Call("VornReadFile")
                                    .Handle("session", session)
                                    .Handle("file", file)
                                    .Value("size", size)
                                    .Data(block, size)
                                    .Done();
    Fill(behaviour, block);
    SetOut(behaviour, count);
    return Result(behaviour);
}

TARGET_EXPORT std::uint32_t VornWriteFile(std::uint64_t session, std::uint64_t file, const void *block,
                                          std::uint32_t size, std::uint32_t *count)
{
    const Behaviour behaviour = Call("VornWriteFile")
                                    .Handle("session", session)
                                    .Handle("file", file)
                                    .Value("size", size)
                                    .Data(block, size)
                                    .Done();
    SetOut(behaviour, count);
    return Result(behaviour);
}

TARGET_EXPORT std::uint32_t VornRestoreFile(std::uint64_t session, std::uint64_t file)
{
    return Result(Call("VornRestoreFile").Handle("session", session).Handle("file", file).Done());
}

TARGET_EXPORT std::uint32_t VornCloseFile(std::uint64_t session, std::uint64_t file)
{
    return Result(Call("VornCloseFile").Handle("session", session).Handle("file", file).Done());
}

TARGET_EXPORT const char *VornGetErrorText(std::uint64_t session, std::uint64_t object, std::uint32_t code)
{
    static std::string text;
    const Behaviour behaviour =
        Call("VornGetErrorText").Handle("session", session).Handle("object", object).Value("code", code).Done();
    if (!behaviour.text)
        return nullptr;
    text = *behaviour.text;
    return text.c_str();
}

TARGET_EXPORT std::uint32_t GetLibApiVersion()
{
    return static_cast<std::uint32_t>(Call("GetLibApiVersion").Done().result.value_or(2));
}

TARGET_EXPORT std::uint32_t GetBackupType()
{
    return Result(Call("GetBackupType").Done());
}
