#include "families/cwb/cwb.h"

#include "marshal/handler_call.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace kessil {
namespace {

// A block that cwbRC_AddParm made; the number is taken on trust.
unsigned char *BlockAt(std::uint64_t address)
{
    return reinterpret_cast<unsigned char *>(static_cast<std::uintptr_t>(address));
}

} // namespace

void Process_cwbCO_CreateSystem(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    WSTR system_name;
    if (!call.Read(system_name))
        return;

    std::uint32_t system = 0;
    const auto target = AsTarget<std::uint32_t(const char16_t *, std::uint32_t *)>(function);
    const std::uint32_t result = target(system_name.Text(), &system);

    call.Reply(U32(system), U32(result));
}

void Process_cwbCO_SetUserIDEx(CIPCCommunication &channel, void *function)
{
    // Parents may compare the output text, which has no closing bracket.
    HandlerCall call(channel, __func__,
                     {u"Failed to serialise input (Process_cwbCO_SetUserIDEx)",
                      u"Failed to serialise output (Process_cwbCO_SetUserIDEx"});
    U32 system;
    WSTR user_id;
    if (!call.Read(system, user_id))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, const char16_t *)>(function);
    const std::uint32_t result = target(system.value, user_id.Text());

    call.Reply(U32(result));
}

void Process_cwbCO_SetPassword(CIPCCommunication &channel, void *function)
{
    // Parents may compare the output text, which has no closing bracket.
    HandlerCall call(channel, __func__,
                     {u"Failed to serialise input (Process_cwbCO_SetPassword)",
                      u"Failed to serialise output (Process_cwbCO_SetPassword"});
    U32 system;
    WSTR password;
    if (!call.Read(system, password))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, const char16_t *)>(function);
    const std::uint32_t result = target(system.value, password.Text());

    call.Reply(U32(result));
}

void Process_cwbCO_SetPromptMode(CIPCCommunication &channel, void *function)
{
    // Parents may compare the output text, which has no closing bracket.
    HandlerCall call(channel, __func__,
                     {u"Failed to serialise input (Process_cwbCO_SetPromptMode)",
                      u"Failed to serialise output (Process_cwbCO_SetPromptMode"});
    U32 system, prompt_mode;
    if (!call.Read(system, prompt_mode))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result = target(system.value, prompt_mode.value);

    call.Reply(U32(result));
}

void Process_cwbCO_DeleteSystem(CIPCCommunication &channel, void *function)
{
    // Parents may compare the output text, which has no closing bracket.
    HandlerCall call(channel, __func__,
                     {u"Failed to serialise input (Process_cwbCO_DeleteSystem)",
                      u"Failed to serialise output (Process_cwbCO_DeleteSystem"});
    U32 system;
    if (!call.Read(system))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t)>(function);
    const std::uint32_t result = target(system.value);

    call.Reply(U32(result));
}

void Process_cwbRC_StartSysEx(CIPCCommunication &channel, void *function)
{
    // Parents may compare the output text, which has no closing bracket.
    HandlerCall call(channel, __func__,
                     {u"Failed to serialise input (Process_cwbRC_StartSysEx)",
                      u"Failed to serialise output (Process_cwbRC_StartSysEx"});
    U32 system;
    if (!call.Read(system))
        return;

    std::uint32_t request = 0;
    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t *)>(function);
    const std::uint32_t result = target(system.value, &request);

    call.Reply(U32(request), U32(result));
}

void Process_cwbRC_CreatePgm(CIPCCommunication &channel, void *function)
{
    // Parents may compare the output text, which has no closing bracket.
    HandlerCall call(channel, __func__,
                     {u"Failed to serialise input (Process_cwbRC_CreatePgm)",
                      u"Failed to serialise output (Process_cwbRC_CreatePgm"});
    WSTR program_name, library_name;
    if (!call.Read(program_name, library_name))
        return;

    std::uint32_t program = 0;
    const auto target = AsTarget<std::uint32_t(const char16_t *, const char16_t *, std::uint32_t *)>(function);
    const std::uint32_t result = target(program_name.Text(), library_name.Text(), &program);

    call.Reply(U32(program), U32(result));
}

void Process_cwbRC_RunCmd(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 request;
    STR command;
    U32 err_handle;
    if (!call.Read(request, command, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, const char *, std::uint32_t)>(function);
    const std::uint32_t result = target(request.value, command.Text(), err_handle.value);

    call.Reply(U32(result));
}

void Process_cwbRC_AddParm(CIPCCommunication &channel, void *function)
{
    // Parents may compare the output text, which has no closing bracket.
    HandlerCall call(
        channel, __func__,
        {u"Failed to serialise input (Process_cwbRC_AddParm)", u"Failed to serialise output (Process_cwbRC_AddParm"});
    U32 program;
    U16 type;
    IN data;
    if (!call.Read(program, type, data))
        return;

    // The library keeps the address and writes there later: the block is the parent's, to be deleted at its request.
    auto *const address = new unsigned char[data.Size()];
    std::memcpy(address, data.Data(), data.Size());
    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint16_t, std::uint32_t, unsigned char *)>(function);
    const std::uint32_t result = target(program.value, type.value, data.Size(), address);

    call.Reply(U64(reinterpret_cast<std::uintptr_t>(address)), U32(result));
}

// Calls no target: the block is this process's own. The constant stands where the other rows have the result.
void Process_cwbRC_CallPgm_GetBuffer(CIPCCommunication &channel, void *)
{
    HandlerCall call(channel, __func__);
    U64 address;
    BUF data;
    if (!call.Read(address, data))
        return;

    if (!call.Write(address, data, U32(0)))
        return;
    // Not earlier: the section may have grown, and the data with it.
    if (address.value != 0)
        std::copy_n(BlockAt(address.value), data.size, data.data);
    call.Succeed();
}

// Calls no target: the block is this process's own. The constant stands where the other rows have the result.
void Process_cwbRC_CallPgm_DeleteBuffer(CIPCCommunication &channel, void *)
{
    HandlerCall call(channel, __func__);
    U64 address;
    if (!call.Read(address))
        return;

    if (address.value != 0)
        delete[] BlockAt(address.value);

    call.Reply(U32(0));
}

void Process_cwbRC_CallPgm(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 request, program, err_handle;
    if (!call.Read(request, program, err_handle))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint32_t, std::uint32_t)>(function);
    const std::uint32_t result = target(request.value, program.value, err_handle.value);

    call.Reply(U32(result));
}

void Process_cwbRC_DeletePgm(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 program;
    if (!call.Read(program))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t)>(function);
    const std::uint32_t result = target(program.value);

    call.Reply(U32(result));
}

void Process_cwbRC_StopSys(CIPCCommunication &channel, void *function)
{
    HandlerCall call(channel, __func__);
    U32 request;
    if (!call.Read(request))
        return;

    const auto target = AsTarget<std::uint32_t(std::uint32_t)>(function);
    const std::uint32_t result = target(request.value);

    call.Reply(U32(result));
}

} // namespace kessil
