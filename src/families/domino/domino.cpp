#include "families/domino/domino.h"

#include "marshal/row.h"

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

// The target returns the session, and a 0 stands in the place of the result. The value read is echoed, but the target
// doesn't get it.
void Process_DominoGetSession(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 unused;
    STR text;
    if (!call.Read(unused, text))
        return;

    const auto target = AsTarget<std::uint32_t(const char *)>(function);
    const std::uint32_t session = target(text.Text());

    call.Reply(unused, text, U32(session), U32(0));
}

void Process_DominoCloseSession(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 session)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_DominoFindFirstDatabase(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 session, STR path, BUF block, Length size)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_DominoFindNextDatabase(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 session, BUF block, Length size)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_DominoGetDatabaseInfo(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 session, Out<U32> value1, Out<U32> value2)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_DominoCopyDatabase(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 session, STR text1, STR text2, STR text3, STR text4, InOut<U32> value)>::Run(
        channel, __func__, function, OutList::EchoAndResults);
}

// The target returns the text, which is copied into the BUF. The copy's result stands in the place of the target's.
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

    call.Reply(session, code, text, U32(copy_result));
}

void Process_DominoSetPassword(CIPCCommunication &channel, void *function)
{
    Row<U32(STR text1, STR text2)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

void Process_DominoGetNotesVersion(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 session, STR text, Out<U32> version)>::Run(channel, __func__, function, OutList::EchoAndResults);
}

} // namespace kessil
