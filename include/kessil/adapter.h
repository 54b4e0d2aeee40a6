#pragma once

/// The parent's side of an adapter, the library that works against virtual machine hosts: one typed call for each
/// command that a helper takes for it.
///
/// A complete parent, which lists the machines of a host:
///
///     #include <kessil/adapter.h>
///
///     #include <cinttypes>
///     #include <cstdio>
///     #include <filesystem>
///
///     int main(int argc, char **argv)
///     {
///         if (argc != 4) {
///             std::fprintf(stderr, "usage: list_machines KESSIL ADAPTER PATH\n");
///             return 2;
///         }
///         kessil::parent::Options options;
///         options.program = argv[1];
///         kessil::parent::Helper helper(options);
///         kessil::parent::AdapterOptions adapter_options;
///         adapter_options.on_log = [](std::uint8_t level, std::string_view text) {
///             std::printf("level %d: %.*s\n", level, static_cast<int>(text.size()), text.data());
///         };
///         kessil::parent::Adapter adapter(helper, adapter_options);
///
///         kessil::parent::Result result = helper.Start();
///         if (result)
///             result = adapter.Load(std::filesystem::absolute(argv[2]).u16string());
///         if (!result) {
///             std::fprintf(stderr, "%s\n", result.message.c_str());
///             return 1;
///         }
///         std::vector<kessil::parent::AdapterItem> machines;
///         const kessil::parent::Answer answer = adapter.ListMachines(argv[3], machines);
///         if (!answer) {
///             std::fprintf(stderr, "%s\n", answer.message.c_str());
///             return 1;
///         }
///         for (const kessil::parent::AdapterItem &machine : machines)
///             std::printf("%s, %" PRIu64 "\n", machine.name.c_str(), machine.value);
///         return helper.Stop() ? 0 : 1;
///     }
///
/// The order is: construct the Helper and the Adapter, Helper::Start, Load, then calls. What kessil/parent.h says about
/// requests holds here too: one at a time, a helper that is over stays over, nothing is repeated automatically.
/// Helper::Cancel ends an adapter's call as well. A call without bulk data is sent in one write.
///
/// The meaning of the calls is defined by the adapter. Arguments named `first`, `second` and so on have no meaning in
/// the protocol. The helper keeps one set of credentials, one listing cache and one open disk, which the calls share.
///
/// Text is 8-bit and is passed unchanged in both directions, in the encoding that the adapter uses. The protocol
/// carries at most 1024 bytes of it in one argument (except in the 15 calls marked "by section"), and the adapter reads
/// up to the first zero. A text that is longer or holds a zero ends the call as NotSent, except where zeros are
/// allowed.
///
/// Not here: command 67, ReadBlockSignature, which a helper always refuses (Helper::Call can make that call), and
/// command 60, ReconfigVM, which a helper never answers.

#include <kessil/parent.h>

#include <array>
#include <map>
#include <vector>

namespace kessil::parent {

/// How one call of the adapter ended. `if (answer)` checks whether the adapter said yes.
struct Answer
{
    /// How the request ended. Answered means that the adapter has answered, whether yes or no.
    ///
    /// Refused: the adapter has no such function. A helper that refuses a call takes the arguments that follow it in
    /// the pipe for requests, and ends. So it is over then, except after calls by section and calls without arguments;
    /// Helper::Running reports which.
    Result result{};

    /// Answered, and the adapter said yes.
    bool okay = false;

    /// When the adapter said no: its own text, 8-bit, unchanged. May be empty.
    std::string error{};

    /// One clear text for a person, UTF-8, no line end; empty when the adapter said yes. It has `result.message`, or
    /// the call and the adapter's text (bytes of it that aren't UTF-8 are shown as question marks).
    std::string message{};

    explicit operator bool() const { return okay; }
};

/// One item of a listing. The meaning of the numbers is defined by the adapter.
struct AdapterItem
{
    std::string name{};
    std::int32_t number = 0;
    std::uint64_t value = 0;
    std::optional<std::int32_t> extra{}; ///< sent only by OpenListing, ListFolders, GetDiskChangeIDS and NextItem

    bool operator==(const AdapterItem &) const = default;
};

/// Handles are indices into tables of the helper. None stands for nothing: the adapter then gets a null object, which
/// some calls allow.
enum class BackupOptions : std::int32_t
{
    None = -1
};
enum class BackupSession : std::int32_t
{
    None = -1
};
enum class BackupFile : std::int32_t
{
    None = -1
};
enum class RestoreSession : std::int32_t
{
    None = -1
};
enum class RestoreFile : std::int32_t
{
    None = -1
};
enum class AclInfo : std::int32_t
{
    None = -1
};
enum class Listing : std::int32_t
{
    None = -1
};

struct AdapterOptions
{
    /// For each call of the adapter. Load has Options::request_limit.
    TimeLimit limit{};

