#include "families/vadp/command_table.h"

#include "support/signatures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace kessil::test {
namespace {

struct Command
{
    std::uint32_t number;
    const char *function;
    const char *signature;
};

// The contract with the parents, letter by letter.
const std::vector<Command> commands = {
    {3, "CreateCredentials", "SIGNATURE_VADPCreateCredentials"},
    {4, "CreateBackupOptions", "SIGNATURE_VADPCreateBackupOptions"},
    {5, "OpenListing", "SIGNATURE_VADPOpenListing"},
    {6, "StartBackupSession", "SIGNATURE_VADPStartBackupSession"},
    {7, "EndBackupSession", "SIGNATURE_VADPEndBackupSession"},
    {8, "GetBackupSessionFiles", "SIGNATURE_VADPGetBackupSessionFiles"},
    {9, "OpenBackupFile", "SIGNATURE_VADPOpenBackupFile"},
    {10, "ReadFileACL", "SIGNATURE_VADPReadFileACL"},
    {11, "ReadBackupFile", "SIGNATURE_VADPReadBackupFile"},
    {12, "CloseBackupFile", "SIGNATURE_VADPCloseBackupFile"},
    {13, "ListDataStores", "SIGNATURE_VADPListDataStores"},
    {14, "ListResourcePools", "SIGNATURE_VADPListResourcePools"},
    {15, "PrepareVMRestore", "SIGNATURE_VADPPrepareVMRestore"},
    {16, "SetOverrideValue", "SIGNATURE_VADPSetOverrideValue"},
    {17, "EndVMRestore", "SIGNATURE_VADPEndVMRestore"},
    {18, "CreateACLInfo", "SIGNATURE_VADPCreateACLInfo"},
    {19, "OpenRestoreFile", "SIGNATURE_VADPOpenRestoreFile"},
    {20, "WriteFileACL", "SIGNATURE_VADPWriteFileACL"},
    {21, "WriteRestoreFile", "SIGNATURE_VADPWriteRestoreFile"},
    {22, "CloseRestoreFile", "SIGNATURE_VADPCloseRestoreFile"},
    {23, "InitVixDiskLib", "SIGNATURE_VADPInitVixDiskLib"},
    {24, "ExitVixDiskLib", "SIGNATURE_VADPExitVixDiskLib"},
    {25, "GetACLInfo", "SIGNATURE_VADPGetACLInfo"},
    {26, "AddFolder", "SIGNATURE_VADPAddFolder"},
    {27, "CreateListingCache", "SIGNATURE_VADPCreateListingCache"},
    {28, "ReOpenBackupFile", "SIGNATURE_VADPReOpenBackupFile"},
    {29, "GetReadBufferUse", "SIGNATURE_VADPGetReadBufferUse"},
    {30, "getIndexBlocks", "SIGNATURE_VADPgetIndexBlocks"},
    {31, "DeleteVM", "SIGNATURE_VADPDeleteVM"},
    {32, "PrepareVMRestoreIncremental", "SIGNATURE_VADPPrepareVMRestoreIncremental"},
    {33, "EndVMRestoreIncremental", "SIGNATURE_VADPEndVMRestoreIncremental"},
    {34, "PowerOnVDR", "SIGNATURE_VADPPowerOnVDR"},
    {35, "PowerOffVDR", "SIGNATURE_VADPPowerOff"},
    {36, "ListDatacenters", "SIGNATURE_VADPListDatacenters"},
    {37, "ListHosts", "SIGNATURE_VADPListHosts"},
    {38, "ListFolders", "SIGNATURE_VADPListFolders"},
    {39, "ListMachines", "SIGNATURE_VADPListMachines"},
    {40, "OpenRestoreFileIncremental", "SIGNATURE_VADPOpenRestoreFileIncremental"},
    {41, "WriteRestoreFileIncremental", "SIGNATURE_VADPWriteRestoreFileIncremental"},
    {42, "CloseRestoreFileIncremental", "SIGNATURE_VADPCloseRestoreFileIncremental"},
    {43, "RenameMachine", "SIGNATURE_VADPRenameMachine"},
    {44, "GetDiskChangeIDS", "SIGNATURE_VADPGetDiskChangeIDS"},
    {45, "GetDiskChangedSectorNum", "SIGNATURE_VADPGetDiskChangedSectorNum"},
    {46, "ListConfigItems", "SIGNATURE_VADPListConfigItems"},
    {47, "OpenConfigRead", "SIGNATURE_VADPOpenConfigRead"},
    {48, "ReconfigureMachine", "SIGNATURE_VADPReconfigureMachine"},
    {49, "SnapshotVM", "SIGNATURE_VADPSnapshotVM"},
    {53, "GetVMConfig", "SIGNATURE_VADPGetVMConfig"},
    {54, "GetSnapshotConfig", "SIGNATURE_VADPGetSnapshotConfig"},
    {55, "OpenDisk", "SIGNATURE_VADPOpenDisk"},
    {56, "CloseDisk", "SIGNATURE_VADPCloseDisk"},
    {57, "ReadSectors", "SIGNATURE_VADPReadSectors"},
    {58, "WriteSectors", "SIGNATURE_VADPWriteSectors"},
    {59, "CreateVM", "SIGNATURE_VADPCreateVM"},
    {60, "ReconfigVM", "SIGNATURE_VADPReconfigVM"},
    {61, "SetVMConfig", "SIGNATURE_VADPSetVMConfig"},
    {62, "PowerOnVaioVM", "SIGNATURE_VADPPowerOnVaioVM"},
    {63, "PowerOffVaioVM", "SIGNATURE_VADPPowerOffVaioVM"},
    {64, "DeleteVaioVM", "SIGNATURE_VADPDeleteVaioVM"},
    {65, "CloneVM", "SIGNATURE_VADPCloneVM"},
    {66, "AttachPolicy", "SIGNATURE_VADPAttachPolicy"},
    {67, "ReadBlockSignature", "SIGNATURE_VADPReadBlockSignature"},
    {127, "GetLibraryVersion", "SIGNATURE_VADPGetLibraryVersion"},
};

std::optional<std::string> Function(std::uint32_t command)
{
    std::string name;
    return FunctionNameOf(CommandTable(), command, name) ? std::optional(name) : std::nullopt;
}

std::optional<std::string> Signature(std::uint32_t command)
{
    std::string name;
    return SignatureNameOf(CommandTable(), command, name) ? std::optional(name) : std::nullopt;
}

TEST(CommandTable, EveryCommandHasItsFunctionAndItsSignature)
{
    ASSERT_EQ(commands.size(), 63u);
    EXPECT_EQ(CommandTable().size(), 63u);
    for (const Command &command : commands) {
        EXPECT_EQ(Function(command.number), command.function) << command.number;
        EXPECT_EQ(Signature(command.number), command.signature) << command.number;
    }
}

TEST(CommandTable, NumbersWithoutARowHaveNoName)
{
    std::vector<std::uint32_t> unknown = {0, 1, 2, 50, 51, 52, 256 + 3, 0x80000003, 0xFFFFFFFF};
    for (std::uint32_t number = 68; number <= 126; ++number)
        unknown.push_back(number);
    for (std::uint32_t number = 128; number <= 255; ++number)
        unknown.push_back(number);
    for (const std::uint32_t number : unknown) {
        EXPECT_EQ(Function(number), std::nullopt) << number;
        EXPECT_EQ(Signature(number), std::nullopt) << number;
    }
}

TEST(CommandTable, NameStaysAsItWasWithoutARow)
{
    std::string name = "before";
    EXPECT_FALSE(FunctionNameOf(CommandTable(), 50, name));
    EXPECT_FALSE(SignatureNameOf(CommandTable(), 50, name));
    EXPECT_EQ(name, "before");
}

TEST(CommandTable, NoNumberAndNoSignatureTwice)
{
    std::set<std::uint32_t> numbers;
    std::set<std::string> names;
    for (const CommandRow &row : CommandTable()) {
        EXPECT_TRUE(numbers.insert(row.command).second) << row.command;
        EXPECT_TRUE(names.insert(row.signature).second) << row.signature;
    }
}

// No other family's handler can be reached by a command.
TEST(CommandTable, EverySignatureIsOneOfTheAdapters)
{
    for (const CommandRow &row : CommandTable()) {
        const std::string signature = row.signature;
        EXPECT_EQ(signature.rfind("SIGNATURE_VADP", 0), 0u) << signature;
        EXPECT_NE(std::find(signatures.begin(), signatures.end(), signature), signatures.end()) << signature;
    }
}

TEST(CommandTable, SignaturesOfTheAdapterWithoutACommand)
{
    std::set<std::string> without;
    for (const std::string_view signature : signatures) {
        if (signature.starts_with("SIGNATURE_VADP"))
            without.emplace(signature);
    }
    for (const CommandRow &row : CommandTable())
        without.erase(row.signature);
    EXPECT_EQ(without, (std::set<std::string>{"SIGNATURE_VADPFreeBackupOptions", "SIGNATURE_VADPFreeCredentials",
                                              "SIGNATURE_VADPFreeListing", "SIGNATURE_VADPFreeListingCache",
                                              "SIGNATURE_VADPGetHostCpus", "SIGNATURE_VADPListMachineProperties",
                                              "SIGNATURE_VADPNextItem", "SIGNATURE_VADPReadBlock",
                                              "SIGNATURE_VADPVADPVersion"}));
}

// The signature is SIGNATURE_VADP and the function's name, save where the machine is switched off.
TEST(CommandTable, SignatureRepeatsTheFunctionButForOne)
{
    for (const CommandRow &row : CommandTable()) {
        const std::string expected =
            row.command == 35 ? "SIGNATURE_VADPPowerOff" : std::string("SIGNATURE_VADP") + row.function;
        EXPECT_EQ(row.signature, expected) << row.command;
    }
}

TEST(CommandTable, OddNamesStay)
{
    EXPECT_EQ(Function(30), "getIndexBlocks");
    EXPECT_EQ(Signature(30), "SIGNATURE_VADPgetIndexBlocks");
    EXPECT_EQ(Function(34), "PowerOnVDR");
    EXPECT_EQ(Signature(34), "SIGNATURE_VADPPowerOnVDR");
    EXPECT_EQ(Function(35), "PowerOffVDR");
    EXPECT_EQ(Signature(35), "SIGNATURE_VADPPowerOff");
    EXPECT_EQ(Function(53), "GetVMConfig");
    EXPECT_EQ(Function(61), "SetVMConfig");
    EXPECT_EQ(Function(127), "GetLibraryVersion");
}

} // namespace
} // namespace kessil::test
