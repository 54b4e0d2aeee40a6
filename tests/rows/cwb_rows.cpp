#include "rows/cwb_rows.h"

#include <algorithm>

namespace kessil::test {

const std::vector<Row> &CwbRows()
{
    using Elements = std::vector<std::string>;
    const auto Usual = [](const char *function, const char *signature, const Elements &in, const char *script,
                          const char *recorded, const char *out, std::uint64_t room) {
        return Row{function, signature, in, script, recorded, out, InputOf(function), OutputOf(function), room};
    };
    const auto LacksABracket = [&](const char *function, const char *signature, const Elements &in, const char *script,
                                   const char *recorded, const char *out, std::uint64_t room) {
        Row row = Usual(function, signature, in, script, recorded, out, room);
        row.output_failure.pop_back();
        return row;
    };
    // The longest text that the room holds, and none of its units a terminator.
    std::string digits;
    for (int unit = 0; unit < 256; ++unit)
        digits += "3900";
    Row longest_text = Usual("cwbDT_PackedToString", "SIGNATURE_CWBDT_PACKEDTOSTRING",
                             {"00000003 EEEEEEEE 12345C", "80000002"}, ("digits=" + digits + " result=7").c_str(),
                             " packed=12345C length=3 position=0x80000002", (digits + "0000 00000007").c_str(), 8);
    longest_text.grown = 520;

    static const std::vector<Row> rows = {
        // Systems
        Usual("cwbCO_CreateSystem", "SIGNATURE_CWBCO_CREATESYSTEM", {"5300 5900 0000"},
              "system=0xA1A2A3A4 result=0x01020304", R"( name="SY")", "A1A2A3A4 01020304", 8),
        LacksABracket("cwbCO_SetUserIDEx", "SIGNATURE_CWBCO_SETUSERIDEX", {"A1A2A3A4", "5500 3D26 0000"},
                      "result=0x81020304", R"( system=0xa1a2a3a4 user="U\u263D")", "81020304", 4),
        LacksABracket("cwbCO_SetPassword", "SIGNATURE_CWBCO_SETPASSWORD", {"A1A2A3A4", "7000 5C00 FFFF 0000"},
                      "result=7", R"( system=0xa1a2a3a4 password="p\u005C\uFFFF")", "00000007", 4),
        LacksABracket("cwbCO_SetPromptMode", "SIGNATURE_CWBCO_SETPROMPTMODE", {"A1A2A3A4", "80000002"}, "result=7",
                      " system=0xa1a2a3a4 mode=0x80000002", "00000007", 4),
        LacksABracket("cwbCO_DeleteSystem", "SIGNATURE_CWBCO_DELETESYSTEM", {"A1A2A3A4"}, "result=0xFFFFFFFF",
                      " system=0xa1a2a3a4", "FFFFFFFF", 4),
        // Remote commands and programs
        LacksABracket("cwbRC_StartSysEx", "SIGNATURE_CWBRC_STARTSYSEX", {"A1A2A3A4"}, "request=0xB1B2B3B4 result=7",
                      " system=0xa1a2a3a4", "B1B2B3B4 00000007", 8),
        LacksABracket("cwbRC_CreatePgm", "SIGNATURE_CWBRC_CREATEPGM", {"5000 0000", "4C00 4900 4200 0000"},
                      "program=0xC1C2C3C4 result=7", R"( name="P" library="LIB")", "C1C2C3C4 00000007", 8),
        LacksABracket("cwbRC_CreatePgm", "SIGNATURE_CWBRC_CREATEPGM", {"0000", "0000"}, "result=7",
                      R"( name="" library="")", "00000000 00000007", 8),
        Usual("cwbRC_RunCmd", "SIGNATURE_CWBRC_RUNCMD", {"B1B2B3B4", "4453 E920 22 00", "E1E2E3E4"}, "result=7",
              R"( request=0xb1b2b3b4 command="DS\xE9 \x22" errors=0xe1e2e3e4)", "00000007", 4),
        Usual("cwbRC_CallPgm", "SIGNATURE_CWBRC_CALLPGM", {"B1B2B3B4", "C1C2C3C4", "E1E2E3E4"}, "result=7",
              " request=0xb1b2b3b4 program=0xc1c2c3c4 errors=0xe1e2e3e4", "00000007", 4),
        Usual("cwbRC_DeletePgm", "SIGNATURE_CWBRC_DELETEPGM", {"C1C2C3C4"}, "result=7", " program=0xc1c2c3c4",
              "00000007", 4),
        Usual("cwbRC_StopSys", "SIGNATURE_CWBRC_STOPSYS", {"B1B2B3B4"}, "result=7", " request=0xb1b2b3b4", "00000007",
              4),
        // Code pages and conversion
        Usual("cwbNL_GetHostCCSID", "SIGNATURE_CWBNL_GETHOSTCCSID", {"686F 7374 00"}, "ccsid=0x80000025 result=7",
              R"( system="host")", "80000025 00000007", 8),
        Usual("cwbNL_CCSIDToCodePage", "SIGNATURE_CWBNL_CCSIDTOCODEPAGE", {"80000025", "E1E2E3E4"},
              "page=0x80000352 result=7", " ccsid=0x80000025 errors=0xe1e2e3e4", "80000352 00000007", 8),
        Usual("cwbNL_CodePageToCCSID", "SIGNATURE_CWBNL_CODEPAGETOCCSID", {"00000352", "E1E2E3E4"},
              "ccsid=0x80000025 result=7", " page=0x352 errors=0xe1e2e3e4", "00000352 00000007", 8),
        Usual("cwbNL_GetCodePage", "SIGNATURE_CWBNL_GETCODEPAGE", {"E1E2E3E4"}, "page=0x80000352 result=7",
              " errors=0xe1e2e3e4", "80000352 00000007", 8),
        Usual("cwbNL_CreateConverter", "SIGNATURE_CWBNL_CREATECONVERTER",
              {"11121314", "21222324", "E1E2E3E4", "31323334", "41424344", "2000"}, "converter=0xC1C2C3C4 result=7",
              R"( from=0x11121314 to=0x21222324 errors=0xe1e2e3e4 shift=0x31323334 pads=0x41424344 pad=" ")",
              "C1C2C3C4 00000007", 8),
        Usual("cwbNL_DeleteConverter", "SIGNATURE_CWBNL_DELETECONVERTER", {"C1C2C3C4", "E1E2E3E4"}, "result=7",
              " converter=0xc1c2c3c4 errors=0xe1e2e3e4", "00000007", 4),
        Usual("cwbNL_Convert", "SIGNATURE_CWBNL_CONVERT",
              {"C1C2C3C4", "00000005 0102030405", "00000008 EEEEEEEEEEEEEE F0F1F2F3F4F5F6F7", "E1E2E3E4"},
              "converted=A1A2A3A4A5A6 out1=0x11121314 out2=0x21222324 out3=0x31323334 result=7",
              " converter=0xc1c2c3c4 source_length=5 target_length=8 source=0102030405 target=F0F1F2F3F4F5F6F7 "
              "errors=0xe1e2e3e4",
              "C1C2C3C4 00000005 0102030405 00000008 EEEEEEEEEEEEEE A1A2A3A4A5A6F6F7 11121314 21222324 31323334 "
              "00000007",
              57),
        // The library says that the room isn't enough; it gets the length, and nothing behind it is touched.
        Usual("cwbNL_Convert", "SIGNATURE_CWBNL_CONVERT", {"C1C2C3C4", "00000002 0102", "00000001 EEEE F0", "E1E2E3E4"},
              "converted=A1 out1=1 out2=2 out3=3 result=111",
              " converter=0xc1c2c3c4 source_length=2 target_length=1 source=0102 target=F0 errors=0xe1e2e3e4",
              "C1C2C3C4 00000002 0102 00000001 EEEE A1 00000001 00000002 00000003 0000006F", 47),
        Usual("cwbNL_GetANSICodePage", "SIGNATURE_CWBNL_GETANSICODEPAGE", {"E1E2E3E4"}, "page=0x800004E4 result=7",
              " errors=0xe1e2e3e4", "800004E4 00000007", 8),
        // Error handles
        Usual("cwbSV_CreateErrHandle", "SIGNATURE_CWBSV_CREATEERRHANDLE", {}, "errors=0xE1E2E3E4 result=7", "",
              "E1E2E3E4 00000007", 8),
        Usual("cwbSV_DeleteErrHandle", "SIGNATURE_CWBSV_DELETEERRHANDLE", {"E1E2E3E4"}, "result=7",
              " errors=0xe1e2e3e4", "00000007", 4),
        Usual("cwbSV_GetErrCount", "SIGNATURE_CWBSV_GETERRCOUNT", {"E1E2E3E4"}, "count=0x80000003 result=7",
              " errors=0xe1e2e3e4", "80000003 00000007", 8),
        Usual("cwbSV_GetErrTextIndexed", "SIGNATURE_CWBSV_GETERRTEXTINDEXED",
              {"E1E2E3E4", "80000002", "00000006 EEEEEEEE F0F1F2F3F4F5"},
              "message=4100420000 needed=0x80000014 result=7",
              " errors=0xe1e2e3e4 index=0x80000002 message=F0F1F2F3F4F5 length=6",
              "E1E2E3E4 80000002 00000006 EEEEEEEE 4100420000F5 80000014 00000007", 34),
        // Packed decimals
        Usual("cwbDT_StringToPacked", "SIGNATURE_CWBDT_STRINGTOPACKED",
              {"3100 3200 0000", "00000004 EEEEEEEEEEEE F0F1F2F3", "80000002"}, "packed=012C result=7",
              R"( packed=F0F1F2F3 digits="12" length=4 position=0x80000002)",
              "3100 3200 0000 00000004 EEEEEEEEEEEE 012CF2F3 00000007", 28),
        Usual("cwbDT_PackedToString", "SIGNATURE_CWBDT_PACKEDTOSTRING", {"00000003 EEEEEEEE 12345C", "80000002"},
              "digits=2D0035003D260000 result=7", " packed=12345C length=3 position=0x80000002",
              "2D00 3500 3D26 0000 00000007", 8),
        // What a failure left in the text comes back with it.
        Usual("cwbDT_PackedToString", "SIGNATURE_CWBDT_PACKEDTOSTRING", {"00000003 EEEEEEEE 12345C", "80000002"},
              "digits=3F003E260000 result=0x80000009", " packed=12345C length=3 position=0x80000002",
              "3F00 3E26 0000 80000009", 8),
        longest_text,
        // Database
        Usual("cwbDB_SetStatementName", "SIGNATURE_CWBDB_SETSTATEMENTNAME", {"D1D2D3D4", "5300 3D26 0000", "E1E2E3E4"},
              "result=7", R"( request=0xd1d2d3d4 name="S\u263D" errors=0xe1e2e3e4)", "00000007", 4),
        Usual("cwbDB_SetCursorName", "SIGNATURE_CWBDB_SETCURSORNAME", {"D1D2D3D4", "0000", "E1E2E3E4"}, "result=7",
              R"( request=0xd1d2d3d4 name="" errors=0xe1e2e3e4)", "00000007", 4),
        Usual("cwbDB_SetStatementText", "SIGNATURE_CWBDB_SETSTATEMENTTEXT",
              {"D1D2D3D4", "5300 4500 4C00 0000", "E1E2E3E4"}, "result=7",
              R"( request=0xd1d2d3d4 statement="SEL" errors=0xe1e2e3e4)", "00000007", 4),
        Usual("cwbDB_DeleteDataHandle", "SIGNATURE_CWBDB_DELETEDATAHANDLE", {"DA1A2A3A", "E1E2E3E4"}, "result=7",
              " data=0xda1a2a3a errors=0xe1e2e3e4", "00000007", 4),
        Usual("cwbDB_DeleteDataFormatHandle", "SIGNATURE_CWBDB_DELETEDATAFORMATHANDLE", {"F1F2F3F4", "E1E2E3E4"},
              "result=7", " format=0xf1f2f3f4 errors=0xe1e2e3e4", "00000007", 4),
        Usual("cwbDB_DeleteSQLRequestHandle", "SIGNATURE_CWBDB_DELETESQLREQUESTHANDLE", {"D1D2D3D4", "E1E2E3E4"},
              "result=7", " request=0xd1d2d3d4 errors=0xe1e2e3e4", "00000007", 4),
        Usual("cwbDB_StopServer", "SIGNATURE_CWBDB_STOPSERVER", {"C1C2C3C4", "E1E2E3E4"}, "result=7",
              " connection=0xc1c2c3c4 errors=0xe1e2e3e4", "00000007", 4),
        Usual("cwbDB_DeleteConnectionHandle", "SIGNATURE_CWBDB_DELETECONNECTIONHANDLE", {"C1C2C3C4", "E1E2E3E4"},
              "result=7", " connection=0xc1c2c3c4 errors=0xe1e2e3e4", "00000007", 4),
        Usual("cwbDB_CreateDataHandle", "SIGNATURE_CWBDB_CREATEDATAHANDLE", {"E1E2E3E4"}, "data=0xDA1A2A3A result=7",
              " errors=0xe1e2e3e4", "DA1A2A3A 00000007", 8),
        Usual("cwbDB_CreateConnectionHandleEx", "SIGNATURE_CWBDB_CREATECONNECTIONHANDLEEX", {"A1A2A3A4", "E1E2E3E4"},
              "connection=0xC1C2C3C4 result=7", " system=0xa1a2a3a4 errors=0xe1e2e3e4", "C1C2C3C4 00000007", 8),
        Usual("cwbDB_StartServer", "SIGNATURE_CWBDB_STARTSERVER", {"C1C2C3C4", "E1E2E3E4"}, "result=7",
              " connection=0xc1c2c3c4 errors=0xe1e2e3e4", "00000007", 4),
        Usual("cwbDB_CreateSQLRequestHandle", "SIGNATURE_CWBDB_CREATESQLREQUESTHANDLE", {"C1C2C3C4", "E1E2E3E4"},
              "request=0xD1D2D3D4 result=7", " connection=0xc1c2c3c4 errors=0xe1e2e3e4", "D1D2D3D4 00000007", 8),
        Usual("cwbDB_CreateDataFormatHandle", "SIGNATURE_CWBDB_CREATEDATAFORMATHANDLE", {"C1C2C3C4", "E1E2E3E4"},
              "format=0xF1F2F3F4 result=7", " connection=0xc1c2c3c4 errors=0xe1e2e3e4", "F1F2F3F4 00000007", 8),
        Usual("cwbDB_SetClientInputCCSID", "SIGNATURE_CWBDB_SETCLIENTINPUTCCSID", {"D1D2D3D4", "80000025", "E1E2E3E4"},
              "result=7", " request=0xd1d2d3d4 ccsid=0x80000025 errors=0xe1e2e3e4", "00000007", 4),
        Usual("cwbDB_ReturnHostErrorInfo", "SIGNATURE_CWBDB_RETURNHOSTERRORINFO",
              {"D1D2D3D4", "11121314", "21222324", "31323334", "E1E2E3E4"}, "out1=0x8182 out2=0x91929394 result=7",
              " request=0xd1d2d3d4 value1=0x11121314 value2=0x21222324 value3=0x31323334 errors=0xe1e2e3e4",
              "8182 91929394 00000007", 10),
        Usual("cwbDB_SetDescribeOption", "SIGNATURE_CWBDB_SETDESCRIBEOPTION", {"D1D2D3D4", "80000002", "E1E2E3E4"},
              "result=7", " request=0xd1d2d3d4 option=0x80000002 errors=0xe1e2e3e4", "00000007", 4),
        Usual("cwbDB_StoreRequestParameters", "SIGNATURE_CWBDB_STOREREQUESTPARAMETERS", {"D1D2D3D4", "E1E2E3E4"},
              "result=7", " request=0xd1d2d3d4 errors=0xe1e2e3e4", "00000007", 4),
        Usual("cwbDB_ReturnDataFormat", "SIGNATURE_CWBDB_RETURNDATAFORMAT", {"D1D2D3D4", "F1F2F3F4", "E1E2E3E4"},
              "result=7", " request=0xd1d2d3d4 format=0xf1f2f3f4 errors=0xe1e2e3e4", "00000007", 4),
        Usual("cwbDB_PrepareDescribe", "SIGNATURE_CWBDB_PREPAREDESCRIBE", {"D1D2D3D4", "E1E2E3E4"}, "result=7",
              " request=0xd1d2d3d4 errors=0xe1e2e3e4", "00000007", 4),
        Usual("cwbDB_Open", "SIGNATURE_CWBDB_OPEN", {"D1D2D3D4", "80000002", "E1E2E3E4"}, "result=7",
              " request=0xd1d2d3d4 option=0x80000002 errors=0xe1e2e3e4", "D1D2D3D4 80000002 E1E2E3E4 00000007", 16),
        Usual("cwbDB_SetBlockCount", "SIGNATURE_CWBDB_SETBLOCKCOUNT", {"D1D2D3D4", "80000002", "E1E2E3E4"}, "result=7",
              " request=0xd1d2d3d4 count=0x80000002 errors=0xe1e2e3e4", "00000007", 4),
        Usual("cwbDB_ReturnData", "SIGNATURE_CWBDB_RETURNDATA",
              {"D1D2D3D4", "DA1A2A3A", "11121314", "21222324", "E1E2E3E4"}, "result=7",
              " request=0xd1d2d3d4 data=0xda1a2a3a value1=0x11121314 value2=0x21222324 errors=0xe1e2e3e4", "00000007",
              4),
        Usual("cwbDB_Fetch", "SIGNATURE_CWBDB_FETCH", {"D1D2D3D4", "E1E2E3E4"}, "result=7",
              " request=0xd1d2d3d4 errors=0xe1e2e3e4", "00000007", 4),
        Usual("cwbDB_GetColumnCount", "SIGNATURE_CWBDB_GETCOLUMNCOUNT", {"F1F2F3F4", "E1E2E3E4"},
              "count=0x80000003 result=7", " format=0xf1f2f3f4 errors=0xe1e2e3e4", "80000003 00000007", 8),
        Usual("cwbDB_GetColumnLength", "SIGNATURE_CWBDB_GETCOLUMNLENGTH",
              {"F1F2F3F4", "80000001", "21222324", "E1E2E3E4"}, "length=0x81828384 result=7",
              " format=0xf1f2f3f4 column=0x80000001 value=0x21222324 errors=0xe1e2e3e4", "81828384 00000007", 8),
        Usual("cwbDB_GetColumnType", "SIGNATURE_CWBDB_GETCOLUMNTYPE", {"F1F2F3F4", "80000001", "21222324", "E1E2E3E4"},
              "type=0x8182 result=7", " format=0xf1f2f3f4 column=0x80000001 value=0x21222324 errors=0xe1e2e3e4",
              "8182 00000007", 6),
        Usual("cwbDB_GetColumnCCSID", "SIGNATURE_CWBDB_GETCOLUMNCCSID",
              {"F1F2F3F4", "80000001", "21222324", "E1E2E3E4"}, "ccsid=0x8182 result=7",
              " format=0xf1f2f3f4 column=0x80000001 value=0x21222324 errors=0xe1e2e3e4", "8182 00000007", 6),
        Usual("cwbDB_GetColumnName", "SIGNATURE_CWBDB_GETCOLUMNNAME", {"F1F2F3F4", "80000001", "21222324", "E1E2E3E4"},
              "result=7", " format=0xf1f2f3f4 column=0x80000001 value=0x21222324 errors=0xe1e2e3e4", "00000007", 4),
        Usual("cwbDB_GetColumnScale", "SIGNATURE_CWBDB_GETCOLUMNSCALE",
              {"F1F2F3F4", "80000001", "21222324", "E1E2E3E4"}, "scale=0x8182 result=7",
              " format=0xf1f2f3f4 column=0x80000001 value=0x21222324 errors=0xe1e2e3e4", "8182 00000007", 6),
        Usual("cwbDB_GetDataPointer", "SIGNATURE_CWBDB_GETDATAPOINTER", {"DA1A2A3A", "00000005 F0F1F2F3F4", "E1E2E3E4"},
              "bytes=B1B2B3B4B5B6 result=7", " data=0xda1a2a3a errors=0xe1e2e3e4",
              "DA1A2A3A 00000005 B1B2B3B4B5 00000007", 25),
        // The copy doesn't depend on the result, and of no bytes there is none.
        Usual("cwbDB_GetDataPointer", "SIGNATURE_CWBDB_GETDATAPOINTER", {"DA1A2A3A", "00000005 F0F1F2F3F4", "E1E2E3E4"},
              "bytes=B1B2B3B4B5 result=0x80000009", " data=0xda1a2a3a errors=0xe1e2e3e4",
              "DA1A2A3A 00000005 B1B2B3B4B5 80000009", 25),
        Usual("cwbDB_GetDataPointer", "SIGNATURE_CWBDB_GETDATAPOINTER", {"DA1A2A3A", "00000000", "E1E2E3E4"},
              "result=0x80000009", " data=0xda1a2a3a errors=0xe1e2e3e4", "DA1A2A3A 00000000 80000009", 20),
        Usual("cwbDB_GetDataLength", "SIGNATURE_CWBDB_GETDATALENGTH", {"DA1A2A3A", "E1E2E3E4"},
              "length=0x81828384 result=7", " data=0xda1a2a3a errors=0xe1e2e3e4", "81828384 00000007", 8),
        Usual("cwbDB_SetNamingConvention", "SIGNATURE_CWBDB_SETNAMINGCONVENTION", {"C1C2C3C4", "8182", "E1E2E3E4"},
              "result=7", " connection=0xc1c2c3c4 convention=0x8182 errors=0xe1e2e3e4",
              "C1C2C3C4 8182 E1E2E3E4 00000007", 14),
    };
    return rows;
}

namespace {

std::vector<Row> MakeFailingCwbRows()
{
    struct Failure
    {
        const char *function;
        const char *out;
    };
    const std::vector<Failure> failures = {
        {"cwbCO_CreateSystem", "00000000 80000009"},
        {"cwbRC_StartSysEx", "00000000 80000009"},
        {"cwbRC_CreatePgm", "00000000 80000009"},
        {"cwbNL_GetHostCCSID", "00000000 80000009"},
        {"cwbNL_CCSIDToCodePage", "00000000 80000009"},
        {"cwbNL_CodePageToCCSID", "00000352 80000009"},
        {"cwbNL_GetCodePage", "00000000 80000009"},
        {"cwbNL_CreateConverter", "00000000 80000009"},
        {"cwbNL_Convert",
         "C1C2C3C4 00000005 0102030405 00000008 EEEEEEEEEEEEEE F0F1F2F3F4F5F6F7 00000000 00000000 00000000 80000009"},
        {"cwbNL_GetANSICodePage", "00000000 80000009"},
        {"cwbSV_CreateErrHandle", "00000000 80000009"},
        {"cwbSV_GetErrCount", "00000000 80000009"},
        {"cwbSV_GetErrTextIndexed", "E1E2E3E4 80000002 00000006 EEEEEEEE F0F1F2F3F4F5 00000000 80000009"},
        {"cwbDT_StringToPacked", "3100 3200 0000 00000004 EEEEEEEEEEEE F0F1F2F3 80000009"},
        {"cwbDT_PackedToString", "0000 80000009"},
        {"cwbDB_CreateDataHandle", "00000000 80000009"},
        {"cwbDB_CreateConnectionHandleEx", "00000000 80000009"},
        {"cwbDB_CreateSQLRequestHandle", "00000000 80000009"},
        {"cwbDB_CreateDataFormatHandle", "00000000 80000009"},
        {"cwbDB_ReturnHostErrorInfo", "0000 00000000 80000009"},
        {"cwbDB_GetColumnCount", "00000000 80000009"},
        {"cwbDB_GetColumnLength", "00000000 80000009"},
        {"cwbDB_GetColumnType", "0000 80000009"},
        {"cwbDB_GetColumnCCSID", "0000 80000009"},
        {"cwbDB_GetColumnScale", "0000 80000009"},
        {"cwbDB_GetDataLength", "00000000 80000009"},
    };
    const std::vector<Row> all = CwbRows();
    std::vector<Row> rows;
    for (const Failure &failure : failures) {
        Row row =
            *std::find_if(all.begin(), all.end(), [&](const Row &other) { return other.function == failure.function; });
        row.script = "result=0x80000009";
        row.out = failure.out;
        rows.push_back(row);
    }
    return rows;
}

} // namespace

const std::vector<Row> &FailingCwbRows()
{
    static const std::vector<Row> rows = MakeFailingCwbRows();
    return rows;
}

} // namespace kessil::test