    /// A line of the adapter's log, and its level, whose meaning is the adapter's. Called on the thread that makes the
    /// call, while it waits; may call Helper::Cancel, nothing else of the Helper or the Adapter. The text is 8-bit as
    /// the adapter wrote it; from a call by section it is UTF-8, since the helper has converted it.
    std::function<void(std::uint8_t level, std::string_view text)> on_log{};
};

constexpr std::size_t sector_size = 512;

/// The adapter that one helper hosts. For one thread at a time, and only one of the Adapter's and the Helper's requests
/// at a time. The Helper must outlive it, and needn't be started yet.
///
/// Calls marked "by section" pass their arguments as Helper::Call does: they end an argument list that was begun, and
/// the results of the call before are gone. Where such a call returns no handle or number, a no with an empty text is
/// taken for a yes.
///
/// Values returned through references are valid only when the answer is true, unless stated otherwise.
class Adapter
{
public:
    explicit Adapter(Helper &helper, AdapterOptions options = {});
    ~Adapter();
    Adapter(const Adapter &) = delete;
    Adapter &operator=(const Adapter &) = delete;

    /// Loads the adapter by name or path. NotSent when the name has a unit above U+00FF, which the protocol can't
    /// carry. Refused when the system could not load it; the message has the end of the helper's log, which has the
    /// reason.
    ///
    /// The helper knows an adapter by its name, which must have "tarnlink_windows_x64.dll" in it; another library is
    /// called all the same, without log lines and error texts. When several names are loaded, the calls go to the one
    /// that sorts first. A call before the first successful Load is NotSent.
    Result Load(std::u16string_view library);

    // Credentials and inventory

    Answer GetLibraryVersion(std::string &version);

    /// Yes means only that the arguments arrived: the helper doesn't report whether the adapter accepted them. No copy
    /// of the texts is kept on this side; they cross the pipe in clear.
    Answer CreateCredentials(std::string_view first, std::string_view second);

    /// `sixth` may hold zeros.
    Answer CreateBackupOptions(const std::array<bool, 5> &flags, std::string_view sixth, BackupOptions &options);

    Answer OpenListing(std::string_view path, std::uint32_t listing_opts, std::vector<AdapterItem> &items);

    /// The next item of a listing by handle, as the calls below give it. How the end shows (a no, an empty name) is
    /// defined by the adapter; the item is set also when the answer is no. This and FreeListing have no commands:
    /// they are made as Helper::Call makes them. The first of them loads the adapter once more, for such calls.
    Answer NextItem(Listing listing, AdapterItem &item);
    Answer FreeListing(Listing listing);

    Answer ListDataStores(std::string_view first, std::string_view second, std::vector<AdapterItem> &items);
    Answer ListFolders(std::string_view path, std::vector<AdapterItem> &items);
    Answer ListHosts(std::string_view path, std::vector<AdapterItem> &items);
    Answer ListDatacenters(std::string_view path, std::vector<AdapterItem> &items);
    Answer ListMachines(std::string_view path, std::vector<AdapterItem> &items);

    /// By section.
    Answer ListResourcePools(std::string_view path, Listing &listing);

    /// By section. The reader is closed by CloseRestoreFile.
    Answer OpenConfigRead(RestoreSession session, std::string_view path, RestoreFile &reader);

    /// By section.
    Answer ListConfigItems(RestoreSession session, Listing &listing);

    /// By section. `flag` is set also with a no.
    Answer CreateListingCache(std::string_view path, std::uint16_t &flag);

    // Backup

    Answer InitVixDiskLib(std::string_view config, std::string_view lib);

    /// Always a yes.
    Answer ExitVixDiskLib();

    /// `timestamp` is set also with a no.
    Answer SnapshotVM(std::string_view path, std::string_view name, std::string_view description, bool is_cbt,
                      bool is_memory, bool is_quiesce, std::uint32_t &timestamp);

    /// The session gets the options that lie at index 0 of the helper's table, if any: no handle of options can be
    /// sent.
    Answer StartBackupSession(std::string_view path, AclInfo acl, BackupSession &session);
    Answer EndBackupSession(BackupSession session);

    /// By section.
    Answer GetBackupSessionFiles(BackupSession session, std::string_view path, Listing &listing);

    /// By section. `number` is the adapter's own answer, 0 for a no.
    Answer OpenBackupFile(BackupSession session, std::string_view path, BackupFile &file, std::uint32_t &number);

    /// By section.
    Answer ReOpenBackupFile(BackupSession session, std::string_view path, BackupFile &file);

    /// By section. `number` is the adapter's own answer, negative for a no. All of `data` is written, whatever part of
    /// it the adapter filled. `number` and `count` are set also with a no.
    Answer ReadBackupFile(BackupFile file, std::span<std::byte> data, std::int32_t &number, std::uint64_t &count);

    /// As ReadBackupFile.
    Answer ReadFileACL(BackupFile file, std::span<std::byte> data, std::int32_t &number);

