#include "parent/adapter/adapter_state.h"
#include "parent/adapter/command.h"

#include <limits>

namespace kessil::parent {
namespace {

constexpr std::size_t largest_sectors = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint64_t largest_start = std::numeric_limits<std::int64_t>::max();

Command &Sectors(Command &command, std::uint64_t start, std::size_t size)
{
    return command.Require(size % sector_size == 0, "the data isn't whole sectors")
        .Require(size <= largest_sectors, "the data has 4 GiB or more")
        .Require(start <= largest_start, "the start is 2^63 or more")
        .U64(start)
        .U64(size / sector_size);
}

} // namespace

Answer Adapter::GetVMConfig(std::string_view path, std::vector<AdapterItem> &items)
{
    return Command(*m_state, 53, "GetVMConfig").Text(path).AskListing(items, ItemForm::Short);
}

Answer Adapter::SetVMConfig(RestoreSession session, std::string_view config)
{
    return Command(*m_state, 61, "SetVMConfig")
        .U32(Sent(session))
        .Require(config.find('\0') == config.npos, "a text holds a zero")
        .Block(std::as_bytes(std::span(config)))
        .AskStatus();
}

Answer Adapter::GetSnapshotConfig(std::string_view path, std::uint32_t timestamp, std::vector<AdapterItem> &items)
{
    return Command(*m_state, 54, "GetSnapshotConfig").Text(path).U32(timestamp).AskListing(items, ItemForm::Short);
}

Answer Adapter::OpenDisk(std::string_view vm_path, std::string_view disk_path, bool flag)
{
    return Command(*m_state, 55, "OpenDisk").Text(vm_path).Text(disk_path).Flag(flag).AskStatus();
}

Answer Adapter::CloseDisk()
{
    return Command(*m_state, 56, "CloseDisk").AskStatus();
}

Answer Adapter::ReadSectors(std::uint64_t start, std::span<std::byte> sectors)
{
    Command command(*m_state, 57, "ReadSectors");
    Sectors(command, start, sectors.size()).Block({}).Send();
    command.ReadLog();
    command.ReadBlock(sectors);
    return command.End();
}

Answer Adapter::WriteSectors(std::uint64_t start, std::span<const std::byte> sectors)
{
    Command command(*m_state, 58, "WriteSectors");
    return Sectors(command, start, sectors.size()).Block(sectors).AskStatus();
}

Answer Adapter::CreateVM(std::string_view first, std::string_view second, std::string_view third,
                         const std::map<std::string, std::string> &pairs)
{
    Command command(*m_state, 59, "CreateVM");
    command.U64(pairs.size()).Text(first).Text(second).Text(third);
    for (const auto &[key, value] : pairs)
        command.WholeText(key).WholeText(value);
    return command.AskStatus();
}

Answer Adapter::PowerOnVaioVM(std::string_view path)
{
    return Command(*m_state, 62, "PowerOnVaioVM").Text(path).AskStatus();
}

Answer Adapter::PowerOffVaioVM(std::string_view path)
{
    return Command(*m_state, 63, "PowerOffVaioVM").Text(path).AskStatus();
}

Answer Adapter::DeleteVaioVM(std::string_view path)
{
    return Command(*m_state, 64, "DeleteVaioVM").Text(path).AskStatus();
}

Answer Adapter::CloneVM(std::string_view source_path, std::string_view second, std::string_view third)
{
    return Command(*m_state, 65, "CloneVM").Text(source_path).Text(second).Text(third).AskStatus();
}

Answer Adapter::AttachPolicy(std::string_view path, std::string_view policy_id)
{
    return Command(*m_state, 66, "AttachPolicy").Text(path).WholeText(policy_id).AskStatus();
}

} // namespace kessil::parent
