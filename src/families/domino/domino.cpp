#include "families/domino/domino.h"

#include "marshal/handler_call.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace kessil {
namespace {

// Copies as strcpy_s does where no handler for invalid parameters is installed: it succeeds with 0 or doesn't return.
std::uint32_t CopyText(unsigned char *room, std::uint32_t size, const char *text)
{
    const void *const end = text != nullptr && size != 0 ? std::memchr(text, 0, size) : nullptr;
    if (end == nullptr)
        std::abort();
    std::memcpy(room, text, static_cast<std::size_t>(static_cast<const char *>(end) - text) + 1);
    return 0;
}

} // namespace

void Process_DominoGetSession(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 unused;
    STR text;
    if (!call.Read(unused, text))
        return;

    // The return value is the session. The value read is echoed, but the target doesn't get it.
    const auto target = AsTarget<std::uint32_t(const char *)>(function);
    const std::uint32_t session = target(text.Text());

    // A constant 0 in the place of the result.
    call.Reply(unused, text, U32(session), U32(0));
}

void Process_DominoCloseSession(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 session;
    if (!call.Read(session))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t)>(function);
    const std::uint32_t result = target(session.value);

    call.Reply(session, U32(result));
}

void Process_DominoFindFirstDatabase(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 session;
    STR path;
    BUF block;
    if (!call.Read(session, path, block))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, const char *, void *, std::uint32_t)>(function);
    const std::uint32_t result = target(session.value, path.Text(), block.data, block.size);

    call.Reply(session, path, block, U32(result));
}

void Process_DominoFindNextDatabase(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 session;
    BUF block;
    if (!call.Read(session, block))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, void *, std::uint32_t)>(function);
    const std::uint32_t result = target(session.value, block.data, block.size);

    call.Reply(session, block, U32(result));
}

void Process_DominoGetDatabaseInfo(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 session;
    if (!call.Read(session))
        return;

    std::uint32_t value1 = 0, value2 = 0;
    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t *, std::uint32_t *)>(function);
    const std::uint32_t result = target(session.value, &value1, &value2);

    call.Reply(session, U32(value1), U32(value2), U32(result));
}

void Process_DominoCopyDatabase(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 session;
    STR text1, text2, text3, text4;
    U32 value;
    if (!call.Read(session, text1, text2, text3, text4, value))
        return;

    // The value goes both ways.
    const auto target =
        AsTarget<std::uint32_t(std::uint32_t, const char *, const char *, const char *, const char *, std::uint32_t *)>(
            function);
    const std::uint32_t result =
        target(session.value, text1.Text(), text2.Text(), text3.Text(), text4.Text(), &value.value);

    call.Reply(session, text1, text2, text3, text4, value, U32(result));
}

void Process_DominoGetErrorMessage(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 session, code;
    BUF text;
    if (!call.Read(session, code, text))
        return;

    const auto target = AsTarget<const char *(std::uint32_t, std::uint32_t)>(function);
    const char *const message = target(session.value, code.value);
    const std::uint32_t copy_result = CopyText(text.data, text.size, message);

    // The last place holds the copy's result; the library gives none.
    call.Reply(session, code, text, U32(copy_result));
}

void Process_DominoSetPassword(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    STR text1, text2;
    if (!call.Read(text1, text2))
        return;

    const auto target = AsTarget<std::uint32_t(const char *, const char *)>(function);
    const std::uint32_t result = target(text1.Text(), text2.Text());

    call.Reply(text1, text2, U32(result));
}

void Process_DominoGetNotesVersion(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 session;
    STR text;
    if (!call.Read(session, text))
        return;

    std::uint32_t version = 0;
    const auto target = AsTarget<std::uint32_t(std::uint32_t, const char *, std::uint32_t *)>(function);
    const std::uint32_t result = target(session.value, text.Text(), &version);

    call.Reply(session, text, U32(version), U32(result));
}

} // namespace kessil
