#include "callers/signature_table.h"

#include "families/vorn/vorn.h"
#include "support/signatures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace kessil::test {
namespace {

// What is served so far; every other row is answered as unknown.
const std::map<std::string, Handler> served = {
    {"SIGNATURE_VornCreateSession", Process_VornCreateSession},
    {"SIGNATURE_VornCloseSession", Process_VornCloseSession},
    {"SIGNATURE_VornCreateDir", Process_VornCreateDir},
    {"SIGNATURE_VornOpenDir", Process_VornOpenDir},
    {"SIGNATURE_VornGetNextDirItem", Process_VornGetNextDirItem},
    {"SIGNATURE_VornCloseDir", Process_VornCloseDir},
    {"SIGNATURE_VornCreateFile", Process_VornCreateFile},
    {"SIGNATURE_VornOpenFile", Process_VornOpenFile},
    {"SIGNATURE_VornReadFile", Process_VornReadFile},
    {"SIGNATURE_VornWriteFile", Process_VornWriteFile},
    {"SIGNATURE_VornRestoreFile", Process_VornRestoreFile},
    {"SIGNATURE_VornCloseFile", Process_VornCloseFile},
    {"SIGNATURE_VornGetErrorText", Process_VornGetErrorText},
    {"SIGNATURE_GetLibApiVersion", Process_GetLibApiVersion},
    {"SIGNATURE_GetBackupType", Process_GetBackupType},
};

std::vector<std::string> TableSignatures()
{
    std::vector<std::string> strings;
    for (const SignatureRow &row : SignatureTable())
        strings.emplace_back(row.signature);
    return strings;
}

TEST(SignatureTable, EverySignatureInItsPlace)
{
    ASSERT_EQ(signatures.size(), 193u);
    EXPECT_EQ(TableSignatures(), std::vector<std::string>(signatures.begin(), signatures.end()));
}

TEST(SignatureTable, NoSignatureTwice)
{
    const std::vector<std::string> strings = TableSignatures();
    EXPECT_EQ(std::set<std::string>(strings.begin(), strings.end()).size(), 193u);
}

TEST(SignatureTable, HandlersOfTheFirstGeneration)
{
    for (const SignatureRow &row : SignatureTable()) {
        const auto handler = served.find(row.signature);
        EXPECT_EQ(row.first, handler == served.end() ? nullptr : handler->second) << row.signature;
    }
}

TEST(SignatureTable, SecondGenerationHoldsTheSameHandlers)
{
    for (const SignatureRow &row : SignatureTable())
        EXPECT_EQ(row.second, row.first) << row.signature;
}

TEST(SignatureTable, FifteenHandlersAndAllDifferent)
{
    std::set<Handler> handlers;
    for (const SignatureRow &row : SignatureTable()) {
        if (row.first != nullptr)
            handlers.insert(row.first);
    }
    EXPECT_EQ(handlers.size(), 15u);
}

// The two rows that stand at the end are in the second table alone.
TEST(SignatureTable, LastTwoRowsHaveNoFirstHandler)
{
    const auto table = SignatureTable();
    ASSERT_EQ(table.size(), 193u);
    EXPECT_EQ(table[191].first, nullptr);
    EXPECT_EQ(table[192].first, nullptr);
}

TEST(SignatureTable, OddSpellingsStay)
{
    const std::vector<std::string> strings = TableSignatures();
    const auto count = [&strings](const char *signature) {
        return std::count(strings.begin(), strings.end(), signature);
    };
    EXPECT_EQ(count("SIG_HR_ESE_BACKUP_END"), 1);
    EXPECT_EQ(count("SIGNATURE_ESE_BACKUP_END"), 0);
    EXPECT_EQ(count("SIGNATURE_VADPVADPVersion"), 1);
    EXPECT_EQ(count("SIGNATURE_VADPVersion"), 0);
    EXPECT_EQ(count("SIGNATURE_VADPgetIndexBlocks"), 1);
    EXPECT_EQ(count("SIGNATURE_VADPGetIndexBlocks"), 0);
    EXPECT_EQ(count("SIGNATURE_VADPPowerOnVDR"), 1);
    EXPECT_EQ(count("SIGNATURE_VADPPowerOn"), 0);
}

} // namespace
} // namespace kessil::test
