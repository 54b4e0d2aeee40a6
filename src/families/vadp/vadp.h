#pragma once

namespace kessil {

class CIPCCommunication;

// The handlers of the virtual-machine adapter family. Each calls the adapter's function that its row names.
// docs/families/vadp.md has their arguments and results.

// Credentials and inventory: arguments and results in the section, then those with bare values on the pipe.
void Process_VADPGetLibraryVersion(CIPCCommunication &channel, void *function);
void Process_VADPVersion(CIPCCommunication &channel, void *function);
void Process_VADPCreateCredentials(CIPCCommunication &channel, void *function);
void Process_VADPFreeCredentials(CIPCCommunication &channel, void *function);
void Process_VADPCreateBackupOptions(CIPCCommunication &channel, void *function);
void Process_VADPFreeBackupOptions(CIPCCommunication &channel, void *function);
void Process_VADPOpenListing(CIPCCommunication &channel, void *function);
void Process_VADPNextItem(CIPCCommunication &channel, void *function);
void Process_VADPFreeListing(CIPCCommunication &channel, void *function);
void Process_VADPListDataStores(CIPCCommunication &channel, void *function);
void Process_VADPListFolders(CIPCCommunication &channel, void *function);
void Process_VADPListHosts(CIPCCommunication &channel, void *function);
void Process_VADPListMachineProperties(CIPCCommunication &channel, void *function);
void Process_VADPListDatacenters(CIPCCommunication &channel, void *function);
void Process_VADPListMachines(CIPCCommunication &channel, void *function);
void Process_VADPListResourcePools(CIPCCommunication &channel, void *function);
void Process_VADPOpenConfigRead(CIPCCommunication &channel, void *function);
void Process_VADPListConfigItems(CIPCCommunication &channel, void *function);
void Process_VADPCreateListingCache(CIPCCommunication &channel, void *function);
void Process_VADPFreeListingCache(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPGetLibraryVersion(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPCreateCredentials(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPCreateBackupOptions(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPOpenListing(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPListDataStores(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPListFolders(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPListHosts(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPListMachines(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPListDatacenters(CIPCCommunication &channel, void *function);

// Backup: arguments and results in the section, then those with bare values on the pipe.
void Process_VADPInitVixDiskLib(CIPCCommunication &channel, void *function);
void Process_VADPExitVixDiskLib(CIPCCommunication &channel, void *function);
void Process_VADPSnapshotVM(CIPCCommunication &channel, void *function);
void Process_VADPStartBackupSession(CIPCCommunication &channel, void *function);
void Process_VADPEndBackupSession(CIPCCommunication &channel, void *function);
void Process_VADPGetBackupSessionFiles(CIPCCommunication &channel, void *function);
void Process_VADPOpenBackupFile(CIPCCommunication &channel, void *function);
void Process_VADPReOpenBackupFile(CIPCCommunication &channel, void *function);
void Process_VADPReadBackupFile(CIPCCommunication &channel, void *function);
void Process_VADPReadFileACL(CIPCCommunication &channel, void *function);
void Process_VADPCloseBackupFile(CIPCCommunication &channel, void *function);
void Process_VADPGetReadBufferUse(CIPCCommunication &channel, void *function);
void Process_VADPgetIndexBlocks(CIPCCommunication &channel, void *function);
void Process_VADPReadBlock(CIPCCommunication &channel, void *function);
void Process_VADPReadBlockSignature(CIPCCommunication &channel, void *function);
void Process_VADPGetDiskChangeIDS(CIPCCommunication &channel, void *function);
void Process_VADPGetDiskChangedSectorNum(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPInitVixDiskLib(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPExitVixDiskLib(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPSnapshotVM(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPStartBackupSession(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPEndBackupSession(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPGetDiskChangeIDS(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPGetDiskChangedSectorNum(CIPCCommunication &channel, void *function);

// Restore: arguments and results in the section, then those with bare values on the pipe.
void Process_VADPPrepareVMRestore(CIPCCommunication &channel, void *function);
void Process_VADPPrepareVMRestoreIncremental(CIPCCommunication &channel, void *function);
void Process_VADPSetOverrideValue(CIPCCommunication &channel, void *function);
void Process_VADPAddFolder(CIPCCommunication &channel, void *function);
void Process_VADPOpenRestoreFile(CIPCCommunication &channel, void *function);
void Process_VADPOpenRestoreFileIncremental(CIPCCommunication &channel, void *function);
void Process_VADPWriteRestoreFile(CIPCCommunication &channel, void *function);
void Process_VADPWriteRestoreFileIncremental(CIPCCommunication &channel, void *function);
void Process_VADPCloseRestoreFile(CIPCCommunication &channel, void *function);
void Process_VADPCloseRestoreFileIncremental(CIPCCommunication &channel, void *function);
void Process_VADPEndVMRestore(CIPCCommunication &channel, void *function);
void Process_VADPEndVMRestoreIncremental(CIPCCommunication &channel, void *function);
void Process_VADPCreateACLInfo(CIPCCommunication &channel, void *function);
void Process_VADPGetACLInfo(CIPCCommunication &channel, void *function);
void Process_VADPWriteFileACL(CIPCCommunication &channel, void *function);
void Process_VADPRenameMachine(CIPCCommunication &channel, void *function);
void Process_VADPReconfigureMachine(CIPCCommunication &channel, void *function);
void Process_VADPPowerOn(CIPCCommunication &channel, void *function);
void Process_VADPPowerOff(CIPCCommunication &channel, void *function);
void Process_VADPDeleteVM(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPPrepareVMRestore(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPPrepareVMRestoreIncremental(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPSetOverrideValue(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPAddFolder(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPOpenRestoreFile(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPOpenRestoreFileIncremental(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPWriteRestoreFile(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPWriteRestoreFileIncremental(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPCloseRestoreFile(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPCloseRestoreFileIncremental(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPEndVMRestore(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPEndVMRestoreIncremental(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPWriteFileACL(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPRenameMachine(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPPowerOn(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPPowerOff(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPDeleteVM(CIPCCommunication &channel, void *function);

// Machines and disks: arguments and results in the section, then those with bare values on the pipe.
void Process_VADPGetVMConfig(CIPCCommunication &channel, void *function);
void Process_VADPSetVMConfig(CIPCCommunication &channel, void *function);
void Process_VADPGetSnapshotConfig(CIPCCommunication &channel, void *function);
void Process_VADPOpenDisk(CIPCCommunication &channel, void *function);
void Process_VADPCloseDisk(CIPCCommunication &channel, void *function);
void Process_VADPReadSectors(CIPCCommunication &channel, void *function);
void Process_VADPWriteSectors(CIPCCommunication &channel, void *function);
void Process_VADPCreateVM(CIPCCommunication &channel, void *function);
void Process_VADPReconfigVM(CIPCCommunication &channel, void *function);
void Process_VADPPowerOnVaioVM(CIPCCommunication &channel, void *function);
void Process_VADPPowerOffVaioVM(CIPCCommunication &channel, void *function);
void Process_VADPAttachPolicy(CIPCCommunication &channel, void *function);
void Process_VADPGetHostCpus(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPGetVMConfig(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPSetVMConfig(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPGetSnapshotConfig(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPOpenDisk(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPCloseDisk(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPReadSectors(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPWriteSectors(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPCreateVM(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPReconfigVM(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPPowerOnVaioVM(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPPowerOffVaioVM(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPDeleteVaioVM(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPCloneVM(CIPCCommunication &channel, void *function);
void ProcessAlt_VADPAttachPolicy(CIPCCommunication &channel, void *function);

} // namespace kessil
