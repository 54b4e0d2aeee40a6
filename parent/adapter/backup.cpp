#include "parent/adapter/adapter_state.h"
#include "parent/adapter/command.h"
#include "parent/adapter/section_command.h"

#include <algorithm>
#include <limits>

namespace kessil::parent {
namespace {

// What the results of a read take in the section besides its data.
constexpr std::uint32_t room_for_results = 4096;

constexpr std::size_t largest_data = std::numeric_limits<std::uint32_t>::max() - room_for_results;

} // namespace

Answer Adapter::InitVixDiskLib(std::string_view config, std::string_view lib)
{
    Command command(*m_state, 23, "InitVixDiskLib");
    command.Text(config).Text(lib).Send();
    command.ReadFirstStatus();
    return command.End();
}

Answer Adapter::ExitVixDiskLib()
{
    Command command(*m_state, 24, "ExitVixDiskLib");
    command.Send();
    command.ReadLog();
    return command.End();
}

Answer Adapter::SnapshotVM(std::string_view path, std::string_view name, std::string_view description, bool is_cbt,
                           bool is_memory, bool is_quiesce, std::uint32_t &timestamp)
{
    Command command(*m_state, 49, "SnapshotVM");
    command.Text(path).Text(name).Text(description).Flag(is_cbt).Flag(is_memory).Flag(is_quiesce).Send();
    command.ReadLog();
    command.ReadStatus();
    command.Read(timestamp);
    return command.End();
}

Answer Adapter::StartBackupSession(std::string_view path, AclInfo acl, BackupSession &session)
{
    return Command(*m_state, 6, "StartBackupSession").Text(path).U32(Sent(acl)).AskMarkedHandle(session);
}

Answer Adapter::EndBackupSession(BackupSession session)
{
    return Command(*m_state, 7, "EndBackupSession").U32(Sent(session)).AskStatus();
}

Answer Adapter::GetBackupSessionFiles(BackupSession session, std::string_view path, Listing &listing)
{
    SectionCommand command(*m_state, 8, "GetBackupSessionFiles");
    command.In().U32(Sent(session)).Str(path);
    return command.AskHandle(listing);
}

Answer Adapter::OpenBackupFile(BackupSession session, std::string_view path, BackupFile &file, std::uint32_t &number)
{
    SectionCommand command(*m_state, 9, "OpenBackupFile");
    command.In().U32(Sent(session)).Str(path);
    std::uint32_t index = Sent(BackupFile::None);
    number = 0;
    command.Ask().U32(index).U32(number).Str(command.Error());
    file = static_cast<BackupFile>(index);
    return command.End(number != 0 && file != BackupFile::None);
}

Answer Adapter::ReOpenBackupFile(BackupSession session, std::string_view path, BackupFile &file)
{
    SectionCommand command(*m_state, 28, "ReOpenBackupFile");
    command.In().U32(Sent(session)).Str(path);
    return command.AskHandle(file);
}

Answer Adapter::ReadBackupFile(BackupFile file, std::span<std::byte> data, std::int32_t &number, std::uint64_t &count)
{
    return ReadFile(11, "ReadBackupFile", file, data, number, &count);
}

Answer Adapter::ReadFileACL(BackupFile file, std::span<std::byte> data, std::int32_t &number)
{
    return ReadFile(10, "ReadFileACL", file, data, number, nullptr);
}

Answer Adapter::ReadFile(int command_number, const char *name, BackupFile file, std::span<std::byte> data,
                         std::int32_t &number, std::uint64_t *count)
{
    const bool fits = data.size() <= largest_data;
    const auto size = static_cast<std::uint32_t>(fits ? data.size() : 0);
    SectionCommand command(*m_state, command_number, name, size + room_for_results);
    command.Require(fits, "the data takes more than a section can hold");
    command.In().U32(Sent(file)).Room(size);
    std::span<const std::byte> came;
    std::uint32_t result = 0;
    OutList &out = command.Ask().Buffer(came).U32(result);
    if (count != nullptr)
        out.U64(*count);
    out.Str(command.Error());
    number = static_cast<std::int32_t>(result);
    if (came.size() != data.size())
        return command.RejectResults("a block of another length");
    std::copy(came.begin(), came.end(), data.begin());
    return command.End(number >= 0);
}

Answer Adapter::CloseBackupFile(BackupFile file)
{
    SectionCommand command(*m_state, 12, "CloseBackupFile");
    command.In().U32(Sent(file));
    return command.AskStatus();
}

Answer Adapter::GetReadBufferUse(BackupFile file, std::uint32_t &number)
{
    SectionCommand command(*m_state, 29, "GetReadBufferUse");
    command.In().U32(Sent(file));
    command.Ask().U32(number);
    return command.End();
}

Answer Adapter::GetIndexBlocks(BackupFile file, std::uint32_t &number)
{
    SectionCommand command(*m_state, 30, "getIndexBlocks");
    command.In().U32(Sent(file));
    command.Ask().U32(number);
    return command.End();
}

Answer Adapter::GetDiskChangeIDS(std::string_view path, std::vector<AdapterItem> &items, BackupSession &session)
{
    Command command(*m_state, 44, "GetDiskChangeIDS");
    command.Text(path).Send();
    command.ReadLog();
    command.ReadStatus();
    if (command.Okay()) {
        command.ReadListing(items, ItemForm::WithExtra);
        command.ReadHandle(session);
    }
    return command.End();
}

Answer Adapter::GetDiskChangedSectorNum(BackupSession session, std::uint32_t second, std::string_view third,
                                        std::int32_t &number)
{
    Command command(*m_state, 45, "GetDiskChangedSectorNum");
    command.U32(Sent(session)).U32(second).Text(third).Send();
    command.ReadLog();
    command.ReadStatus();
    if (command.Okay())
        command.Read(number);
    return command.End();
}

} // namespace kessil::parent
