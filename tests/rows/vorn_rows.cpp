#include "rows/vorn_rows.h"

#include <utility>

namespace kessil::test {
namespace {

// The session and the object of most rows: handles that need all of their 64 bits.
const std::string one = "A000000000000001";
const std::string two = "B000000000000002";

Row VornRow(const std::string &function, std::vector<std::string> in, std::string script, std::string recorded,
            std::string out, std::uint64_t room)
{
    Row row = {function,          "SIGNATURE_" + function, std::move(in),
               std::move(script), std::move(recorded),     std::move(out),
               InputOf(function), OutputOf(function),      room};
    if (row.in.empty())
        row.input_failure = u"";
    return row;
}

// Nothing is written, not even the result.
Row Silent(const std::string &function, std::vector<std::string> in, std::string recorded)
{
    Row row = VornRow(function, std::move(in), "result=5", std::move(recorded), "", 0);
    row.output_failure = u"";
    return row;
}

// A text of up to 8 bytes, and the limit, which is how much of them it fills.
Row ErrorTextRow(const std::string &script, const std::string &limit, const std::string &text)
{
    Row row = VornRow("VornGetErrorText", {one, two, "00000003", "00000008 A0A1A2A3A4A5A6A7", limit}, script,
                      " session=0xa000000000000001 object=0xb000000000000002 code=3",
                      one + two + "00000003 00000008" + text + limit, 44);
    row.writes_section = true;
    return row;
}

// Version 2 passes, and every other one is folded.
Row VersionRow(const std::string &version, const std::string &out)
{
    return VornRow("GetLibApiVersion", {}, "result=" + version, "", out, 4);
}

} // namespace

const std::vector<Row> &VornRows()
{
    static const std::vector<Row> rows = {
        // The result doesn't travel.
        VornRow("VornCreateSession", {}, "out=0x1122334455667788 result=5", "", "1122334455667788", 8),
        // A handle that the library leaves alone is 0, here and in the rows of its kind.
        VornRow("VornCreateSession", {}, "", "", "0000000000000000", 8),
        Silent("VornCloseSession", {"8899AABBCCDDEEFF"}, " session=0x8899aabbccddeeff"),

        VornRow("VornCreateDir", {"0000000000000009"}, "out=0x0102030405060708 result=0xFFFFFFFE", " session=0x9",
                "0102030405060708 FFFFFFFE", 12),
        VornRow("VornCreateDir", {"000000000000000A"}, "result=3", " session=0xa", "0000000000000000 00000003", 12),
        VornRow("VornOpenDir", {one, two, "2F6120622F C3A9 22 5C 00"}, "result=0x01020304",
                R"( session=0xa000000000000001 dir=0xb000000000000002 path="/a b/\xC3\xA9\x22\x5C")", "01020304", 4),
        VornRow("VornOpenDir", {"FFFFFFFFFFFFFFFF", "8000000000000000", "00"}, "result=7",
                R"( session=0xffffffffffffffff dir=0x8000000000000000 path="")", "00000007", 4),
        VornRow("VornGetNextDirItem", {one, two, "00000008 EEEEEEEE 0102030405060708"}, "fill=A1A2A3A4A5 result=7",
                " session=0xa000000000000001 dir=0xb000000000000002 data=",
                one + two + "00000008 EEEEEEEE A1A2A3A4A5060708 00000007", 40),
        VornRow("VornGetNextDirItem", {one, two, "00000000 EEEEEEEE"}, "",
                " session=0xa000000000000001 dir=0xb000000000000002 data=", one + two + "00000000 EEEEEEEE 00000000",
                32),
        Silent("VornCloseDir", {one, two}, " session=0xa000000000000001 dir=0xb000000000000002"),

        VornRow("VornCreateFile", {"0000000000000009"}, "out=0xF1F2F3F4F5F6F7F8 result=1", " session=0x9",
                "F1F2F3F4F5F6F7F8 00000001", 12),
        VornRow("VornCreateFile", {"0000000000000009"}, "", " session=0x9", "0000000000000000 00000000", 12),
        // The mode stands right behind the path's terminator, wherever that is.
        VornRow("VornOpenFile", {one, two, "6100", "F0000001"}, "result=0xFFFFFFFF",
                R"( session=0xa000000000000001 file=0xb000000000000002 path="a" mode=4026531841)", "FFFFFFFF", 4),
        VornRow("VornOpenFile", {one, two, "616200", "00000000"}, "",
                R"( session=0xa000000000000001 file=0xb000000000000002 path="ab" mode=0)", "00000000", 4),
        VornRow("VornReadFile", {one, two, "00000010 EEEEEEEE A0A1A2A3A4A5A6A7A8A9AAABACADAEAF", "00000010"},
                "count_up=10 out=10 result=3",
                " session=0xa000000000000001 file=0xb000000000000002 size=16 data=a0a1a2a3a4a5a6a7a8a9aaabacadaeaf",
                one + two + "00000010 EEEEEEEE 00010203040506070809AAABACADAEAF 00000010 0000000A 00000003", 56),
        // A count that the library leaves alone is 0.
        VornRow("VornReadFile", {one, two, "00000000 EEEEEEEE", "00000000"}, "result=9",
                " session=0xa000000000000001 file=0xb000000000000002 size=0 data=",
                one + two + "00000000 EEEEEEEE 00000000 00000000 00000009", 40),
        // Nothing is echoed: count and result lie at the start, over the session.
        VornRow("VornWriteFile", {one, two, "00000008 EEEEEEEE 0102030405060708", "00000005"}, "out=4 result=6",
                " session=0xa000000000000001 file=0xb000000000000002 size=5 data=0102030405", "00000004 00000006", 8),
        VornRow("VornWriteFile", {one, two, "00000002 EEEEEEEE 0304", "00000000"}, "result=1",
                " session=0xa000000000000001 file=0xb000000000000002 size=0 data=", "00000000 00000001", 8),
        // A block of no bytes is no null pointer.
        VornRow("VornWriteFile", {one, two, "00000000 EEEEEEEE", "00000000"}, "",
                " session=0xa000000000000001 file=0xb000000000000002 size=0 data=", "00000000 00000000", 8),
        VornRow("VornRestoreFile", {one, two}, "result=0x80000000",
                " session=0xa000000000000001 file=0xb000000000000002", "80000000", 4),
        Silent("VornCloseFile", {one, two}, " session=0xa000000000000001 file=0xb000000000000002"),

        // What is left of the limit is filled with zeros.
        ErrorTextRow("text=bad", "00000008", "6261640000000000"),
        ErrorTextRow("text=ab", "00000006", "616200000000 A6A7"),
        ErrorTextRow("text=", "00000008", "0000000000000000"),
        // One less than the limit is all that there is room for.
        ErrorTextRow("text=0123456", "00000008", "3031323334353600"),
        ErrorTextRow("text=01234567", "00000008", "3031323334353600"),
        ErrorTextRow("text=0123456789", "00000008", "3031323334353600"),
        ErrorTextRow("text=0123456789", "00000004", "30313200 A4A5A6A7"),
        ErrorTextRow("text=0123456789", "00000001", "00 A1A2A3A4A5A6A7"),
        // Without a text the limit doesn't count.
        ErrorTextRow("", "00000008", "00 A1A2A3A4A5A6A7"),
        ErrorTextRow("", "00000001", "00 A1A2A3A4A5A6A7"),
        ErrorTextRow("", "00000000", "00 A1A2A3A4A5A6A7"),

        VersionRow("2", "00000002"),
        VersionRow("0", "FFFFFFFF"),
        VersionRow("1", "FFFFFFFF"),
        VersionRow("3", "FFFFFFFF"),
        VersionRow("0x102", "FFFFFFFF"),
        VersionRow("0x80000002", "FFFFFFFF"),
        VersionRow("0xFFFFFFFE", "FFFFFFFF"),
        VersionRow("0xFFFFFFFF", "FFFFFFFF"),
        VornRow("GetBackupType", {}, "result=0xDEADBEEF", "", "DEADBEEF", 4),
    };
    return rows;
}

} // namespace kessil::test
