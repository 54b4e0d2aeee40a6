#include "fuzz/vorn_stand_in.h"

#include "families/vorn/vorn.h"

#include <array>
#include <string>

namespace kessil::test {
namespace {

std::uint32_t answer = 0;
std::string error_text;

std::uint32_t CreateSession(std::uint64_t *session)
{
    *session = 0x0101010101010101U * answer;
    return answer;
}

std::uint32_t OnOne(std::uint64_t /*session*/)
{
    return answer;
}

std::uint32_t Create(std::uint64_t session, std::uint64_t *created)
{
    *created = session + answer;
    return answer;
}

// Reads the whole path: it must end somewhere.
std::uint32_t OpenDir(std::uint64_t /*session*/, std::uint64_t /*dir*/, const char *path)
{
    return answer + static_cast<std::uint32_t>(std::char_traits<char>::length(path));
}

std::uint32_t OpenFile(std::uint64_t session, std::uint64_t file, const char *path, std::uint32_t mode)
{
    return OpenDir(session, file, path) + mode;
}

std::uint32_t GetNextDirItem(std::uint64_t /*session*/, std::uint64_t /*dir*/, void *item)
{
    return item == nullptr ? 0 : answer;
}

std::uint32_t OnTwo(std::uint64_t /*session*/, std::uint64_t /*object*/)
{
    return answer;
}

std::uint32_t Transfer(std::uint64_t /*session*/, std::uint64_t /*file*/, void *data, std::uint32_t size,
                       std::uint32_t *count)
{
    *count = data == nullptr ? 0 : size;
    return answer;
}

const char *GetErrorText(std::uint64_t /*session*/, std::uint64_t /*object*/, std::uint32_t /*code*/)
{
    return answer % 8 == 0 ? nullptr : error_text.c_str();
}

std::uint32_t Answer()
{
    return answer;
}

template <class Function>
void *Address(Function *function)
{
    return reinterpret_cast<void *>(function);
}

template <Handler handler, auto *own>
void CallOwn(CIPCCommunication &channel, void * /*function*/)
{
    handler(channel, Address(own));
}

template <Handler handler, auto *own>
constexpr SignatureRow BothGenerations(const char *signature)
{
    return {signature, CallOwn<handler, own>, CallOwn<handler, own>};
}

constexpr std::array rows = {
    BothGenerations<Process_VornCreateSession, CreateSession>("SIGNATURE_VornCreateSession"),
    BothGenerations<Process_VornCloseSession, OnOne>("SIGNATURE_VornCloseSession"),
    BothGenerations<Process_VornCreateDir, Create>("SIGNATURE_VornCreateDir"),
    BothGenerations<Process_VornOpenDir, OpenDir>("SIGNATURE_VornOpenDir"),
    BothGenerations<Process_VornGetNextDirItem, GetNextDirItem>("SIGNATURE_VornGetNextDirItem"),
    BothGenerations<Process_VornCloseDir, OnTwo>("SIGNATURE_VornCloseDir"),
    BothGenerations<Process_VornCreateFile, Create>("SIGNATURE_VornCreateFile"),
    BothGenerations<Process_VornOpenFile, OpenFile>("SIGNATURE_VornOpenFile"),
    BothGenerations<Process_VornReadFile, Transfer>("SIGNATURE_VornReadFile"),
    BothGenerations<Process_VornWriteFile, Transfer>("SIGNATURE_VornWriteFile"),
    BothGenerations<Process_VornRestoreFile, OnTwo>("SIGNATURE_VornRestoreFile"),
    BothGenerations<Process_VornCloseFile, OnTwo>("SIGNATURE_VornCloseFile"),
    BothGenerations<Process_VornGetErrorText, GetErrorText>("SIGNATURE_VornGetErrorText"),
    BothGenerations<Process_GetLibApiVersion, Answer>("SIGNATURE_GetLibApiVersion"),
    BothGenerations<Process_GetBackupType, Answer>("SIGNATURE_GetBackupType"),
};

} // namespace

std::span<const SignatureRow> VornStandInRows()
{
    return rows;
}

FakeModule::Exports VornStandIn(std::uint8_t seed)
{
    answer = seed;
    error_text.assign(seed * 2U, 'e');
    return {{"VornCreateSession", Address(CreateSession)},
            {"VornCloseSession", Address(OnOne)},
            {"VornCreateDir", Address(Create)},
            {"VornOpenDir", Address(OpenDir)},
            {"VornGetNextDirItem", Address(GetNextDirItem)},
            {"VornCloseDir", Address(OnTwo)},
            {"VornCreateFile", Address(Create)},
            {"VornOpenFile", Address(OpenFile)},
            {"VornReadFile", Address(Transfer)},
            {"VornWriteFile", Address(Transfer)},
            {"VornRestoreFile", Address(OnTwo)},
            {"VornCloseFile", Address(OnTwo)},
            {"VornGetErrorText", Address(GetErrorText)},
            {"GetLibApiVersion", Address(Answer)},
            {"GetBackupType", Address(Answer)}};
}

} // namespace kessil::test
