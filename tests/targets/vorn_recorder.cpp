#include "vorn_recorder.h"

#include "recorded_call.h"

#include <algorithm>
#include <cstdio>

namespace {

RecordedCall On(const char *function, std::uint64_t session)
{
    RecordedCall call(function);
    call.Handle("session", session);
    return call;
}

RecordedCall On(const char *function, std::uint64_t session, const char *name, std::uint64_t object)
{
    RecordedCall call = On(function, session);
    call.Handle(name, object);
    return call;
}

// Writes the line with the data area, of which `shown` bytes may be looked at if the script says nothing else.
void Done(RecordedCall &call, const void *data, std::uint32_t shown)
{
    const auto *bytes = static_cast<const unsigned char *>(data);
    std::string digits;
    for (std::uint64_t at = 0; data != nullptr && at < call.Script().peek.value_or(shown); ++at) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02x", bytes[at]);
        digits += pair;
    }
    call.Word("data", data != nullptr ? digits : "null").Done();
}

void Fill(const RecordedCall &call, void *data)
{
    call.Fill("fill", data);
    auto *bytes = static_cast<unsigned char *>(data);
    for (std::uint64_t at = 0; at < call.Script().count_up; ++at)
        bytes[at] = static_cast<unsigned char>(at);
}

std::uint32_t Create(RecordedCall call, std::uint64_t *handle)
{
    call.Done().Out("out", handle);
    return call.Result32();
}

RecordedCall Transfer(const char *function, std::uint64_t session, std::uint64_t file, const void *block,
                      std::uint32_t size)
{
    RecordedCall call = On(function, session, "file", file);
    call.Number("size", size);
    Done(call, block, std::min(size, 32U));
    return call;
}

} // namespace

std::uint32_t VornCreateSession(std::uint64_t *session)
{
    return Create(RecordedCall("VornCreateSession"), session);
}

std::uint32_t VornCloseSession(std::uint64_t session)
{
    return On("VornCloseSession", session).Done().Result32();
}

std::uint32_t VornCreateDir(std::uint64_t session, std::uint64_t *dir)
{
    return Create(On("VornCreateDir", session), dir);
}

std::uint32_t VornOpenDir(std::uint64_t session, std::uint64_t dir, const char *path)
{
    return On("VornOpenDir", session, "dir", dir).Text("path", path).Done().Result32();
}

std::uint32_t VornGetNextDirItem(std::uint64_t session, std::uint64_t dir, void *item)
{
    RecordedCall call = On("VornGetNextDirItem", session, "dir", dir);
    Done(call, item, 0);
    Fill(call, item);
    return call.Result32();
}

std::uint32_t VornCloseDir(std::uint64_t session, std::uint64_t dir)
{
    return On("VornCloseDir", session, "dir", dir).Done().Result32();
}

std::uint32_t VornCreateFile(std::uint64_t session, std::uint64_t *file)
{
    return Create(On("VornCreateFile", session), file);
}

std::uint32_t VornOpenFile(std::uint64_t session, std::uint64_t file, const char *path, std::uint32_t mode)
{
    return On("VornOpenFile", session, "file", file).Text("path", path).Number("mode", mode).Done().Result32();
}

std::uint32_t VornReadFile(std::uint64_t session, std::uint64_t file, void *block, std::uint32_t size,
                           std::uint32_t *count)
{
    const RecordedCall call = Transfer("VornReadFile", session, file, block, size);
    Fill(call, block);
    call.Out("out", count);
    return call.Result32();
}

std::uint32_t VornWriteFile(std::uint64_t session, std::uint64_t file, const void *block, std::uint32_t size,
                            std::uint32_t *count)
{
    const RecordedCall call = Transfer("VornWriteFile", session, file, block, size);
    call.Out("out", count);
    return call.Result32();
}

std::uint32_t VornRestoreFile(std::uint64_t session, std::uint64_t file)
{
    return On("VornRestoreFile", session, "file", file).Done().Result32();
}

std::uint32_t VornCloseFile(std::uint64_t session, std::uint64_t file)
{
    return On("VornCloseFile", session, "file", file).Done().Result32();
}

const char *VornGetErrorText(std::uint64_t session, std::uint64_t object, std::uint32_t code)
{
    static std::string text;
    const RecordedCall call = On("VornGetErrorText", session, "object", object).Number("code", code).Done();
    text = call.Script().text.value_or("");
    return call.Script().text ? text.c_str() : nullptr;
}

std::uint32_t GetLibApiVersion()
{
    return static_cast<std::uint32_t>(RecordedCall("GetLibApiVersion").Done().Script().result.value_or(2));
}

std::uint32_t GetBackupType()
{
    return RecordedCall("GetBackupType").Done().Result32();
}
