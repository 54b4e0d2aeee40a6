#pragma once

/// What kessil calls in an adapter: a library that does the work against virtual machine hosts. Its author includes
/// this header, defines the functions below that parents will want, and builds a shared library whose file name has
/// "tarnlink_windows_x64.dll" in it, in any case and with anything around it. That name is how kessil knows an adapter.
///
/// How the two share a process:
///
/// - The functions are C functions by name and take their arguments by position; some take and fill C++ objects. The
///   adapter therefore has to be built with the compiler, the C++ standard library and the C run-time library of the
///   kessil that loads it. Strings and lists that one side allocated are freed by the other: both use one allocator.
///   An adapter may link the C++ library statically or not, and may throw within itself; an exception that leaves a
///   function ends the process.
/// - Objects are the adapter's own. kessil keeps pointers to them, hands them back, and never looks inside, save for
///   lists. Any of them may be null: a parent can name a handle that doesn't exist, or call out of order. So may data
///   of no bytes.
/// - kessil makes one call at a time, all on one thread. A function may use threads of its own. Nothing is called when
///   the process ends, but the library is unloaded.
/// - Text is 8-bit and zero-terminated, in the encoding that the parent and the adapter agree on; only the log lines
///   are taken to be in the thread's ANSI code page (UTF-8 on Linux). kessil copies what it is given before it makes
///   another call.
/// - A function that returns bool returns true for success. A function that takes `error` finds a null pointer there
///   and, when it fails, may point it at a record that GetErrorMessage and FreeErrorInfo understand. Out-values start
///   as 0 or null, unless said otherwise. After a failure numbers are still read, and objects are dropped, save those
///   that are stored behind the address of kessil's own pointer.
///
/// A parent that calls a function that the library doesn't export gets an error; all else works.

#include <cstdint>
#include <list>
#include <map>
#include <string>

#ifdef _WIN32
#define KESSIL_ADAPTER_EXPORT __declspec(dllexport)
#else
#define KESSIL_ADAPTER_EXPORT __attribute__((visibility("default")))
#endif

/// One item of a listing. Only the adapter and the parent know what the numbers mean; they reach the parent unchanged.
struct tag_item_data
{
    std::string item_name;
    std::int32_t item_number = 0;
    std::uint64_t item_value = 0;
    std::int32_t item_extra = 0;
};

/// A listing. The adapter makes it with `new`. Either kessil deletes it, once it has sent it whole, or the parent
/// walks it with NextItem and gives it back with FreeListing. A call that fails leaves null there: by command, and from
/// GetDiskChangeIDS, kessil would delete what it left; by any other signature it would never be deleted.
using AdapterListing = std::list<tag_item_data>;

/// The adapter's record of a failure. Only the adapter knows its content.
struct VMLib_ErrorInfo;

/// Takes a line of the adapter's log for the parent, with a level that means what adapter and parent agree on. Copies
/// the text. May be called on any thread, at any time from SetLoggingCallBack on; never fails, never calls back.
using AdapterLoggingCallBack = void (*)(const char *text, unsigned char level);

