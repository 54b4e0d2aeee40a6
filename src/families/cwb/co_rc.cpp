#include "families/cwb/cwb.h"

#include "marshal/row.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace kessil {
namespace {

// A block that cwbRC_AddParm made; nothing checks the number.
unsigned char *BlockAt(std::uint64_t address)
{
    return reinterpret_cast<unsigned char *>(static_cast<std::uintptr_t>(address));
}

} // namespace

void Process_cwbCO_CreateSystem(CIPCCommunication &channel, void *function)
{
    Row<U32(WSTR system_name, Out<U32> system)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbCO_SetUserIDEx(CIPCCommunication &channel, void *function)
{
    // Parents may compare the output text, which has no closing bracket.
    Row<U32(U32 system, WSTR user_id)>::Run(channel, __func__, function, OutList::Results,
                                            {u"Failed to serialise input (Process_cwbCO_SetUserIDEx)",
                                             u"Failed to serialise output (Process_cwbCO_SetUserIDEx"});
}

void Process_cwbCO_SetPassword(CIPCCommunication &channel, void *function)
{
    // Parents may compare the output text, which has no closing bracket.
    Row<U32(U32 system, WSTR password)>::Run(channel, __func__, function, OutList::Results,
                                             {u"Failed to serialise input (Process_cwbCO_SetPassword)",
                                              u"Failed to serialise output (Process_cwbCO_SetPassword"});
}

void Process_cwbCO_SetPromptMode(CIPCCommunication &channel, void *function)
{
    // Parents may compare the output text, which has no closing bracket.
    Row<U32(U32 system, U32 prompt_mode)>::Run(channel, __func__, function, OutList::Results,
                                               {u"Failed to serialise input (Process_cwbCO_SetPromptMode)",
                                                u"Failed to serialise output (Process_cwbCO_SetPromptMode"});
}

void Process_cwbCO_DeleteSystem(CIPCCommunication &channel, void *function)
{
    // Parents may compare the output text, which has no closing bracket.
    Row<U32(U32 system)>::Run(channel, __func__, function, OutList::Results,
                              {u"Failed to serialise input (Process_cwbCO_DeleteSystem)",
                               u"Failed to serialise output (Process_cwbCO_DeleteSystem"});
}

void Process_cwbRC_StartSysEx(CIPCCommunication &channel, void *function)
{
    // Parents may compare the output text, which has no closing bracket.
    Row<U32(U32 system, Out<U32> request)>::Run(channel, __func__, function, OutList::Results,
                                                {u"Failed to serialise input (Process_cwbRC_StartSysEx)",
                                                 u"Failed to serialise output (Process_cwbRC_StartSysEx"});
}

void Process_cwbRC_CreatePgm(CIPCCommunication &channel, void *function)
{
    // Parents may compare the output text, which has no closing bracket.
    Row<U32(WSTR program_name, WSTR library_name, Out<U32> program)>::Run(
        channel, __func__, function, OutList::Results,
        {u"Failed to serialise input (Process_cwbRC_CreatePgm)",
         u"Failed to serialise output (Process_cwbRC_CreatePgm"});
}

void Process_cwbRC_RunCmd(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 request, STR command, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

// The target gets the address of a block that outlives the call. Parents may compare the output text, which has no
// closing bracket.
void Process_cwbRC_AddParm(CIPCCommunication &channel, void *function)
{
    HandlerCall call(
        channel, __func__,
        {u"Failed to serialise input (Process_cwbRC_AddParm)", u"Failed to serialise output (Process_cwbRC_AddParm"});
    U32 program;
    U16 type;
    IN data;
    if (!call.Read(program, type, data))
        return;

    // The library keeps the address and writes there later. The parent owns the block and has it deleted.
    auto *const address = new unsigned char[data.Size()];
    std::memcpy(address, data.Data(), data.Size());
    const auto target = AsTarget<std::uint32_t(std::uint32_t, std::uint16_t, std::uint32_t, unsigned char *)>(function);
    const std::uint32_t result = target(program.value, type.value, data.Size(), address);

    call.Reply(U64(reinterpret_cast<std::uintptr_t>(address)), U32(result));
}

// Calls no target: the block belongs to this process. A 0 stands in the place of the result.
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

// Calls no target: the block belongs to this process. A 0 stands in the place of the result.
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
    Row<U32(U32 request, U32 program, U32 err_handle)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbRC_DeletePgm(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 program)>::Run(channel, __func__, function, OutList::Results);
}

void Process_cwbRC_StopSys(CIPCCommunication &channel, void *function)
{
    Row<U32(U32 request)>::Run(channel, __func__, function, OutList::Results);
}

} // namespace kessil