    /// By section.
    Answer CloseBackupFile(BackupFile file);

    /// By section. Always a yes.
    Answer GetReadBufferUse(BackupFile file, std::uint32_t &number);

    /// By section. Always a yes. The command's name is getIndexBlocks.
    Answer GetIndexBlocks(BackupFile file, std::uint32_t &number);

    Answer GetDiskChangeIDS(std::string_view path, std::vector<AdapterItem> &items, BackupSession &session);
    Answer GetDiskChangedSectorNum(BackupSession session, std::uint32_t second, std::string_view third,
                                   std::int32_t &number);

    // Restore
    //
    // PrepareVMRestore and its twin, OpenRestoreFile and its twin, CreateBackupOptions: the protocol can't
    // distinguish a no with an empty text from handle 0. It is taken for handle 0.

    /// `transport_mode` may hold zeros.
    Answer PrepareVMRestore(std::string_view path, std::uint32_t opt_flags, std::string_view transport_mode,
                            RestoreSession &session);
    Answer PrepareVMRestoreIncremental(std::string_view path, std::uint32_t opt_flags, std::string_view transport_mode,
                                       RestoreSession &session);

    /// For session 0 a no with an empty text can't be distinguished from a yes, and is taken for one.
    Answer SetOverrideValue(RestoreSession session, std::string_view key, std::string_view value);

    /// Yes means only that the argument arrived, as with CreateCredentials.
    Answer AddFolder(std::string_view path);

    Answer OpenRestoreFile(RestoreSession session, std::string_view path, RestoreFile &file);
    Answer OpenRestoreFileIncremental(RestoreSession session, std::string_view path, std::uint32_t third,
                                      RestoreFile &file);

    /// The data is sent without a copy. Less than 4 GiB.
    Answer WriteRestoreFile(RestoreFile file, std::span<const std::byte> data);
    Answer WriteRestoreFileIncremental(RestoreFile file, std::uint64_t offset, std::span<const std::byte> data);
    Answer CloseRestoreFile(RestoreFile file);
    Answer CloseRestoreFileIncremental(RestoreFile file);
    Answer EndVMRestore(RestoreSession session, bool flag);
    Answer EndVMRestoreIncremental(RestoreSession session, bool flag);

    /// By section. A second call with the same key gives a yes and AclInfo::None: the handle is the one that the first
    /// call gave.
    Answer CreateACLInfo(std::span<const std::byte> data, std::string_view key, std::string_view second, AclInfo &acl);

    /// By section. Ends the object. Always a yes.
    Answer GetACLInfo(AclInfo acl, Listing &listing);

    /// Yes means only that the arguments arrived, as with CreateCredentials.
    Answer WriteFileACL(RestoreFile file, std::span<const std::byte> data);

    Answer RenameMachine(RestoreSession session, std::string_view name);

    /// By section.
    Answer ReconfigureMachine(RestoreSession session, bool flag);

    Answer PowerOnVDR(RestoreSession session);
    Answer PowerOffVDR(RestoreSession session);
    Answer DeleteVM(std::string_view path, RestoreSession session);

    // Machines and disks

    Answer GetVMConfig(std::string_view path, std::vector<AdapterItem> &items);

    /// `config` may be longer than 1024 bytes.
    Answer SetVMConfig(RestoreSession session, std::string_view config);
    Answer GetSnapshotConfig(std::string_view path, std::uint32_t timestamp, std::vector<AdapterItem> &items);
    Answer OpenDisk(std::string_view vm_path, std::string_view disk_path, bool flag);
    Answer CloseDisk();

    /// Reads as many sectors as `sectors` holds, straight from the pipe into it. NotSent when its size is no multiple
    /// of sector_size, is 4 GiB or more, or `start` is 2^63 or more. A helper that answers with another number of bytes
    /// breaks the protocol.
    Answer ReadSectors(std::uint64_t start, std::span<std::byte> sectors);

    /// The data is sent without a copy. NotSent as with ReadSectors.
    Answer WriteSectors(std::uint64_t start, std::span<const std::byte> sectors);

    /// Keys and values of `pairs` may hold zeros.
    Answer CreateVM(std::string_view first, std::string_view second, std::string_view third,
                    const std::map<std::string, std::string> &pairs);
    Answer PowerOnVaioVM(std::string_view path);
    Answer PowerOffVaioVM(std::string_view path);
    Answer DeleteVaioVM(std::string_view path);
    Answer CloneVM(std::string_view source_path, std::string_view second, std::string_view third);

    /// `policy_id` may hold zeros.
    Answer AttachPolicy(std::string_view path, std::string_view policy_id);

private:
    Answer LoadForListings();
    Answer ReadFile(int command_number, const char *name, BackupFile file, std::span<std::byte> data,
                    std::int32_t &number, std::uint64_t *count);

    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace kessil::parent
