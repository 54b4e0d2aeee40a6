#include "families/vadp/command_table.h"

#include <array>

namespace kessil {
namespace {

// In the order of the numbers, which skip 50 to 52 and, but for the last, end at 67.
constexpr auto rows = std::to_array<CommandRow>({
    {3, "SIGNATURE_VADPCreateCredentials", "CreateCredentials"},
    {4, "SIGNATURE_VADPCreateBackupOptions", "CreateBackupOptions"},
    {5, "SIGNATURE_VADPOpenListing", "OpenListing"},
    {6, "SIGNATURE_VADPStartBackupSession", "StartBackupSession"},
    {7, "SIGNATURE_VADPEndBackupSession", "EndBackupSession"},
    {8, "SIGNATURE_VADPGetBackupSessionFiles", "GetBackupSessionFiles"},
    {9, "SIGNATURE_VADPOpenBackupFile", "OpenBackupFile"},
    {10, "SIGNATURE_VADPReadFileACL", "ReadFileACL"},
    {11, "SIGNATURE_VADPReadBackupFile", "ReadBackupFile"},
    {12, "SIGNATURE_VADPCloseBackupFile", "CloseBackupFile"},
    {13, "SIGNATURE_VADPListDataStores", "ListDataStores"},
    {14, "SIGNATURE_VADPListResourcePools", "ListResourcePools"},
    {15, "SIGNATURE_VADPPrepareVMRestore", "PrepareVMRestore"},
    {16, "SIGNATURE_VADPSetOverrideValue", "SetOverrideValue"},
    {17, "SIGNATURE_VADPEndVMRestore", "EndVMRestore"},
    {18, "SIGNATURE_VADPCreateACLInfo", "CreateACLInfo"},
    {19, "SIGNATURE_VADPOpenRestoreFile", "OpenRestoreFile"},
    {20, "SIGNATURE_VADPWriteFileACL", "WriteFileACL"},
    {21, "SIGNATURE_VADPWriteRestoreFile", "WriteRestoreFile"},
    {22, "SIGNATURE_VADPCloseRestoreFile", "CloseRestoreFile"},
    {23, "SIGNATURE_VADPInitVixDiskLib", "InitVixDiskLib"},
    {24, "SIGNATURE_VADPExitVixDiskLib", "ExitVixDiskLib"},
    {25, "SIGNATURE_VADPGetACLInfo", "GetACLInfo"},
    {26, "SIGNATURE_VADPAddFolder", "AddFolder"},
    {27, "SIGNATURE_VADPCreateListingCache", "CreateListingCache"},
    {28, "SIGNATURE_VADPReOpenBackupFile", "ReOpenBackupFile"},
    {29, "SIGNATURE_VADPGetReadBufferUse", "GetReadBufferUse"},
    {30, "SIGNATURE_VADPgetIndexBlocks", "getIndexBlocks"},
    {31, "SIGNATURE_VADPDeleteVM", "DeleteVM"},
    {32, "SIGNATURE_VADPPrepareVMRestoreIncremental", "PrepareVMRestoreIncremental"},
    {33, "SIGNATURE_VADPEndVMRestoreIncremental", "EndVMRestoreIncremental"},
    {34, "SIGNATURE_VADPPowerOnVDR", "PowerOnVDR"},
    {35, "SIGNATURE_VADPPowerOff", "PowerOffVDR"},
    {36, "SIGNATURE_VADPListDatacenters", "ListDatacenters"},
    {37, "SIGNATURE_VADPListHosts", "ListHosts"},
    {38, "SIGNATURE_VADPListFolders", "ListFolders"},
    {39, "SIGNATURE_VADPListMachines", "ListMachines"},
    {40, "SIGNATURE_VADPOpenRestoreFileIncremental", "OpenRestoreFileIncremental"},
    {41, "SIGNATURE_VADPWriteRestoreFileIncremental", "WriteRestoreFileIncremental"},
    {42, "SIGNATURE_VADPCloseRestoreFileIncremental", "CloseRestoreFileIncremental"},
    {43, "SIGNATURE_VADPRenameMachine", "RenameMachine"},
    {44, "SIGNATURE_VADPGetDiskChangeIDS", "GetDiskChangeIDS"},
    {45, "SIGNATURE_VADPGetDiskChangedSectorNum", "GetDiskChangedSectorNum"},
    {46, "SIGNATURE_VADPListConfigItems", "ListConfigItems"},
    {47, "SIGNATURE_VADPOpenConfigRead", "OpenConfigRead"},
    {48, "SIGNATURE_VADPReconfigureMachine", "ReconfigureMachine"},
    {49, "SIGNATURE_VADPSnapshotVM", "SnapshotVM"},
    {53, "SIGNATURE_VADPGetVMConfig", "GetVMConfig"},
    {54, "SIGNATURE_VADPGetSnapshotConfig", "GetSnapshotConfig"},
    {55, "SIGNATURE_VADPOpenDisk", "OpenDisk"},
    {56, "SIGNATURE_VADPCloseDisk", "CloseDisk"},
    {57, "SIGNATURE_VADPReadSectors", "ReadSectors"},
    {58, "SIGNATURE_VADPWriteSectors", "WriteSectors"},
    {59, "SIGNATURE_VADPCreateVM", "CreateVM"},
    {60, "SIGNATURE_VADPReconfigVM", "ReconfigVM"},
    {61, "SIGNATURE_VADPSetVMConfig", "SetVMConfig"},
    {62, "SIGNATURE_VADPPowerOnVaioVM", "PowerOnVaioVM"},
    {63, "SIGNATURE_VADPPowerOffVaioVM", "PowerOffVaioVM"},
    {64, "SIGNATURE_VADPDeleteVaioVM", "DeleteVaioVM"},
    {65, "SIGNATURE_VADPCloneVM", "CloneVM"},
    {66, "SIGNATURE_VADPAttachPolicy", "AttachPolicy"},
    {67, "SIGNATURE_VADPReadBlockSignature", "ReadBlockSignature"},
    {127, "SIGNATURE_VADPGetLibraryVersion", "GetLibraryVersion"},
});

} // namespace

std::span<const CommandRow> CommandTable()
{
    return rows;
}

} // namespace kessil