extern "C" {

// What kessil itself calls. It looks these four up when it loads the library and does without one that is missing: the
// parent then gets no log lines, or no error text but the statement that there is none.

/// The text of a failure, valid until the next call. The record may be null: kessil calls this after some successes as
/// well, and after failures that left no record.
KESSIL_ADAPTER_EXPORT const char *GetErrorMessage(VMLib_ErrorInfo *error);

/// Frees the record, which may be null, right after its text was copied.
KESSIL_ADAPTER_EXPORT void FreeErrorInfo(VMLib_ErrorInfo **error);

/// Called at each load of the library.
KESSIL_ADAPTER_EXPORT void SetLoggingCallBack(AdapterLoggingCallBack callback);

/// Frees the credentials. Called for the parent, and before CreateCredentials makes others by command 3.
KESSIL_ADAPTER_EXPORT void FreeCredentials(void **credentials);

// Credentials and inventory. The listing cache is one for the process: the adapter may set it wherever it gets its
// address.

/// The version. Null is allowed when it is called by signature; by command it ends the process.
KESSIL_ADAPTER_EXPORT const char *GetLibraryVersion();
KESSIL_ADAPTER_EXPORT const char *VADPVersion(const char *first, void *credentials, VMLib_ErrorInfo **error);

/// `credentials` is the address of kessil's own pointer, which may hold older ones.
KESSIL_ADAPTER_EXPORT bool CreateCredentials(const char *first, const char *second, void **credentials,
                                             VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool CreateBackupOptions(bool first, bool second, bool third, bool fourth, bool fifth,
                                               std::string sixth, void **options, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT void FreeBackupOptions(void **options);

KESSIL_ADAPTER_EXPORT bool OpenListing(const char *path, void *credentials, void **cache, AdapterListing **listing,
                                       VMLib_ErrorInfo **error, std::uint32_t listing_opts);

/// The next item of the listing, with the name valid until the next call. `name` starts as an empty text; a null one
/// ends the process.
KESSIL_ADAPTER_EXPORT bool NextItem(AdapterListing *listing, const char **name, std::int32_t *number,
                                    std::uint64_t *value, std::int32_t *extra, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT void FreeListing(AdapterListing **listing);

KESSIL_ADAPTER_EXPORT bool ListDataStores(const char *first, void *credentials, void **cache, AdapterListing **listing,
                                          VMLib_ErrorInfo **error, const char *second, bool flag);
KESSIL_ADAPTER_EXPORT bool ListFolders(const char *path, void *credentials, AdapterListing **listing,
                                       VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool ListHosts(const char *path, void *credentials, AdapterListing **listing,
                                     VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool ListMachineProperties(const char *path, void *credentials, AdapterListing **listing,
                                                 VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool ListDatacenters(const char *path, void *credentials, AdapterListing **listing,
                                           VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool ListMachines(const char *path, void *credentials, AdapterListing **listing,
                                        VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool ListResourcePools(const char *path, void *credentials, void **cache,
                                             AdapterListing **listing, VMLib_ErrorInfo **error);

/// The reader is kept, and closed, as a restore file.
KESSIL_ADAPTER_EXPORT bool OpenConfigRead(void *session, const char *path, void **reader, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool ListConfigItems(void *session, AdapterListing **listing, VMLib_ErrorInfo **error);

/// `flag` is one byte, and reaches the parent after a failure too.
KESSIL_ADAPTER_EXPORT bool CreateListingCache(const char *path, void *credentials, bool *flag, void **cache,
                                              VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT void FreeListingCache(void **cache);

// Backup. Calls that end an object get the address of a copy of kessil's pointer.

KESSIL_ADAPTER_EXPORT bool InitVixDiskLib(const char *config, const char *lib, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT void ExitVixDiskLib();

/// `timestamp` reaches the parent after a failure too.
KESSIL_ADAPTER_EXPORT bool SnapshotVM(const char *path, const char *name, const char *description,
                                      std::uint32_t *timestamp, void *credentials, void **cache, bool isCBT,
                                      bool isMemory, bool isQuiesce, VMLib_ErrorInfo **error);

KESSIL_ADAPTER_EXPORT bool StartBackupSession(const char *path, void *credentials, void **session, void *options,
                                              void *aclinfo, VMLib_ErrorInfo **error);

/// By command 7 kessil keeps its own pointer: the ended session may come again.
KESSIL_ADAPTER_EXPORT bool EndBackupSession(void **session, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool GetBackupSessionFiles(void *session, const char *path, AdapterListing **listing,
                                                 VMLib_ErrorInfo **error);

/// Returns 0 for a failure; any other number reaches the parent.
KESSIL_ADAPTER_EXPORT std::uint32_t OpenBackupFile(void *session, const char *path, void **file,
                                                   VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool ReOpenBackupFile(void *session, const char *path, void **file, VMLib_ErrorInfo **error);

/// Reads of bulk data straight into the memory that the parent sees. They return a negative number for a failure, and
/// the number reaches the parent. `count` starts with all bits set. The parent makes the blocks of ReadBlock and
/// ReadBlockSignature as large as the adapter wants them: it gets no length.
KESSIL_ADAPTER_EXPORT std::int32_t ReadBackupFile(void *file, void *data, std::uint32_t length, std::uint64_t *count,
                                                  VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT std::int32_t ReadFileACL(void *file, void *data, std::uint32_t length, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT std::int32_t ReadBlock(void *file, void *data, std::uint64_t block, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT std::int32_t ReadBlockSignature(void *file, void *data, std::uint64_t block, std::uint32_t kind,
                                                      VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool CloseBackupFile(void **file, VMLib_ErrorInfo **error);

/// Numbers that can't fail.
KESSIL_ADAPTER_EXPORT std::uint32_t GetReadBufferUse(void *file);
KESSIL_ADAPTER_EXPORT std::uint32_t getIndexBlocks(void *file);

KESSIL_ADAPTER_EXPORT bool GetDiskChangeIDS(const char *path, void *credentials, void **session,
                                            AdapterListing **listing, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool GetDiskChangedSectorNum(void **session, std::uint32_t second, std::uint32_t *number,
                                                   const char *third, VMLib_ErrorInfo **error);

// Restore. An object that a failing call leaves is not kept. Where a call gets the address of a session or a file that
// it didn't make, that is a copy of kessil's pointer. After EndVMRestoreIncremental and CloseRestoreFileIncremental by
// command kessil still has its own, and a parent that names the index again hands the adapter what it has ended.

KESSIL_ADAPTER_EXPORT bool PrepareVMRestore(const char *path, void *credentials, std::uint64_t opt_flags,
                                            std::string transport_mode, void **session, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool PrepareVMRestoreIncremental(const char *path, void *credentials, std::uint64_t opt_flags,
                                                       std::string transport_mode, void **session,
                                                       VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool SetOverrideValue(void *session, const char *key, const char *value, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool AddFolder(const char *path, void *credentials, void **cache, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool OpenRestoreFile(void *session, const char *path, void **file, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool OpenRestoreFileIncremental(void *session, const char *path, std::uint32_t third, void **file,
                                                      VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool WriteRestoreFile(void *file, const void *data, std::uint32_t length,
                                            VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool WriteRestoreFileIncremental(void *file, const void *data, std::uint32_t length,
                                                       std::uint64_t offset, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool CloseRestoreFile(void **file, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool CloseRestoreFileIncremental(void **file, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool EndVMRestore(void **session, bool flag, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool EndVMRestoreIncremental(void **session, bool flag, VMLib_ErrorInfo **error);

/// `aclinfo` holds the object that was made under the same key before, if there is one, or what has taken its index
/// since GetACLInfo ended it. The length comes first here.
KESSIL_ADAPTER_EXPORT bool CreateACLInfo(std::uint32_t length, const void *data, const char *key, const char *second,
                                         void **aclinfo, VMLib_ErrorInfo **error);

/// Ends the object. The result and an error are not looked at.
KESSIL_ADAPTER_EXPORT bool GetACLInfo(void *aclinfo, AdapterListing **listing, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool WriteFileACL(void *file, const void *data, std::uint32_t length, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool RenameMachine(void **session, const char *name, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool ReconfigureMachine(void **session, bool flag, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool PowerOnVDR(void **session, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool PowerOffVDR(void **session, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool DeleteVM(void *session, void *credentials, const char *path, VMLib_ErrorInfo **error);

// Machines and disks. One disk is open at a time; `disk` is the address of kessil's own pointer where it is an address.
// Sectors have 512 bytes.

KESSIL_ADAPTER_EXPORT bool GetVMConfig(const char *path, void *credentials, AdapterListing **listing,
                                       VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool SetVMConfig(void *session, const char *config, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool GetSnapshotConfig(const char *path, std::uint32_t timestamp, void *credentials,
                                             AdapterListing **listing, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool OpenDisk(const char *vmPath, const char *diskPath, bool flag, void *credentials, void **disk,
                                    VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool CloseDisk(void **disk, VMLib_ErrorInfo **error);

/// `data` has room for, or has, `count` sectors, which is for the parent to see to. A negative start or count
/// comes as the large number with the same bits.
KESSIL_ADAPTER_EXPORT bool ReadSectors(void *disk, std::uint64_t start, std::uint64_t count, void *data,
                                       VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool WriteSectors(void *disk, std::uint64_t start, std::uint64_t count, const void *data,
                                        VMLib_ErrorInfo **error);

/// `pairs` lives as long as the call.
KESSIL_ADAPTER_EXPORT bool CreateVM(const char *first, const char *second, const char *third, void *credentials,
                                    std::map<std::string, std::string> *pairs, VMLib_ErrorInfo **error);

/// Never called. A parent that names it gets no answer.
KESSIL_ADAPTER_EXPORT void ReconfigVM();

KESSIL_ADAPTER_EXPORT bool PowerOnVaioVM(const char *path, void *credentials, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool PowerOffVaioVM(const char *path, void *credentials, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool DeleteVaioVM(const char *path, void *credentials, VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool CloneVM(const char *sourcePath, const char *second, const char *third, void *credentials,
                                   VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool AttachPolicy(const char *path, void *credentials, std::string policyId,
                                        VMLib_ErrorInfo **error);
KESSIL_ADAPTER_EXPORT bool GetHostCpus(const char *path, void *credentials, std::uint32_t *number,
                                       VMLib_ErrorInfo **error);

} // extern "C"
