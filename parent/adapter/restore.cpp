#include "parent/adapter/adapter_state.h"
#include "parent/adapter/command.h"
#include "parent/adapter/section_command.h"

namespace kessil::parent {

Answer Adapter::PrepareVMRestore(std::string_view path, std::uint32_t opt_flags, std::string_view transport_mode,
                                 RestoreSession &session)
{
    return Command(*m_state, 15, "PrepareVMRestore")
        .Text(path)
        .U32(opt_flags)
        .WholeText(transport_mode)
        .AskHandle(session);
}

Answer Adapter::PrepareVMRestoreIncremental(std::string_view path, std::uint32_t opt_flags,
                                            std::string_view transport_mode, RestoreSession &session)
{
    return Command(*m_state, 32, "PrepareVMRestoreIncremental")
        .Text(path)
        .U32(opt_flags)
        .WholeText(transport_mode)
        .AskHandle(session);
}

Answer Adapter::SetOverrideValue(RestoreSession session, std::string_view key, std::string_view value)
{
    return Command(*m_state, 16, "SetOverrideValue").U32(Sent(session)).Text(key).Text(value).AskEcho(Sent(session));
}

Answer Adapter::AddFolder(std::string_view path)
{
    const auto length = static_cast<std::uint32_t>(path.size());
    return Command(*m_state, 26, "AddFolder").U32(length).Text(path).AskStatus();
}

Answer Adapter::OpenRestoreFile(RestoreSession session, std::string_view path, RestoreFile &file)
{
    return Command(*m_state, 19, "OpenRestoreFile").U32(Sent(session)).Text(path).AskHandle(file);
}

Answer Adapter::OpenRestoreFileIncremental(RestoreSession session, std::string_view path, std::uint32_t third,
                                           RestoreFile &file)
{
    return Command(*m_state, 40, "OpenRestoreFileIncremental").U32(Sent(session)).Text(path).U32(third).AskHandle(file);
}

Answer Adapter::WriteRestoreFile(RestoreFile file, std::span<const std::byte> data)
{
    return Command(*m_state, 21, "WriteRestoreFile").U32(Sent(file)).Block(data).AskStatus();
}

Answer Adapter::WriteRestoreFileIncremental(RestoreFile file, std::uint64_t offset, std::span<const std::byte> data)
{
    return Command(*m_state, 41, "WriteRestoreFileIncremental").U32(Sent(file)).U64(offset).Block(data).AskStatus();
}

Answer Adapter::CloseRestoreFile(RestoreFile file)
{
    return Command(*m_state, 22, "CloseRestoreFile").U32(Sent(file)).AskStatus();
}

Answer Adapter::CloseRestoreFileIncremental(RestoreFile file)
{
    return Command(*m_state, 42, "CloseRestoreFileIncremental").U32(Sent(file)).AskStatus();
}

Answer Adapter::EndVMRestore(RestoreSession session, bool flag)
{
    return Command(*m_state, 17, "EndVMRestore").U32(Sent(session)).Flag(flag).AskStatus();
}

Answer Adapter::EndVMRestoreIncremental(RestoreSession session, bool flag)
{
    return Command(*m_state, 33, "EndVMRestoreIncremental").U32(Sent(session)).Flag(flag).AskStatus();
}

Answer Adapter::CreateACLInfo(std::span<const std::byte> data, std::string_view key, std::string_view second,
                              AclInfo &acl)
{
    SectionCommand command(*m_state, 18, "CreateACLInfo");
    command.In().Bytes(data).Str(key).Str(second);
    std::uint32_t index = Sent(AclInfo::None);
    command.Ask().U32(index).Str(command.Error());
    acl = static_cast<AclInfo>(index);
    return command.End();
}

Answer Adapter::GetACLInfo(AclInfo acl, Listing &listing)
{
    SectionCommand command(*m_state, 25, "GetACLInfo");
    command.In().U32(Sent(acl));
    return command.AskHandle(listing);
}

Answer Adapter::WriteFileACL(RestoreFile file, std::span<const std::byte> data)
{
    return Command(*m_state, 20, "WriteFileACL").U32(Sent(file)).Block(data).AskStatus();
}

Answer Adapter::RenameMachine(RestoreSession session, std::string_view name)
{
    const auto length = static_cast<std::uint32_t>(name.size());
    return Command(*m_state, 43, "RenameMachine").U32(Sent(session)).U32(length).Text(name).AskStatus();
}

Answer Adapter::ReconfigureMachine(RestoreSession session, bool flag)
{
    SectionCommand command(*m_state, 48, "ReconfigureMachine");
    command.In().U32(Sent(session)).U8(flag ? 1 : 0);
    return command.AskStatus();
}

Answer Adapter::PowerOnVDR(RestoreSession session)
{
    return Command(*m_state, 34, "PowerOnVDR").U32(Sent(session)).AskStatus();
}

Answer Adapter::PowerOffVDR(RestoreSession session)
{
    return Command(*m_state, 35, "PowerOffVDR").U32(Sent(session)).AskStatus();
}

Answer Adapter::DeleteVM(std::string_view path, RestoreSession session)
{
    return Command(*m_state, 31, "DeleteVM").Text(path).U32(Sent(session)).AskStatus();
}

} // namespace kessil::parent
