#include <kessil/adapter.h>

#include "parent/adapter/section_command.h"

#include <algorithm>
#include <limits>

namespace kessil::parent {
namespace {

// What the results of a read take in the section besides its data.
constexpr std::uint32_t room_for_results = 4096;

constexpr std::size_t largest_data = std::numeric_limits<std::uint32_t>::max() - room_for_results;
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

struct Adapter::State : CommandContext
{
    /// The library that was loaded for the calls that have no command.
    WideString listed{};
};

Adapter::Adapter(Helper &helper, AdapterOptions options)
    : m_state(new State{{helper, helper.Commands(), std::move(options)}})
{}

Adapter::~Adapter() = default;

Result Adapter::Load(std::u16string_view library)
{
    const bool fits = std::all_of(library.begin(), library.end(), [](char16_t unit) { return unit <= 0xFF; });
    if (!fits || library.find(u'\0') != library.npos)
        return m_state->keeper.NotSent(
            Request{"loading", library}.Description() +
            (fits ? ": the name holds a zero" : ": the name has a character above U+00FF, which can't be sent"));
    return m_state->keeper.LoadAdapter(library);
}

Answer Adapter::GetLibraryVersion(std::string &version)
{
    Command command(*m_state, 127, "GetLibraryVersion");
    command.Send();
    command.TakeFirstText(version);
    return command.End();
}

Answer Adapter::CreateCredentials(std::string_view first, std::string_view second)
{
    return Command(*m_state, 3, "CreateCredentials").Secret().Text(first).Text(second).AskStatus();
}

Answer Adapter::CreateBackupOptions(const std::array<bool, 5> &flags, std::string_view sixth, BackupOptions &options)
{
    Command command(*m_state, 4, "CreateBackupOptions");
    for (const bool flag : flags)
        command.Flag(flag);
    return command.Object(sixth).AskHandle(options);
}

Answer Adapter::OpenListing(std::string_view path, std::uint32_t listing_opts, std::vector<AdapterItem> &items)
{
    return Command(*m_state, 5, "OpenListing").Text(path).U32(listing_opts).AskListing(items, ItemForm::WithExtra);
}

Answer Adapter::NextItem(Listing listing, AdapterItem &item)
{
    if (Answer answer = LoadForListings(); !answer)
        return answer;
    SectionCommand command(*m_state, "NextItem", "SIGNATURE_VADPNextItem");
    command.In().U32(Sent(listing));
    std::uint32_t number = 0;
    std::uint32_t extra = 0;
    command.Ask().Str(item.name).U32(number).U64(item.value).U32(extra).Str(command.Error());
    item.number = static_cast<std::int32_t>(number);
    item.extra = static_cast<std::int32_t>(extra);
    return command.End();
}

Answer Adapter::FreeListing(Listing listing)
{
    if (Answer answer = LoadForListings(); !answer)
        return answer;
    SectionCommand command(*m_state, "FreeListing", "SIGNATURE_VADPFreeListing");
    command.In().U32(Sent(listing));
    command.Ask();
    return command.End();
}

Answer Adapter::LoadForListings()
{
    const WideString library(m_state->keeper.AdapterName());
    Result result{};
    if (!library.empty() && library != m_state->listed) {
        result = m_state->helper.Load(library);
        if (result)
            m_state->listed = library;
    }
    return MakeAnswer(std::move(result), true, {}, {});
}

Answer Adapter::ListDataStores(std::string_view first, std::string_view second, std::vector<AdapterItem> &items)
{
    return Command(*m_state, 13, "ListDataStores").Text(first).Text(second).AskListing(items, ItemForm::Short);
}

Answer Adapter::ListFolders(std::string_view path, std::vector<AdapterItem> &items)
{
    return Command(*m_state, 38, "ListFolders").Text(path).AskListing(items, ItemForm::WithExtra);
}

Answer Adapter::ListHosts(std::string_view path, std::vector<AdapterItem> &items)
{
    return Command(*m_state, 37, "ListHosts").Text(path).AskListing(items, ItemForm::Short);
}

Answer Adapter::ListDatacenters(std::string_view path, std::vector<AdapterItem> &items)
{
    return Command(*m_state, 36, "ListDatacenters").Text(path).AskListing(items, ItemForm::Short);
}

Answer Adapter::ListMachines(std::string_view path, std::vector<AdapterItem> &items)
{
    return Command(*m_state, 39, "ListMachines").Text(path).AskListing(items, ItemForm::Short);
}

Answer Adapter::ListResourcePools(std::string_view path, Listing &listing)
{
    SectionCommand command(*m_state, 14, "ListResourcePools");
    command.In().Str(path);
    return command.AskHandle(listing);
}

Answer Adapter::OpenConfigRead(RestoreSession session, std::string_view path, RestoreFile &reader)
{
    SectionCommand command(*m_state, 47, "OpenConfigRead");
    command.In().U32(Sent(session)).Str(path);
    return command.AskHandle(reader);
}

Answer Adapter::ListConfigItems(RestoreSession session, Listing &listing)
{
    SectionCommand command(*m_state, 46, "ListConfigItems");
    command.In().U32(Sent(session));
    return command.AskHandle(listing);
}

Answer Adapter::CreateListingCache(std::string_view path, std::uint16_t &flag)
{
    SectionCommand command(*m_state, 27, "CreateListingCache");
    command.In().Str(path);
    command.Ask().U16(flag).Str(command.Error());
    return command.End();
}

Answer Adapter::InitVixDiskLib(std::string_view config, std::string_view lib)
{
    Command command(*m_state, 23, "InitVixDiskLib");
    command.Text(config).Text(lib).Send();
    command.TakeFirstStatus();
    return command.End();
}

Answer Adapter::ExitVixDiskLib()
{
    Command command(*m_state, 24, "ExitVixDiskLib");
    command.Send();
    command.TakeLog();
    return command.End();
}

Answer Adapter::SnapshotVM(std::string_view path, std::string_view name, std::string_view description, bool is_cbt,
                           bool is_memory, bool is_quiesce, std::uint32_t &timestamp)
{
    Command command(*m_state, 49, "SnapshotVM");
    command.Text(path).Text(name).Text(description).Flag(is_cbt).Flag(is_memory).Flag(is_quiesce).Send();
    command.TakeLog();
    command.TakeStatus();
    command.Take(timestamp);
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
        return command.Distrust("a block of another length");
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
    command.TakeLog();
    command.TakeStatus();
    if (command.Okay()) {
        command.TakeListing(items, ItemForm::WithExtra);
        command.TakeHandle(session);
    }
    return command.End();
}

Answer Adapter::GetDiskChangedSectorNum(BackupSession session, std::uint32_t second, std::string_view third,
                                        std::int32_t &number)
{
    Command command(*m_state, 45, "GetDiskChangedSectorNum");
    command.U32(Sent(session)).U32(second).Text(third).Send();
    command.TakeLog();
    command.TakeStatus();
    if (command.Okay())
        command.Take(number);
    return command.End();
}

Answer Adapter::PrepareVMRestore(std::string_view path, std::uint32_t opt_flags, std::string_view transport_mode,
                                 RestoreSession &session)
{
    return Command(*m_state, 15, "PrepareVMRestore")
        .Text(path)
        .U32(opt_flags)
        .Object(transport_mode)
        .AskHandle(session);
}

Answer Adapter::PrepareVMRestoreIncremental(std::string_view path, std::uint32_t opt_flags,
                                            std::string_view transport_mode, RestoreSession &session)
{
    return Command(*m_state, 32, "PrepareVMRestoreIncremental")
        .Text(path)
        .U32(opt_flags)
        .Object(transport_mode)
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
    command.TakeLog();
    command.TakeBlock(sectors);
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
        command.Object(key).Object(value);
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
    return Command(*m_state, 66, "AttachPolicy").Text(path).Object(policy_id).AskStatus();
}

} // namespace kessil::parent
