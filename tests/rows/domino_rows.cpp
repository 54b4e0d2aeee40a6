#include "rows/domino_rows.h"

#include <utility>

namespace kessil::test {
namespace {

// A row of the Notes library.
Row DominoRow(const std::string &function, std::vector<std::string> in, std::string script, std::string recorded,
              std::string out, std::uint64_t room)
{
    Row row = {function,          "SIGNATURE_" + function, std::move(in),
               std::move(script), std::move(recorded),     std::move(out),
               InputOf(function), OutputOf(function),      room};
    row.writes_section = function == "DominoGetErrorMessage";
    return row;
}

} // namespace

const std::vector<Row> &DominoRows()
{
    static const std::vector<Row> rows = {
        // The return value is the session, with a constant 0 behind it.
        DominoRow("DominoGetSession", {"DEADBEEF", "41E900"}, "result=0x89ABCDEF", " text=\"A\\xE9\"",
                  "DEADBEEF 41E900 89ABCDEF 00000000", 16),
        DominoRow("DominoGetSession", {"00000001", "00"}, "", " text=\"\"", "00000001 00 00000000 00000000", 14),
        DominoRow("DominoCloseSession", {"89ABCDEF"}, "result=0x01020304", " session=0x89abcdef", "89ABCDEF 01020304",
                  8),
        // The data begin at 16, 5 bytes behind the length; at 16 again, right behind it; and at 24.
        DominoRow("DominoFindFirstDatabase", {"89ABCDEF", "616200", "00000004 EEEEEEEEEE 01020304"},
                  "block=A1A2 result=2", " session=0x89abcdef path=\"ab\" block=01020304 length=4",
                  "89ABCDEF 616200 00000004 EEEEEEEEEE A1A20304 00000002", 28),
        DominoRow("DominoFindFirstDatabase", {"89ABCDEF", "61626364656667 00", "00000003 010203"}, "block=A1A2A3",
                  " session=0x89abcdef path=\"abcdefg\" block=010203 length=3",
                  "89ABCDEF 6162636465666700 00000003 A1A2A3 00000000", 32),
        DominoRow("DominoFindFirstDatabase", {"89ABCDEF", "6162636465666768 00", "00000000 EEEEEEEEEEEEEE"}, "result=3",
                  " session=0x89abcdef path=\"abcdefgh\" block= length=0",
                  "89ABCDEF 616263646566676800 00000000 EEEEEEEEEEEEEE 00000003", 30),
        DominoRow("DominoFindNextDatabase", {"89ABCDEF", "00000005 0102030405"}, "block=A1A2A3A4A5 result=0xFFFFFFFF",
                  " session=0x89abcdef block=0102030405 length=5", "89ABCDEF 00000005 A1A2A3A4A5 FFFFFFFF", 25),
        DominoRow("DominoGetDatabaseInfo", {"89ABCDEF"}, "value1=0x11121314 value2=0x21222324 result=4",
                  " session=0x89abcdef value1=0 value2=0", "89ABCDEF 11121314 21222324 00000004", 16),
        DominoRow("DominoGetDatabaseInfo", {"89ABCDEF"}, "", " session=0x89abcdef value1=0 value2=0",
                  "89ABCDEF 00000000 00000000 00000000", 16),
        // The value goes both ways.
        DominoRow("DominoCopyDatabase", {"89ABCDEF", "6100", "626200", "00", "646400", "80000001"},
                  "value=0x51525354 result=5",
                  " session=0x89abcdef text1=\"a\" text2=\"bb\" text3=\"\" text4=\"dd\" value=2147483649",
                  "89ABCDEF 6100 626200 00 646400 51525354 00000005", 25),
        DominoRow("DominoCopyDatabase", {"89ABCDEF", "00", "00", "00", "00", "00000007"}, "result=6",
                  " session=0x89abcdef text1=\"\" text2=\"\" text3=\"\" text4=\"\" value=7",
                  "89ABCDEF 00 00 00 00 00000007 00000006", 20),
        // The text lies in the buffer with its zero byte, and nothing behind that changes.
        DominoRow("DominoGetErrorMessage", {"89ABCDEF", "F0000001", "00000008 EEEEEEEE 0102030405060708"},
                  "message=No\\xE9", " session=0x89abcdef code=4026531841",
                  "89ABCDEF F0000001 00000008 EEEEEEEE 4E6FE90005060708 00000000", 32),
        DominoRow("DominoGetErrorMessage", {"89ABCDEF", "00000001", "00000004 EEEEEEEE 01020304"}, "message=abc",
                  " session=0x89abcdef code=1", "89ABCDEF 00000001 00000004 EEEEEEEE 61626300 00000000", 28),
        DominoRow("DominoGetErrorMessage", {"89ABCDEF", "00000000", "00000001 EEEEEEEE 01"},
                  "message=", " session=0x89abcdef code=0", "89ABCDEF 00000000 00000001 EEEEEEEE 00 00000000", 25),
        DominoRow("DominoSetPassword", {"6100", "626200"}, "result=7", " text1=\"a\" text2=\"bb\"",
                  "6100 626200 00000007", 11),
        DominoRow("DominoGetNotesVersion", {"89ABCDEF", "766500"}, "version=0x00080503 result=8",
                  " session=0x89abcdef text=\"ve\"", "89ABCDEF 766500 00080503 00000008", 16),
        DominoRow("DominoGetNotesVersion", {"89ABCDEF", "00"}, "result=9", " session=0x89abcdef text=\"\"",
                  "89ABCDEF 00 00000000 00000009", 14),
    };
    return rows;
}

} // namespace kessil::test
