#include "rows/mapi_rows.h"

#include <utility>

namespace kessil::test {
namespace {

// A row of the mail library that departs from the family in no text.
Row MapiRow(const std::string &function, std::vector<std::string> in, std::string script, std::string recorded,
            std::string out, std::uint64_t room)
{
    return {function,          "SIGNATURE_" + function, std::move(in),
            std::move(script), std::move(recorded),     std::move(out),
            InputOf(function), OutputOf(function),      room};
}

// The longest text that fits into the room that the library is given: 263 times the letter, and the zero unit.
std::string LongestText(char letter)
{
    static const char digits[] = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(letter);
    std::string text;
    for (int units = 0; units < 263; ++units)
        text += {digits[byte >> 4], digits[byte & 15], '0', '0'};
    return text + "0000";
}

} // namespace

const std::vector<Row> &MapiRows()
{
    Row next_mails = MapiRow("MapiGetNextMails", {"89ABCDEF", "00000008 0102030405060708"},
                             "block=A1A2A3 count1=0x01020304 count2=0x05060708 result=9",
                             " mapi=0x89abcdef block=0102030405060708 length=8",
                             "89ABCDEF 00000008 A1A2A30405060708 01020304 05060708 00000009", 36);
    next_mails.input_failure = u"Failed to serialise input (Process_MapiGetNextMail)";

    Row next_mails_untouched =
        MapiRow("MapiGetNextMails", {"89ABCDEF", "00000002 0102"}, "result=21", " mapi=0x89abcdef block=0102 length=2",
                "89ABCDEF 00000002 0102 00000000 00000000 00000015", 30);
    next_mails_untouched.input_failure = next_mails.input_failure;

    Row version = MapiRow("MapiBackupDLLVersion", {}, "result=0x80020001", "", "80020001 00000000", 8);
    version.input_failure = u"";
    version.output_failure = u"Failed to serialize output (Process_MapiBackupDLLVersion)";

    static const std::vector<Row> rows = {
        // The library's word is cleared beforehand, and its low half alone crosses.
        MapiRow("MapiCreate", {"DEADBEEF"}, "mapi=0x1122334455667788 result=0x80000001", " before=0x0",
                "DEADBEEF 55667788 80000001", 12),
        MapiRow("MapiCreate", {"00000001"}, "result=7", " before=0x0", "00000001 00000000 00000007", 12),
        MapiRow("MapiDelete", {"89ABCDEF"}, "result=0x01020304", " mapi=0x89abcdef", "89ABCDEF 01020304", 8),
        MapiRow("MapiRestore", {"89ABCDEF", "4900 E900 3DD8 0000"}, "result=2",
                " mapi=0x89abcdef text=\"I\\u00E9\\uD83D\"", "89ABCDEF 4900E9003DD80000 00000002", 18),
        MapiRow("MapiRestore", {"89ABCDEF", "0000"}, "", " mapi=0x89abcdef text=\"\"", "89ABCDEF 0000 00000000", 12),
        MapiRow("MapiFindFolder", {"89ABCDEF", "4100 4200 0000", "F00D"}, "result=3",
                " mapi=0x89abcdef name=\"AB\" flag=61453", "89ABCDEF 410042000000 F00D 00000003", 18),
        MapiRow("MapiOpenFolderSearch", {"89ABCDEF"}, "result=4", " mapi=0x89abcdef", "89ABCDEF 00000004", 8),
        MapiRow("MapiGetNextFolder", {"89ABCDEF", "0000000A 0102030405060708090A"},
                "block=A1A2A3A4A5 count=3 result=0xFFFFFFFE", " mapi=0x89abcdef block=0102030405060708090A length=10",
                "89ABCDEF 0000000A A1A2A3A4A5060708090A 00000003 FFFFFFFE", 34),
        // A count that the library leaves alone is 0.
        MapiRow("MapiGetNextFolder", {"89ABCDEF", "00000001 01"}, "result=20", " mapi=0x89abcdef block=01 length=1",
                "89ABCDEF 00000001 01 00000000 00000014", 25),
        MapiRow("MapiCloseSearch", {"89ABCDEF"}, "result=5", " mapi=0x89abcdef", "89ABCDEF 00000005", 8),
        MapiRow("MapiOpenMailSearch", {"89ABCDEF", "4100 0000", "4200 4300 0000", "F0000001"}, "result=6",
                " mapi=0x89abcdef text1=\"A\" text2=\"BC\" value=4026531841",
                "89ABCDEF 41000000 420043000000 F0000001 00000006", 26),
        Growing(
            MapiRow(
                "MapiGetNextMail", {"89ABCDEF"},
                "text1=41000000 text2=4200E9000000 value1=0x1112131415161718 value2=0x2122232425262728 "
                "value3=0x3132333435363738 value4=0x41424344 result=8",
                " mapi=0x89abcdef",
                "89ABCDEF 41000000 4200E9000000 1112131415161718 2122232425262728 3132333435363738 41424344 00000008",
                44),
            44 + 2 + 4),
        // What the library leaves alone is empty and 0, and travels all the same.
        MapiRow("MapiGetNextMail", {"89ABCDEF"}, "result=0x80004005", " mapi=0x89abcdef",
                "89ABCDEF 0000 0000 0000000000000000 0000000000000000 0000000000000000 00000000 80004005", 44),
        Growing(MapiRow("MapiGetNextMail", {"89ABCDEF"}, "text1=" + LongestText('a') + " text2=" + LongestText('b'),
                        " mapi=0x89abcdef",
                        "89ABCDEF" + LongestText('a') + LongestText('b') +
                            "0000000000000000 0000000000000000 0000000000000000 00000000 00000000",
                        44),
                44 + 2 * 526),
        // An empty string is a zero unit, whatever the library left behind it.
        MapiRow("MapiGetNextMail", {"89ABCDEF"}, "text1=000041004200 text2=00004300", " mapi=0x89abcdef",
                "89ABCDEF 0000 0000 0000000000000000 0000000000000000 0000000000000000 00000000 00000000", 44),
        next_mails,
        next_mails_untouched,
        MapiRow("MapiReadMail", {"89ABCDEF", "00000005 0102030405"}, "block=A1A2A3A4A5 count=5 result=10",
                " mapi=0x89abcdef block=0102030405 length=5", "89ABCDEF 00000005 A1A2A3A4A5 00000005 0000000A", 29),
        MapiRow("MapiReadMail", {"89ABCDEF", "00000000"}, "result=11", " mapi=0x89abcdef block= length=0",
                "89ABCDEF 00000000 00000000 0000000B", 24),
        MapiRow("MapiWriteMail", {"89ABCDEF", "00000005 0102030405"}, "count=4 result=12",
                " mapi=0x89abcdef block=0102030405 length=5", "89ABCDEF 00000005 0102030405 00000004 0000000C", 29),
        // A private copy of no bytes is no null pointer.
        MapiRow("MapiWriteMail", {"89ABCDEF", "00000000"}, "", " mapi=0x89abcdef block= length=0",
                "89ABCDEF 00000000 00000000 00000000", 24),
        MapiRow("MapiCloseMail", {"89ABCDEF"}, "result=13", " mapi=0x89abcdef", "89ABCDEF 0000000D", 8),
        MapiRow("MapiLoginProfile", {"89ABCDEF", "5000 0000"}, "result=14", " mapi=0x89abcdef profile=\"P\"",
                "89ABCDEF 50000000 0000000E", 14),
        // The first text and the value don't come back.
        MapiRow("MapiCreateProfileWithIProfAdmin",
                {"89ABCDEF", "4100 0000", "4200 4200 0000", "4300 4300 4300 0000", "00000019"}, "result=15",
                " mapi=0x89abcdef text1=\"A\" text2=\"BB\" text3=\"CCC\" value=25",
                "89ABCDEF 420042000000 4300430043000000 0000000F", 26),
        MapiRow("MapiDeleteProfile", {"89ABCDEF"}, "result=16", " mapi=0x89abcdef", "89ABCDEF 00000010", 8),
        Growing(MapiRow("MapiOpenMail", {"89ABCDEF", "4900 4400 0000", "8001"},
                        "text1=31000000 text2=3200 text3=330033000000 text4=34000000 text5=35000000 text6=36000000 "
                        "value1=0x1112 value2=0x2122 value3=0x3132 text7=370037000000 value4=0x41424344 result=17",
                        " mapi=0x89abcdef id=\"ID\" flag=32769",
                        "89ABCDEF 490044000000 8001 31000000 32000000 330033000000 34000000 35000000 36000000 "
                        "1112 2122 3132 370037000000 41424344 00000011",
                        56),
                56 + 9 * 2),
        MapiRow("MapiOpenMail", {"89ABCDEF", "0000", "0000"}, "result=0x80004005", " mapi=0x89abcdef id=\"\" flag=0",
                "89ABCDEF 0000 0000 0000 0000 0000 0000 0000 0000 0000 0000 0000 0000 00000000 80004005", 52),
        Growing(MapiRow("MapiOpenMail", {"89ABCDEF", "0000", "0000"},
                        "text1=" + LongestText('a') + " text2=" + LongestText('b') + " text3=" + LongestText('c') +
                            " text4=" + LongestText('d') + " text5=" + LongestText('e') + " text6=" + LongestText('f') +
                            " text7=" + LongestText('g'),
                        " mapi=0x89abcdef id=\"\" flag=0",
                        "89ABCDEF 0000 0000" + LongestText('a') + LongestText('b') + LongestText('c') +
                            LongestText('d') + LongestText('e') + LongestText('f') + "0000 0000 0000" +
                            LongestText('g') + "00000000 00000000",
                        52),
                52 + 7 * 526),
        Growing(MapiRow("MapiGetLastError", {"89ABCDEF"}, "text1=4E006F0000006E6E result=18", " mapi=0x89abcdef",
                        "89ABCDEF 4E006F000000 00000012", 12),
                16),
        MapiRow("MapiGetLastError", {"89ABCDEF"}, "text1=000041004200 result=22", " mapi=0x89abcdef",
                "89ABCDEF 0000 00000016", 12),
        MapiRow("MapiGetLastError", {"89ABCDEF"}, "", " mapi=0x89abcdef", "89ABCDEF 0000 00000000", 12),
        version,
        MapiRow("MapiChangeDupID", {"89ABCDEF", "80000001", "4900 0000"}, "result=19",
                " mapi=0x89abcdef value=2147483649 id=\"I\"", "89ABCDEF 80000001 49000000 00000013", 18),
    };
    return rows;
}

} // namespace kessil::test
