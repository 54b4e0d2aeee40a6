#pragma once

#include "rows/cwb_rows.h"
#include "rows/domino_rows.h"
#include "rows/ese_rows.h"
#include "rows/mapi_rows.h"

#include <algorithm>
#include <string>
#include <vector>

namespace kessil::test {

/// One handler that the handler target calls: its signature, and the function that it is given.
struct FuzzedRow
{
    std::string signature;
    std::string function;
};

/// The signatures that aren't fuzzed: with these a parent can ask for the fault, or the abort, that it then gets, or
/// leave a block behind that nobody else deletes.
inline const std::vector<std::string> not_fuzzed = {
    "SIGNATURE_CWBRC_ADDPARM",
    "SIGNATURE_CWBRC_CALLPGM_GETBUFFER",
    "SIGNATURE_CWBRC_CALLPGM_DELETEBUFFER",
    "SIGNATURE_DominoGetErrorMessage",
};

/// The tables of all families that have one.
inline std::vector<Row> FamilyRows()
{
    std::vector<Row> rows;
    for (const auto &family : {CwbRows(), DominoRows(), EseRows(), MapiRows()})
        rows.insert(rows.end(), family.begin(), family.end());
    std::erase_if(rows, [](const Row &row) {
        return std::find(not_fuzzed.begin(), not_fuzzed.end(), row.signature) != not_fuzzed.end();
    });
    return rows;
}

/// All others, in the order in which an input's first byte counts them.
inline std::vector<FuzzedRow> FuzzedRows()
{
    std::vector<FuzzedRow> rows;
    for (const char *const function :
         {"VornCreateSession", "VornCloseSession", "VornCreateDir", "VornOpenDir", "VornGetNextDirItem", "VornCloseDir",
          "VornCreateFile", "VornOpenFile", "VornReadFile", "VornWriteFile", "VornRestoreFile", "VornCloseFile",
          "VornGetErrorText", "GetLibApiVersion", "GetBackupType"})
        rows.push_back({std::string("SIGNATURE_") + function, function});
    for (const Row &row : FamilyRows()) {
        if (rows.back().signature != row.signature)
            rows.push_back({row.signature, row.function});
    }
    return rows;
}

} // namespace kessil::test
