#include "parent/adapter_calls.h"

namespace kessil::parent {
namespace {

using namespace std::string_literals;

const std::string status_yes = "00000001";
const std::string status_no = "FFFFFFFF 00000003 626164";
const std::string text_alone = "00000003 626164";

// One item: x, value 0x102, number -2, and for some extra 9.
const std::string short_listing = "00000001 00000001 78 0000000000000102 FFFFFFFE";
const std::string long_listing = short_listing + " 00000009";

constexpr std::byte data[] = {std::byte{'D'}, std::byte{'A'}, std::byte{'T'}, std::byte{'A'}};

std::string Repeated(const std::string &byte, std::size_t times)
{
    std::string text;
    for (std::size_t i = 0; i < times; ++i)
        text += byte;
    return text;
}

template <class Call>
std::function<Answer(Adapter &)> Listed(Call call)
{
    return [call](Adapter &adapter) {
        std::vector<AdapterItem> items;
        return (adapter.*call)("p", items);
    };
}

template <class Call>
std::function<Answer(Adapter &)> Named(Call call)
{
    return [call](Adapter &adapter) { return (adapter.*call)("p"); };
}

template <class Handle, class Call>
std::function<Answer(Adapter &)> Handled(Call call)
{
    return [call](Adapter &adapter) { return (adapter.*call)(static_cast<Handle>(5)); };
}

std::vector<AdapterCall> Inventory()
{
    return {
        {.name = "GetLibraryVersion",
         .request = "66 7F",
         .yes = "00000003 312E32",
         .no = "",
         .make =
             [](Adapter &adapter) {
                 std::string version;
                 return adapter.GetLibraryVersion(version);
             },
         .logs = false},
        {.name = "CreateCredentials",
         .request = "66 03 00000001 75 00000002 7077",
         .yes = status_yes,
         .no = status_no,
         .make = [](Adapter &adapter) { return adapter.CreateCredentials("u", "pw"); }},
        {.name = "CreateBackupOptions",
         .request = "66 04 00000001 00000000 00000001 00000000 00000001 00000002 6100",
         .yes = "00000007",
         .no = text_alone,
         .make =
             [](Adapter &adapter) {
                 BackupOptions options{};
                 return adapter.CreateBackupOptions({true, false, true, false, true}, "a\0"s, options);
             },
         .has_sentinel = true},
        {.name = "OpenListing",
         .request = "66 05 00000001 70 01020304",
         .yes = long_listing,
         .no = status_no,
         .make =
             [](Adapter &adapter) {
                 std::vector<AdapterItem> items;
                 return adapter.OpenListing("p", 0x01020304, items);
             }},
        {.name = "ListDataStores",
         .request = "66 0D 00000001 70 00000001 71",
         .yes = short_listing,
         .no = status_no,
         .make =
             [](Adapter &adapter) {
                 std::vector<AdapterItem> items;
                 return adapter.ListDataStores("p", "q", items);
             }},
        {.name = "ListFolders",
         .request = "66 26 00000001 70",
         .yes = long_listing,
         .no = status_no,
         .make = Listed(&Adapter::ListFolders)},
        {.name = "ListHosts",
         .request = "66 25 00000001 70",
         .yes = short_listing,
         .no = status_no,
         .make = Listed(&Adapter::ListHosts)},
        {.name = "ListDatacenters",
         .request = "66 24 00000001 70",
         .yes = short_listing,
         .no = status_no,
         .make = Listed(&Adapter::ListDatacenters)},
        {.name = "ListMachines",
         .request = "66 27 00000001 70",
         .yes = short_listing,
         .no = status_no,
         .make = Listed(&Adapter::ListMachines)},
    };
}

std::vector<AdapterCall> Backup()
{
    return {
        {.name = "InitVixDiskLib",
         .request = "66 17 00000001 63 00000001 6C",
         .yes = status_yes,
         .no = status_no,
         .make = [](Adapter &adapter) { return adapter.InitVixDiskLib("c", "l"); },
         .logs = false},
        {.name = "ExitVixDiskLib",
         .request = "66 18",
         .yes = "",
         .no = "",
         .make = [](Adapter &adapter) { return adapter.ExitVixDiskLib(); }},
        {.name = "SnapshotVM",
         .request = "66 31 00000001 70 00000001 6E 00000001 64 00000001 00000000 00000001",
         .yes = status_yes + "01020304",
         .no = status_no + "01020304",
         .make =
             [](Adapter &adapter) {
                 std::uint32_t timestamp = 0;
                 return adapter.SnapshotVM("p", "n", "d", true, false, true, timestamp);
             }},
        {.name = "StartBackupSession",
         .request = "66 06 00000001 70 FFFFFFFF",
         .yes = "00000007",
         .no = status_no,
         .make =
             [](Adapter &adapter) {
                 BackupSession session{};
                 return adapter.StartBackupSession("p", AclInfo::None, session);
             }},
        {.name = "EndBackupSession",
         .request = "66 07 00000005",
         .yes = status_yes,
         .no = status_no,
         .make = Handled<BackupSession>(&Adapter::EndBackupSession)},
        {.name = "GetDiskChangeIDS",
         .request = "66 2C 00000001 70",
         .yes = status_yes + long_listing + "00000007",
         .no = status_no,
         .make =
             [](Adapter &adapter) {
                 std::vector<AdapterItem> items;
                 BackupSession session{};
                 return adapter.GetDiskChangeIDS("p", items, session);
             }},
        {.name = "GetDiskChangedSectorNum",
         .request = "66 2D 00000005 80000020 00000001 74",
         .yes = status_yes + "FFFFFFFB",
         .no = status_no,
         .make =
             [](Adapter &adapter) {
                 std::int32_t number = 0;
                 return adapter.GetDiskChangedSectorNum(BackupSession{5}, 0x80000020, "t", number);
             }},
    };
}

std::vector<AdapterCall> Restore()
{
    return {
        {.name = "PrepareVMRestore",
         .request = "66 0F 00000001 70 80000001 00000003 6E0064",
         .yes = "00000007",
         .no = text_alone,
         .make =
             [](Adapter &adapter) {
                 RestoreSession session{};
                 return adapter.PrepareVMRestore("p", 0x80000001, "n\0d"s, session);
             },
         .has_sentinel = true},
        {.name = "PrepareVMRestoreIncremental",
         .request = "66 20 00000001 70 80000001 00000003 6E0064",
         .yes = "00000007",
         .no = text_alone,
         .make =
             [](Adapter &adapter) {
                 RestoreSession session{};
                 return adapter.PrepareVMRestoreIncremental("p", 0x80000001, "n\0d"s, session);
             },
         .has_sentinel = true},
        {.name = "SetOverrideValue",
         .request = "66 10 00000005 00000001 6B 00000001 76",
         .yes = "00000005",
         .no = text_alone,
         .make = [](Adapter &adapter) { return adapter.SetOverrideValue(RestoreSession{5}, "k", "v"); },
         .has_sentinel = true},
        {.name = "AddFolder",
         .request = "66 1A 00000002 00000002 7071",
         .yes = status_yes,
         .no = status_no,
         .make = [](Adapter &adapter) { return adapter.AddFolder("pq"); }},
        {.name = "OpenRestoreFile",
         .request = "66 13 00000005 00000001 70",
         .yes = "00000007",
         .no = text_alone,
         .make =
             [](Adapter &adapter) {
                 RestoreFile file{};
                 return adapter.OpenRestoreFile(RestoreSession{5}, "p", file);
             },
         .has_sentinel = true},
        {.name = "OpenRestoreFileIncremental",
         .request = "66 28 00000005 00000001 70 00000006",
         .yes = "00000007",
         .no = text_alone,
         .make =
             [](Adapter &adapter) {
                 RestoreFile file{};
                 return adapter.OpenRestoreFileIncremental(RestoreSession{5}, "p", 6, file);
             },
         .has_sentinel = true},
        {.name = "WriteRestoreFile",
         .request = "66 15 00000005 00000004 44415441",
         .yes = status_yes,
         .no = status_no,
         .make = [](Adapter &adapter) { return adapter.WriteRestoreFile(RestoreFile{5}, data); }},
        {.name = "WriteRestoreFileIncremental",
         .request = "66 29 00000005 0102030405060708 00000004 44415441",
         .yes = status_yes,
         .no = status_no,
         .make =
             [](Adapter &adapter) {
                 return adapter.WriteRestoreFileIncremental(RestoreFile{5}, 0x0102030405060708, data);
             }},
        {.name = "CloseRestoreFile",
         .request = "66 16 00000005",
         .yes = status_yes,
         .no = status_no,
         .make = Handled<RestoreFile>(&Adapter::CloseRestoreFile)},
        {.name = "CloseRestoreFileIncremental",
         .request = "66 2A 00000005",
         .yes = status_yes,
         .no = status_no,
         .make = Handled<RestoreFile>(&Adapter::CloseRestoreFileIncremental)},
        {.name = "EndVMRestore",
         .request = "66 11 00000005 00000001",
         .yes = status_yes,
         .no = status_no,
         .make = [](Adapter &adapter) { return adapter.EndVMRestore(RestoreSession{5}, true); }},
        {.name = "EndVMRestoreIncremental",
         .request = "66 21 00000005 00000000",
         .yes = status_yes,
         .no = status_no,
         .make = [](Adapter &adapter) { return adapter.EndVMRestoreIncremental(RestoreSession{5}, false); }},
        {.name = "WriteFileACL",
         .request = "66 14 00000005 00000004 44415441",
         .yes = status_yes,
         .no = status_no,
         .make = [](Adapter &adapter) { return adapter.WriteFileACL(RestoreFile{5}, data); }},
        {.name = "RenameMachine",
         .request = "66 2B 00000005 00000003 00000003 6E6577",
         .yes = status_yes,
         .no = status_no,
         .make = [](Adapter &adapter) { return adapter.RenameMachine(RestoreSession{5}, "new"); }},
        {.name = "PowerOnVDR",
         .request = "66 22 00000005",
         .yes = status_yes,
         .no = status_no,
         .make = Handled<RestoreSession>(&Adapter::PowerOnVDR)},
        {.name = "PowerOffVDR",
         .request = "66 23 00000005",
         .yes = status_yes,
         .no = status_no,
         .make = Handled<RestoreSession>(&Adapter::PowerOffVDR)},
        {.name = "DeleteVM",
         .request = "66 1F 00000001 70 00000005",
         .yes = status_yes,
         .no = status_no,
         .make = [](Adapter &adapter) { return adapter.DeleteVM("p", RestoreSession{5}); }},
    };
}

std::vector<AdapterCall> Machines()
{
    return {
        {.name = "GetVMConfig",
         .request = "66 35 00000001 70",
         .yes = short_listing,
         .no = status_no,
         .make = Listed(&Adapter::GetVMConfig)},
        {.name = "SetVMConfig",
         .request = "66 3D 00000005 00000003 633D31",
         .yes = status_yes,
         .no = status_no,
         .make = [](Adapter &adapter) { return adapter.SetVMConfig(RestoreSession{5}, "c=1"); }},
        {.name = "GetSnapshotConfig",
         .request = "66 36 00000001 70 01020304",
         .yes = short_listing,
         .no = status_no,
         .make =
             [](Adapter &adapter) {
                 std::vector<AdapterItem> items;
                 return adapter.GetSnapshotConfig("p", 0x01020304, items);
             }},
        {.name = "OpenDisk",
         .request = "66 37 00000001 76 00000001 64 00000001",
         .yes = status_yes,
         .no = status_no,
         .make = [](Adapter &adapter) { return adapter.OpenDisk("v", "d", true); }},
        {.name = "CloseDisk",
         .request = "66 38",
         .yes = status_yes,
         .no = status_no,
         .make = [](Adapter &adapter) { return adapter.CloseDisk(); }},
        {.name = "ReadSectors",
         .request = "66 39 0000000000000009 0000000000000001 00000000",
         .yes = "00000200" + Repeated("AB", 512),
         .no = status_no,
         .make =
             [](Adapter &adapter) {
                 std::byte sector[512] = {};
                 Answer answer = adapter.ReadSectors(9, sector);
                 answer.okay = answer.okay && sector[0] == std::byte{0xAB} && sector[511] == std::byte{0xAB};
                 return answer;
             }},
        {.name = "WriteSectors",
         .request = "66 3A 0000000000000009 0000000000000001 00000200" + Repeated("CD", 512),
         .yes = status_yes,
         .no = status_no,
         .make =
             [](Adapter &adapter) {
                 const std::vector<std::byte> sector(512, std::byte{0xCD});
                 return adapter.WriteSectors(9, sector);
             }},
        {.name = "CreateVM",
         .request = "66 3B 0000000000000002 00000001 61 00000001 62 00000001 63"
                    "00000002 6B00 00000001 76 00000001 6C 00000000",
         .yes = status_yes,
         .no = status_no,
         .make =
             [](Adapter &adapter) {
                 return adapter.CreateVM("a", "b", "c", {{"l", ""}, {"k\0"s, "v"}});
             }},
        {.name = "PowerOnVaioVM",
         .request = "66 3E 00000001 70",
         .yes = status_yes,
         .no = status_no,
         .make = Named(&Adapter::PowerOnVaioVM)},
        {.name = "PowerOffVaioVM",
         .request = "66 3F 00000001 70",
         .yes = status_yes,
         .no = status_no,
         .make = Named(&Adapter::PowerOffVaioVM)},
        {.name = "DeleteVaioVM",
         .request = "66 40 00000001 70",
         .yes = status_yes,
         .no = status_no,
         .make = Named(&Adapter::DeleteVaioVM)},
        {.name = "CloneVM",
         .request = "66 41 00000001 70 00000001 71 00000001 72",
         .yes = status_yes,
         .no = status_no,
         .make = [](Adapter &adapter) { return adapter.CloneVM("p", "q", "r"); }},
        {.name = "AttachPolicy",
         .request = "66 42 00000001 70 00000002 7900",
         .yes = status_yes,
         .no = status_no,
         .make = [](Adapter &adapter) { return adapter.AttachPolicy("p", "y\0"s); }},
    };
}

template <class Handle, class Call>
std::function<Answer(Adapter &)> Numbered(Call call)
{
    return [call](Adapter &adapter) {
        std::uint32_t number = 0;
        return (adapter.*call)(static_cast<Handle>(5), number);
    };
}

template <class Found, class Handle, class Call>
std::function<Answer(Adapter &)> Found5(Call call)
{
    return [call](Adapter &adapter) {
        Found found{};
        Answer answer = (adapter.*call)(static_cast<Handle>(5), "p", found);
        answer.okay = answer.okay && found == Found{7};
        return answer;
    };
}

} // namespace

const std::vector<AdapterCall> &AdapterCalls()
{
    static const std::vector<AdapterCall> calls = [] {
        std::vector<AdapterCall> all;
        for (const auto &part : {Inventory(), Backup(), Restore(), Machines()})
            all.insert(all.end(), part.begin(), part.end());
        return all;
    }();
    return calls;
}

const std::vector<SectionCall> &SectionCalls()
{
    static const std::vector<SectionCall> calls = {
        {"GetBackupSessionFiles", "66 08", "00 00 00 05 70 00", "00000007 00", "FFFFFFFF 62616400",
         Found5<Listing, BackupSession>(&Adapter::GetBackupSessionFiles)},
        {"OpenBackupFile", "66 09", "00 00 00 05 70 00", "00000007 00000001 00", "FFFFFFFF 00000000 62616400",
         [](Adapter &adapter) {
             BackupFile file{};
             std::uint32_t number = 0;
             Answer answer = adapter.OpenBackupFile(BackupSession{5}, "p", file, number);
             answer.okay = answer.okay && file == BackupFile{7} && number == 1;
             return answer;
         }},
        {"ReadFileACL", "66 0A", "00 00 00 05 00 00 00 03", "00000003 00000000 4F4B21 00000003 00",
         "00000003 00000000 4F4B21 FFFFFFFF 62616400",
         [](Adapter &adapter) {
             std::byte room[3] = {};
             std::int32_t number = 0;
             Answer answer = adapter.ReadFileACL(BackupFile{5}, room, number);
             answer.okay = answer.okay && room[0] == std::byte{'O'} && room[2] == std::byte{'!'} && number == 3;
             return answer;
         }},
        {"ReadBackupFile", "66 0B", "00 00 00 05 00 00 00 03", "00000003 00000000 4F4B21 00000001 0000000000000002 00",
         "00000003 00000000 4F4B21 FFFFFFFF FFFFFFFFFFFFFFFF 62616400",
         [](Adapter &adapter) {
             std::byte room[3] = {};
             std::int32_t number = 0;
             std::uint64_t count = 0;
             Answer answer = adapter.ReadBackupFile(BackupFile{5}, room, number, count);
             answer.okay = answer.okay && room[1] == std::byte{'K'} && number == 1 && count == 2;
             return answer;
         }},
        {"CloseBackupFile", "66 0C", "00 00 00 05", "00", "62616400", Handled<BackupFile>(&Adapter::CloseBackupFile)},
        {"ListResourcePools", "66 0E", "70 00", "00000007 00", "FFFFFFFF 62616400",
         [](Adapter &adapter) {
             Listing listing{};
             return adapter.ListResourcePools("p", listing);
         }},
        {"CreateACLInfo", "66 12", "00 00 00 04 .. .. .. .. 44 41 54 41 6B 00 73 00", "00000007 00",
         "FFFFFFFF 62616400",
         [](Adapter &adapter) {
             AclInfo acl{};
             return adapter.CreateACLInfo(data, "k", "s", acl);
         }},
        {"GetACLInfo", "66 19", "00 00 00 05", "00000007 00", "",
         [](Adapter &adapter) {
             Listing listing{};
             return adapter.GetACLInfo(AclInfo{5}, listing);
         }},
        {"CreateListingCache", "66 1B", "70 00", "0001 00", "0000 62616400",
         [](Adapter &adapter) {
             std::uint16_t flag = 0;
             return adapter.CreateListingCache("p", flag);
         }},
        {"ReOpenBackupFile", "66 1C", "00 00 00 05 70 00", "00000007 00", "FFFFFFFF 62616400",
         Found5<BackupFile, BackupSession>(&Adapter::ReOpenBackupFile)},
        {"GetReadBufferUse", "66 1D", "00 00 00 05", "00000063", "", Numbered<BackupFile>(&Adapter::GetReadBufferUse)},
        {"getIndexBlocks", "66 1E", "00 00 00 05", "00000063", "", Numbered<BackupFile>(&Adapter::GetIndexBlocks)},
        {"ListConfigItems", "66 2E", "00 00 00 05", "00000007 00", "FFFFFFFF 62616400",
         [](Adapter &adapter) {
             Listing listing{};
             return adapter.ListConfigItems(RestoreSession{5}, listing);
         }},
        {"OpenConfigRead", "66 2F", "00 00 00 05 70 00", "00000007 00", "FFFFFFFF 62616400",
         Found5<RestoreFile, RestoreSession>(&Adapter::OpenConfigRead)},
        {"ReconfigureMachine", "66 30", "00 00 00 05 01", "00", "62616400",
         [](Adapter &adapter) { return adapter.ReconfigureMachine(RestoreSession{5}, true); }},
    };
    return calls;
}

} // namespace kessil::parent
