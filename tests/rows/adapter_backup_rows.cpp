#include "rows/adapter_backup_rows.h"

namespace kessil::test {
namespace {

// Earlier calls of the backup rows, by what they leave behind.
Step BackupCredentials(const std::string &object)
{
    return {"CreateCredentials",
            "SIGNATURE_VADPCreateCredentials",
            {Str("user"), Str("password")},
            "result=1 credentials=" + object};
}

Step BackupListing(const std::string &words)
{
    return {"OpenListing", "SIGNATURE_VADPOpenListing", {Str(""), "00000000"}, "result=1 " + words};
}

} // namespace

Step BackupOptions(const std::string &object)
{
    return {"CreateBackupOptions",
            "SIGNATURE_VADPCreateBackupOptions",
            {"0000", "0000", "0000", "0000", "0000", Str("")},
            "result=1 options=" + object};
}

namespace {

Step BackupAcl(const std::string &key, const std::string &object)
{
    return {"CreateACLInfo",
            "SIGNATURE_VADPCreateACLInfo",
            {"00000000 00000000", Str(key), Str("")},
            "result=1 aclinfo=" + object};
}

} // namespace

Step BackupSession(const std::string &object)
{
    return {"StartBackupSession",
            "SIGNATURE_VADPStartBackupSession",
            {Str(""), "FFFFFFFF", "FFFFFFFF"},
            "result=1 session=" + object};
}

Step BackupFile(const std::string &object)
{
    return {"OpenBackupFile", "SIGNATURE_VADPOpenBackupFile", {"FFFFFFFF", Str("")}, "result=1 file=" + object};
}

std::vector<Step> ThreeSessions()
{
    return {BackupSession("0x501"), BackupSession("0x502"), BackupSession("0x503")};
}

std::vector<Step> ThreeFiles()
{
    return {BackupFile("0x601"), BackupFile("0x602"), BackupFile("0x603")};
}

namespace {

std::vector<Step> ThreeSessionsAnd(const std::vector<Step> &others)
{
    std::vector<Step> steps = ThreeSessions();
    steps.insert(steps.end(), others.begin(), others.end());
    return steps;
}

// Disk library, snapshot and sessions, with the arguments in the section.
std::vector<AdapterRow> BackupSessionRows()
{
    return {
        {
            .function = "InitVixDiskLib",
            .signature = "SIGNATURE_VADPInitVixDiskLib",
            .before = {},
            .in = {Str("/cfg"), Str("/lib")},
            .script = "result=1 log=up level=255",
            .error_text = "",
            .seen = {"InitVixDiskLib config=\"/cfg\" lib=\"/lib\""},
            .frames = "4D 0000000A 000000FF 750070000000",
            .out = "00",
            .logged = {"debug: Process_VADPInitVixDiskLib()"},
            .input_failure = AdapterInput("InitVixDiskLib"),
            .error_failure = u"",
            .output_failure = AdapterOutput("InitVixDiskLib"),
            .room = 2,
        },
        {
            .function = "InitVixDiskLib",
            .signature = "SIGNATURE_VADPInitVixDiskLib",
            .before = {},
            .in = {Str(""), Str("l")},
            .script = "result=0 error=0x99 log=down level=1",
            .error_text = "no library",
            .seen = std::vector<std::string>{"InitVixDiskLib config=\"\" lib=\"l\""} + ErrorTaken("0x99"),
            .frames = "4D 0000000E 00000001 64006F0077006E000000",
            .out = Str("no library"),
            .logged = {"debug: Process_VADPInitVixDiskLib()"},
            .input_failure = AdapterInput("InitVixDiskLib"),
            .error_failure = AdapterError("InitVixDiskLib"),
            .output_failure = AdapterOutput("InitVixDiskLib"),
            .room = 12,
        },
        {
            // What it logs isn't sent.
            .function = "ExitVixDiskLib",
            .signature = "SIGNATURE_VADPExitVixDiskLib",
            .before = {},
            .in = {},
            .script = "log=bye level=3",
            .error_text = "",
            .seen = {"ExitVixDiskLib"},
            .frames = "",
            .out = "",
            .logged = {"debug: Process_VADPExitVixDiskLib()"},
            .input_failure = u"",
            .error_failure = u"",
            .output_failure = u"",
            .room = 0,
        },
        {
            .function = "SnapshotVM",
            .signature = "SIGNATURE_VADPSnapshotVM",
            .before = {BackupCredentials("0x701"), BackupListing("listing=0x301 cache=0xC01")},
            .in = {Str("path"), Str("name"), Str("text"), "0100", "0000", "0000"},
            .script = "result=1 timestamp=0xF1E2D3C4",
            .error_text = "",
            .seen = {"SnapshotVM path=\"path\" name=\"name\" description=\"text\" timestamp=0 credentials=0x701 "
                     "cache=0xc01 isCBT=1 isMemory=0 isQuiesce=0"},
            .frames = "",
            .out = "F1E2D3C4 00",
            .logged = {"debug: Process_VADPSnapshotVM()"},
            .input_failure = AdapterInput("SnapshotVM"),
            .error_failure = u"",
            .output_failure = AdapterOutput("SnapshotVM"),
            .room = 6,
        },
        {
            // The timestamp is sent after a failure too.
            .function = "SnapshotVM",
            .signature = "SIGNATURE_VADPSnapshotVM",
            .before = {},
            .in = {Str(""), Str("n"), Str(""), "0000", "0001", "0000"},
            .script = "result=0 timestamp=0x80000001 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"SnapshotVM path=\"\" name=\"n\" description=\"\" timestamp=0 "
                                             "credentials=null cache=null isCBT=0 isMemory=1 isQuiesce=0"} +
                    ErrorTaken("0x99"),
            .frames = "",
            .out = "80000001" + Str("boom"),
            .logged = {"debug: Process_VADPSnapshotVM()"},
            .input_failure = AdapterInput("SnapshotVM"),
            .error_failure = AdapterError("SnapshotVM"),
            .output_failure = AdapterOutput("SnapshotVM"),
            .room = 10,
        },
        {
            .function = "SnapshotVM",
            .signature = "SIGNATURE_VADPSnapshotVM",
            .before = {},
            .in = {Str("p"), Str(""), Str("d"), "0000", "0000", "8000"},
            .script = "result=1",
            .error_text = "",
            .seen = {"SnapshotVM path=\"p\" name=\"\" description=\"d\" timestamp=0 credentials=null cache=null "
                     "isCBT=0 isMemory=0 isQuiesce=1"},
            .frames = "",
            .out = "00000000 00",
            .logged = {"debug: Process_VADPSnapshotVM()"},
            .input_failure = AdapterInput("SnapshotVM"),
            .error_failure = u"",
            .output_failure = AdapterOutput("SnapshotVM"),
            .room = 6,
        },
        {
            .function = "StartBackupSession",
            .signature = "SIGNATURE_VADPStartBackupSession",
            .before = {BackupCredentials("0x701"), BackupOptions("0x201"), BackupOptions("0x202"),
                       BackupAcl("a", "0x401"), BackupAcl("b", "0x402"), BackupAcl("c", "0x403"),
                       BackupSession("0x501")},
            .in = {Str("vm"), "00000001", "00000002"},
            .script = "result=1 session=0x502 log=a level=2",
            .error_text = "",
            .seen = {"StartBackupSession path=\"vm\" credentials=0x701 session=null options=0x202 aclinfo=0x403"},
            .frames = "4D 00000008 00000002 61000000",
            .out = "00000001 00",
            .logged = {"debug: Process_VADPStartBackupSession()"},
            .input_failure = AdapterInput("StartBackupSession"),
            .error_failure = u"",
            .output_failure = AdapterOutput("StartBackupSession"),
            .room = 6,
        },
        {
            // -1 as the ACL information, and options beyond the last.
            .function = "StartBackupSession",
            .signature = "SIGNATURE_VADPStartBackupSession",
            .before = {BackupOptions("0x201"), BackupAcl("a", "0x401")},
            .in = {Str("vm"), "00000001", "FFFFFFFF"},
            .script = "result=1 session=0x501",
            .error_text = "",
            .seen = {"StartBackupSession path=\"vm\" credentials=null session=null options=null aclinfo=null"},
            .frames = "",
            .out = "00000000 00",
            .logged = {"debug: Process_VADPStartBackupSession()"},
            .input_failure = AdapterInput("StartBackupSession"),
            .error_failure = u"",
            .output_failure = AdapterOutput("StartBackupSession"),
            .room = 6,
        },
        {
            .function = "StartBackupSession",
            .signature = "SIGNATURE_VADPStartBackupSession",
            .before = {},
            .in = {Str("vm"), "00000000", "00000000"},
            .script = "result=0 session=0x502 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"StartBackupSession path=\"vm\" credentials=null session=null "
                                             "options=null aclinfo=null"} +
                    ErrorTaken("0x99"),
            .frames = "",
            .out = "FFFFFFFF" + Str("boom"),
            .logged = {"debug: Process_VADPStartBackupSession()"},
            .input_failure = AdapterInput("StartBackupSession"),
            .error_failure = AdapterError("StartBackupSession"),
            .output_failure = AdapterOutput("StartBackupSession"),
            .room = 10,
        },
        {
            .function = "EndBackupSession",
            .signature = "SIGNATURE_VADPEndBackupSession",
            .before = ThreeSessions(),
            .in = {"00000001"},
            .script = "result=1 session=0",
            .error_text = "",
            .seen = {"EndBackupSession session=0x502"},
            .frames = "",
            .out = "00",
            .logged = {"debug: Process_VADPEndBackupSession()"},
            .input_failure = AdapterInput("EndBackupSession"),
            .error_failure = u"",
            .output_failure = AdapterOutput("EndBackupSession"),
            .room = 2,
        },
        {
            .function = "EndBackupSession",
            .signature = "SIGNATURE_VADPEndBackupSession",
            .before = ThreeSessions(),
            .in = {"00000003"},
            .script = "result=0 error=0x99 log=a level=0",
            .error_text = "no such session",
            .seen = std::vector<std::string>{"EndBackupSession session=null"} + ErrorTaken("0x99"),
            .frames = "4D 00000008 00000000 61000000",
            .out = Str("no such session"),
            .logged = {"debug: Process_VADPEndBackupSession()"},
            .input_failure = AdapterInput("EndBackupSession"),
            .error_failure = AdapterError("EndBackupSession"),
            .output_failure = AdapterOutput("EndBackupSession"),
            .room = 17,
        },
        {
            .function = "GetBackupSessionFiles",
            .signature = "SIGNATURE_VADPGetBackupSessionFiles",
            .before = ThreeSessionsAnd({BackupListing("listing=0x301"), BackupListing("listing=0x302")}),
            .in = {"00000002", Str("dir")},
            .script = "result=1 listing=0x303 log=a level=1",
            .error_text = "",
            .seen = {"GetBackupSessionFiles session=0x503 path=\"dir\" listing=null"},
            .frames = "4D 00000008 00000001 61000000",
            .out = "00000002 00",
            .logged = {"debug: Process_VADPGetBackupSessionFiles()"},
            .input_failure = AdapterInput("GetBackupSessionFiles"),
            .error_failure = u"",
            .output_failure = AdapterOutput("GetBackupSessionFiles"),
            .room = 6,
        },
        {
            .function = "GetBackupSessionFiles",
            .signature = "SIGNATURE_VADPGetBackupSessionFiles",
            .before = {},
            .in = {"00000000", Str("")},
            .script = "result=0 listing=0x303 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"GetBackupSessionFiles session=null path=\"\" listing=null"} +
                    ErrorTaken("0x99"),
            .frames = "",
            .out = "FFFFFFFF" + Str("boom"),
            .logged = {"debug: Process_VADPGetBackupSessionFiles()"},
            .input_failure = AdapterInput("GetBackupSessionFiles"),
            .error_failure = AdapterError("GetBackupSessionFiles"),
            .output_failure = AdapterOutput("GetBackupSessionFiles"),
            .room = 10,
        },
        {
            // The numbers lie ahead of the items, and the index over the result.
            .function = "GetDiskChangeIDS",
            .signature = "SIGNATURE_VADPGetDiskChangeIDS",
            .before = {BackupCredentials("0x701"), BackupSession("0x501"), BackupSession("0x502")},
            .in = {Str("vm")},
            .script = "result=1 session=0x503 items=a:1:2:3,bc:-1:0xFFFFFFFFFFFFFFFE:0x80000004 log=x level=9",
            .error_text = "",
            .seen = {"GetDiskChangeIDS path=\"vm\" credentials=0x701 session=null listing=null"},
            .frames = "4D 00000008 00000009 78000000 FFFFFC19 00000002 00000001 61 0000000000000002 00000001 00000003 "
                      "00000002 6263 FFFFFFFFFFFFFFFE FFFFFFFF 80000004",
            .out = "00000002",
            .logged = {"debug: Process_VADPGetDiskChangeIDS()", "debug: Writing n_items==2"},
            .input_failure = AdapterInput("GetDiskChangeIDS"),
            .error_failure = u"",
            .output_failure = AdapterOutput("GetDiskChangeIDS"),
            .room = 4,
        },
        {
            // No listing, though it succeeds.
            .function = "GetDiskChangeIDS",
            .signature = "SIGNATURE_VADPGetDiskChangeIDS",
            .before = {},
            .in = {Str("")},
            .script = "result=1 session=0x501",
            .error_text = "",
            .seen = {"GetDiskChangeIDS path=\"\" credentials=null session=null listing=null"},
            .frames = "FFFFFC19 00000000",
            .out = "00000000",
            .logged = {"debug: Process_VADPGetDiskChangeIDS()", "debug: Writing n_items==0"},
            .input_failure = AdapterInput("GetDiskChangeIDS"),
            .error_failure = u"",
            .output_failure = AdapterOutput("GetDiskChangeIDS"),
            .room = 4,
        },
        {
            // The text lies over the result; nothing of the listing is sent.
            .function = "GetDiskChangeIDS",
            .signature = "SIGNATURE_VADPGetDiskChangeIDS",
            .before = {},
            .in = {Str("vm")},
            .script = "result=0 session=0x501 items=a:1:2:3 error=0x99 log=x level=9",
            .error_text = "boom",
            .seen = std::vector<std::string>{"GetDiskChangeIDS path=\"vm\" credentials=null session=null "
                                             "listing=null"} +
                    ErrorTaken("0x99"),
            .frames = "4D 00000008 00000009 78000000",
            .out = Str("boom"),
            .logged = {"debug: Process_VADPGetDiskChangeIDS()"},
            .input_failure = AdapterInput("GetDiskChangeIDS"),
            .error_failure = u"", // a test of its own
            .output_failure = AdapterOutput("GetDiskChangeIDS"),
            .room = 4,
        },
        {
            // Whatever the parent names, it is the first session.
            .function = "GetDiskChangedSectorNum",
            .signature = "SIGNATURE_VADPGetDiskChangedSectorNum",
            .before = ThreeSessions(),
            .in = {"00000002", "87654321", Str("id")},
            .script = "result=1 session=0x5FF number=0xFEDCBA98",
            .error_text = "",
            .seen = {"GetDiskChangedSectorNum session=0x501 second=2271560481 number=0 third=\"id\""},
            .frames = "",
            .out = "FEDCBA98 00",
            .logged = {"debug: Process_VADPGetDiskChangedSectorNum()"},
            .input_failure = AdapterInput("GetDiskChangedSectorNum"),
            .error_failure = u"",
            .output_failure = AdapterOutput("GetDiskChangedSectorNum"),
            .room = 6,
        },
        {
            .function = "GetDiskChangedSectorNum",
            .signature = "SIGNATURE_VADPGetDiskChangedSectorNum",
            .before = {},
            .in = {"00000000", "00000001", Str("")},
            .script = "result=0 number=5 error=0x99 log=x level=9",
            .error_text = "boom",
            .seen = std::vector<std::string>{"GetDiskChangedSectorNum session=null second=1 number=0 third=\"\""} +
                    ErrorTaken("0x99"),
            .frames = "4D 00000008 00000009 78000000",
            .out = "00000005" + Str("boom"),
            .logged = {"debug: Process_VADPGetDiskChangedSectorNum()"},
            .input_failure = AdapterInput("GetDiskChangedSectorNum"),
            .error_failure = AdapterError("GetDiskChangedSectorNum"),
            .output_failure = AdapterOutput("GetDiskChangedSectorNum"),
            .room = 10,
        },
    };
}

// Backup files. A block's data lie 8 bytes into the section before and after the call.
std::vector<AdapterRow> BackupFileRows()
{
    return {
        {
            // Its result is a number: one without a low byte is a success too.
            .function = "OpenBackupFile",
            .signature = "SIGNATURE_VADPOpenBackupFile",
            .before = ThreeSessionsAnd({BackupFile("0x601"), BackupFile("0x602")}),
            .in = {"00000001", Str("disk")},
            .script = "result=0xFEDCBA00 file=0x603 log=a level=1",
            .error_text = "",
            .seen = {"OpenBackupFile session=0x502 path=\"disk\" file=null"},
            .frames = "4D 00000008 00000001 61000000",
            .out = "00000002 FEDCBA00 00",
            .logged = {"debug: Process_VADPOpenBackupFile()"},
            .input_failure = AdapterInput("OpenBackupFile"),
            .error_failure = u"",
            .output_failure = AdapterOutput("OpenBackupFile"),
            .room = 10,
        },
        {
            .function = "OpenBackupFile",
            .signature = "SIGNATURE_VADPOpenBackupFile",
            .before = ThreeSessions(),
            .in = {"00000003", Str("")},
            .script = "result=0 file=0x601 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"OpenBackupFile session=null path=\"\" file=null"} + ErrorTaken("0x99"),
            .frames = "",
            .out = "FFFFFFFF 00000000" + Str("boom"),
            .logged = {"debug: Process_VADPOpenBackupFile()"},
            .input_failure = AdapterInput("OpenBackupFile"),
            .error_failure = AdapterError("OpenBackupFile"),
            .output_failure = AdapterOutput("OpenBackupFile"),
            .room = 14,
        },
        {
            .function = "ReOpenBackupFile",
            .signature = "SIGNATURE_VADPReOpenBackupFile",
            .before = ThreeSessionsAnd({BackupFile("0x601"), BackupFile("0x602")}),
            .in = {"00000002", Str("disk")},
            .script = "result=1 file=0x603",
            .error_text = "",
            .seen = {"ReOpenBackupFile session=0x503 path=\"disk\" file=null"},
            .frames = "",
            .out = "00000002 00",
            .logged = {"debug: Process_VADPReOpenBackupFile()"},
            .input_failure = AdapterInput("ReOpenBackupFile"),
            .error_failure = u"",
            .output_failure = AdapterOutput("ReOpenBackupFile"),
            .room = 6,
        },
        {
            .function = "ReOpenBackupFile",
            .signature = "SIGNATURE_VADPReOpenBackupFile",
            .before = {},
            .in = {"FFFFFFFF", Str("")},
            .script = "result=0 file=0x601 error=0x99 log=a level=1",
            .error_text = "boom",
            .seen = std::vector<std::string>{"ReOpenBackupFile session=null path=\"\" file=null"} + ErrorTaken("0x99"),
            .frames = "4D 00000008 00000001 61000000",
            .out = "FFFFFFFF" + Str("boom"),
            .logged = {"debug: Process_VADPReOpenBackupFile()"},
            .input_failure = AdapterInput("ReOpenBackupFile"),
            .error_failure = AdapterError("ReOpenBackupFile"),
            .output_failure = AdapterOutput("ReOpenBackupFile"),
            .room = 10,
        },
        {
            .function = "ReadBackupFile",
            .signature = "SIGNATURE_VADPReadBackupFile",
            .before = ThreeFiles(),
            .in = {"00000001", "00000005 A1A2A3A4A5"},
            .script = "result=0x7FFFFFFE data=B1B2B3 count=0x123456789ABCDEF0 log=a level=1",
            .error_text = "",
            .seen = {"ReadBackupFile file=0x602 data=A1A2A3A4A5 length=5 count=18446744073709551615"},
            .frames = "4D 00000008 00000001 61000000",
            .out = "00000005 00000005 B1B2B3A4A5 7FFFFFFE 123456789ABCDEF0 00",
            .logged = {},
            .input_failure = AdapterInput("ReadBackupFile"),
            .error_failure = u"",
            .output_failure = AdapterOutput("ReadBackupFile"),
            .room = 31,
        },
        {
            // A count that the adapter didn't set is -1.
            .function = "ReadBackupFile",
            .signature = "SIGNATURE_VADPReadBackupFile",
            .before = ThreeFiles(),
            .in = {"00000003", "00000005 A1A2A3A4A5"},
            .script = "result=0xFFFFFFFF error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"ReadBackupFile file=null data=A1A2A3A4A5 length=5 "
                                             "count=18446744073709551615"} +
                    ErrorTaken("0x99"),
            .frames = "",
            .out = "00000005 00000005 A1A2A3A4A5 FFFFFFFF FFFFFFFFFFFFFFFF" + Str("boom"),
            .logged = {},
            .input_failure = AdapterInput("ReadBackupFile"),
            .error_failure = AdapterError("ReadBackupFile"),
            .output_failure = AdapterOutput("ReadBackupFile"),
            .room = 35,
        },
        {
            // A result of 0 is a success.
            .function = "ReadBackupFile",
            .signature = "SIGNATURE_VADPReadBackupFile",
            .before = {},
            .in = {"00000000", "00000000"},
            .script = "result=0 count=0",
            .error_text = "",
            .seen = {"ReadBackupFile file=null data= length=0 count=18446744073709551615"},
            .frames = "",
            .out = "00000000 00000000 00000000 0000000000000000 00",
            .logged = {},
            .input_failure = AdapterInput("ReadBackupFile"),
            .error_failure = u"",
            .output_failure = AdapterOutput("ReadBackupFile"),
            .room = 26,
        },
        {
            .function = "ReadFileACL",
            .signature = "SIGNATURE_VADPReadFileACL",
            .before = ThreeFiles(),
            .in = {"00000002", "00000005 A1A2A3A4A5"},
            .script = "result=3 data=B1B2B3",
            .error_text = "",
            .seen = {"ReadFileACL file=0x603 data=A1A2A3A4A5 length=5"},
            .frames = "",
            .out = "00000005 00000005 B1B2B3A4A5 00000003 00",
            .logged = {"debug: Process_VADPReadFileACL()"},
            .input_failure = AdapterInput("ReadFileACL"),
            .error_failure = u"",
            .output_failure = AdapterOutput("ReadFileACL"),
            .room = 23,
        },
        {
            // 0 is a success.
            .function = "ReadFileACL",
            .signature = "SIGNATURE_VADPReadFileACL",
            .before = ThreeFiles(),
            .in = {"00000001", "00000001 A1"},
            .script = "result=0",
            .error_text = "boom",
            .seen = {"ReadFileACL file=0x602 data=A1 length=1"},
            .frames = "",
            .out = "00000001 00000001 A1 00000000 00",
            .logged = {"debug: Process_VADPReadFileACL()"},
            .input_failure = AdapterInput("ReadFileACL"),
            .error_failure = u"",
            .output_failure = AdapterOutput("ReadFileACL"),
            .room = 19,
        },
        {
            .function = "ReadFileACL",
            .signature = "SIGNATURE_VADPReadFileACL",
            .before = {},
            .in = {"00000000", "00000001 A1"},
            .script = "result=0x80000000 error=0x99 log=a level=1",
            .error_text = "boom",
            .seen = std::vector<std::string>{"ReadFileACL file=null data=A1 length=1"} + ErrorTaken("0x99"),
            .frames = "4D 00000008 00000001 61000000",
            .out = "00000001 00000001 A1 80000000" + Str("boom"),
            .logged = {"debug: Process_VADPReadFileACL()"},
            .input_failure = AdapterInput("ReadFileACL"),
            .error_failure = AdapterError("ReadFileACL"),
            .output_failure = AdapterOutput("ReadFileACL"),
            .room = 23,
        },
        {
            .function = "CloseBackupFile",
            .signature = "SIGNATURE_VADPCloseBackupFile",
            .before = ThreeFiles(),
            .in = {"00000001"},
            .script = "result=1 file=0",
            .error_text = "",
            .seen = {"CloseBackupFile file=0x602"},
            .frames = "",
            .out = "00",
            .logged = {"debug: Process_VADPCloseBackupFile()"},
            .input_failure = AdapterInput("CloseBackupFile"),
            .error_failure = u"",
            .output_failure = AdapterOutput("CloseBackupFile"),
            .room = 2,
        },
        {
            .function = "CloseBackupFile",
            .signature = "SIGNATURE_VADPCloseBackupFile",
            .before = ThreeFiles(),
            .in = {"80000001"},
            .script = "result=0 error=0x99 log=a level=1",
            .error_text = "boom",
            .seen = std::vector<std::string>{"CloseBackupFile file=null"} + ErrorTaken("0x99"),
            .frames = "4D 00000008 00000001 61000000",
            .out = Str("boom"),
            .logged = {"debug: Process_VADPCloseBackupFile()"},
            .input_failure = AdapterInput("CloseBackupFile"),
            .error_failure = AdapterError("CloseBackupFile"),
            .output_failure = AdapterOutput("CloseBackupFile"),
            .room = 6,
        },
        {
            .function = "GetReadBufferUse",
            .signature = "SIGNATURE_VADPGetReadBufferUse",
            .before = ThreeFiles(),
            .in = {"00000001"},
            .script = "result=0x89ABCDEF log=a level=1",
            .error_text = "",
            .seen = {"GetReadBufferUse file=0x602"},
            .frames = "4D 00000008 00000001 61000000",
            .out = "89ABCDEF",
            .logged = {"debug: Process_VADPGetReadBufferUse()"},
            .input_failure = AdapterInput("GetReadBufferUse"),
            .error_failure = u"",
            .output_failure = AdapterOutput("GetReadBufferUse"),
            .room = 4,
        },
        {
            // Nothing is asked for an error text, whatever the number.
            .function = "GetReadBufferUse",
            .signature = "SIGNATURE_VADPGetReadBufferUse",
            .before = {},
            .in = {"FFFFFFFF"},
            .script = "result=0",
            .error_text = "boom",
            .seen = {"GetReadBufferUse file=null"},
            .frames = "",
            .out = "00000000",
            .logged = {"debug: Process_VADPGetReadBufferUse()"},
            .input_failure = AdapterInput("GetReadBufferUse"),
            .error_failure = u"",
            .output_failure = AdapterOutput("GetReadBufferUse"),
            .room = 4,
        },
        {
            .function = "getIndexBlocks",
            .signature = "SIGNATURE_VADPgetIndexBlocks",
            .before = ThreeFiles(),
            .in = {"00000002"},
            .script = "result=0xFFFFFFFF log=a level=1",
            .error_text = "boom",
            .seen = {"getIndexBlocks file=0x603"},
            .frames = "4D 00000008 00000001 61000000",
            .out = "FFFFFFFF",
            .logged = {"debug: Process_VADPgetIndexBlocks()"},
            .input_failure = AdapterInput("getIndexBlocks"),
            .error_failure = u"",
            .output_failure = AdapterOutput("getIndexBlocks"),
            .room = 4,
        },
        {
            .function = "getIndexBlocks",
            .signature = "SIGNATURE_VADPgetIndexBlocks",
            .before = {},
            .in = {"00000000"},
            .script = "result=0",
            .error_text = "boom",
            .seen = {"getIndexBlocks file=null"},
            .frames = "",
            .out = "00000000",
            .logged = {"debug: Process_VADPgetIndexBlocks()"},
            .input_failure = AdapterInput("getIndexBlocks"),
            .error_failure = u"",
            .output_failure = AdapterOutput("getIndexBlocks"),
            .room = 4,
        },
        {
            .function = "ReadBlock",
            .signature = "SIGNATURE_VADPReadBlock",
            .before = ThreeFiles(),
            .in = {"00000001", "00000004 A1A2A3A4", "8000000000000010"},
            .script = "result=2 peek=4 data=B1B2 log=a level=1",
            .error_text = "",
            .seen = {"ReadBlock file=0x602 data=A1A2A3A4 block=9223372036854775824"},
            .frames = "4D 00000008 00000001 61000000",
            .out = "00000004 00000004 B1B2A3A4 00000002 00",
            .logged = {},
            .input_failure = AdapterInput("ReadBlock"),
            .error_failure = u"",
            .output_failure = AdapterOutput("ReadBlock"),
            .room = 22,
        },
        {
            // 0 is a success.
            .function = "ReadBlock",
            .signature = "SIGNATURE_VADPReadBlock",
            .before = ThreeFiles(),
            .in = {"00000000", "00000004 A1A2A3A4", "0000000000000000"},
            .script = "result=0 peek=4",
            .error_text = "boom",
            .seen = {"ReadBlock file=0x601 data=A1A2A3A4 block=0"},
            .frames = "",
            .out = "00000004 00000004 A1A2A3A4 00000000 00",
            .logged = {},
            .input_failure = AdapterInput("ReadBlock"),
            .error_failure = u"",
            .output_failure = AdapterOutput("ReadBlock"),
            .room = 22,
        },
        {
            .function = "ReadBlock",
            .signature = "SIGNATURE_VADPReadBlock",
            .before = ThreeFiles(),
            .in = {"00000003", "00000004 A1A2A3A4", "0000000000000000"},
            .script = "result=0xFFFFFFFE peek=4 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"ReadBlock file=null data=A1A2A3A4 block=0"} + ErrorTaken("0x99"),
            .frames = "",
            .out = "00000004 00000004 A1A2A3A4 FFFFFFFE" + Str("boom"),
            .logged = {},
            .input_failure = AdapterInput("ReadBlock"),
            .error_failure = AdapterError("ReadBlock"),
            .output_failure = AdapterOutput("ReadBlock"),
            .room = 26,
        },
        {
            .function = "ReadBlockSignature",
            .signature = "SIGNATURE_VADPReadBlockSignature",
            .before = ThreeFiles(),
            .in = {"00000001", "00000004 A1A2A3A4", "8000000000000010", "F0000003"},
            .script = "result=0 peek=4 data=B1B2",
            .error_text = "",
            .seen = {"ReadBlockSignature file=0x602 data=A1A2A3A4 block=9223372036854775824 kind=4026531843"},
            .frames = "",
            .out = "00000004 00000004 B1B2A3A4 00000000 00",
            .logged = {},
            .input_failure = AdapterInput("ReadBlockSignature"),
            .error_failure = u"",
            .output_failure = AdapterOutput("ReadBlockSignature"),
            .room = 22,
        },
        {
            .function = "ReadBlockSignature",
            .signature = "SIGNATURE_VADPReadBlockSignature",
            .before = {},
            .in = {"00000000", "00000004 A1A2A3A4", "0000000000000000", "00000000"},
            .script = "result=0x80000000 peek=4 error=0x99 log=a level=1",
            .error_text = "boom",
            .seen = std::vector<std::string>{"ReadBlockSignature file=null data=A1A2A3A4 block=0 kind=0"} +
                    ErrorTaken("0x99"),
            .frames = "4D 00000008 00000001 61000000",
            .out = "00000004 00000004 A1A2A3A4 80000000" + Str("boom"),
            .logged = {},
            .input_failure = AdapterInput("ReadBlockSignature"),
            .error_failure = AdapterError("ReadBlockSignature"),
            .output_failure = AdapterOutput("ReadBlockSignature"),
            .room = 26,
        },
    };
}

std::vector<AdapterRow> MakeBackupRows()
{
    std::vector<AdapterRow> rows = BackupSessionRows();
    for (AdapterRow &row : BackupFileRows())
        rows.push_back(std::move(row));
    return rows;
}

} // namespace

const std::vector<AdapterRow> &BackupRows()
{
    static const std::vector<AdapterRow> rows = MakeBackupRows();
    return rows;
}

namespace {

// What comes of a snapshot one of whose values can't be read, the adapter having succeeded.
Cut SnapshotCut(const std::string &path, const std::string &name, const std::string &description, bool is_cbt,
                bool is_memory)
{
    return {std::vector<std::string>{"SnapshotVM path=\"" + path + "\" name=\"" + name + "\" description=\"" +
                                     description + "\" timestamp=0 credentials=0x701 cache=0xc01 isCBT=" +
                                     (is_cbt ? "1" : "0") + " isMemory=" + (is_memory ? "1" : "0") + " isQuiesce=0"} +
                ErrorTaken("null"),
            StatusFailed("none") + "F1E2D3C4"};
}

} // namespace

const std::vector<CommandRow> &BackupCommands()
{
    // What the calls that leave the adapter alone come to.
    const Cut skipped = {ErrorTaken("null"), StatusFailed("none")};
    static const std::vector<CommandRow> rows = {
        {
            // No log block: what the adapter logs waits.
            .function = "InitVixDiskLib",
            .command = 23,
            .signature = "SIGNATURE_VADPInitVixDiskLib",
            .before = {},
            .in = {Text("/cfg"), Text("/lib")},
            .script = "result=1 log=up level=1",
            .error_text = "none",
            .seen = {"InitVixDiskLib config=\"/cfg\" lib=\"/lib\""},
            .reply = "00000001",
            .logged = {"debug: ProcessAlt_VADPInitVixDiskLib()", "debug: config==/cfg, lib==/lib"},
            .cuts = EachCut(2, {ErrorTaken("null"), "FFFFFFFF 00000004 6E6F6E65"}),
        },
        {
            .function = "InitVixDiskLib",
            .command = 23,
            .signature = "SIGNATURE_VADPInitVixDiskLib",
            .before = {},
            .in = {Text(""), Text("l")},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"InitVixDiskLib config=\"\" lib=\"l\""} + ErrorTaken("0x99"),
            .reply = "FFFFFFFF 00000004 626F6F6D",
            .logged = {"debug: ProcessAlt_VADPInitVixDiskLib()", "debug: config==, lib==l"},
            .cuts = EachCut(2, {ErrorTaken("null"), "FFFFFFFF 00000004 626F6F6D"}),
        },
        {
            .function = "ExitVixDiskLib",
            .command = 24,
            .signature = "SIGNATURE_VADPExitVixDiskLib",
            .before = {},
            .in = {},
            .script = "",
            .error_text = "",
            .seen = {"ExitVixDiskLib"},
            .reply = no_log,
            .logged = {"debug: ProcessAlt_VADPExitVixDiskLib()"},
            .cuts = {},
        },
        {
            .function = "ExitVixDiskLib",
            .command = 24,
            .signature = "SIGNATURE_VADPExitVixDiskLib",
            .before = {},
            .in = {},
            .script = "log=bye level=3",
            .error_text = "",
            .seen = {"ExitVixDiskLib"},
            .reply = "FFFFFF9D 00000003 627965 00000003 FFFFFC19",
            .logged = {"debug: ProcessAlt_VADPExitVixDiskLib()"},
            .cuts = {},
        },
        {
            // The adapter is called whatever can be read, but only a call with all values succeeds.
            .function = "SnapshotVM",
            .command = 49,
            .signature = "SIGNATURE_VADPSnapshotVM",
            .before = {BackupCredentials("0x701"), BackupListing("listing=0x301 cache=0xC01")},
            .in = {Text("path"), Text("name"), Text("text"), Number("01000000"), Number("00000000"),
                   Number("00000000")},
            .script = "result=1 timestamp=0xF1E2D3C4",
            .error_text = "none",
            .seen = {"SnapshotVM path=\"path\" name=\"name\" description=\"text\" timestamp=0 credentials=0x701 "
                     "cache=0xc01 isCBT=1 isMemory=0 isQuiesce=0"},
            .reply = status_okay + "F1E2D3C4",
            .logged = {"debug: ProcessAlt_VADPSnapshotVM()", "debug: About to read path etc.",
                       "debug: path==path, name==name, description==text, isCBT==16777216, isMemory==0, "
                       "isQuiesce==0"},
            .cuts = {SnapshotCut("", "", "", false, false), SnapshotCut("path", "", "", false, false),
                     SnapshotCut("path", "name", "", false, false), SnapshotCut("path", "name", "text", false, false),
                     SnapshotCut("path", "name", "text", true, false),
                     SnapshotCut("path", "name", "text", true, false)},
        },
        {
            .function = "SnapshotVM",
            .command = 49,
            .signature = "SIGNATURE_VADPSnapshotVM",
            .before = {BackupCredentials("0x701"), BackupListing("listing=0x301 cache=0xC01")},
            .in = {Text("p"), Text("n"), Text("d"), Flag(false), Flag(true), Flag(false)},
            .script = "result=1 timestamp=0xF1E2D3C4",
            .error_text = "none",
            .seen = {"SnapshotVM path=\"p\" name=\"n\" description=\"d\" timestamp=0 credentials=0x701 cache=0xc01 "
                     "isCBT=0 isMemory=1 isQuiesce=0"},
            .reply = status_okay + "F1E2D3C4",
            .logged = {"debug: ProcessAlt_VADPSnapshotVM()", "debug: About to read path etc.",
                       "debug: path==p, name==n, description==d, isCBT==0, isMemory==1, isQuiesce==0"},
            .cuts = {SnapshotCut("", "", "", false, false), SnapshotCut("p", "", "", false, false),
                     SnapshotCut("p", "n", "", false, false), SnapshotCut("p", "n", "d", false, false),
                     SnapshotCut("p", "n", "d", false, false), SnapshotCut("p", "n", "d", false, true)},
        },
        {
            // The timestamp follows the text of a failure.
            .function = "SnapshotVM",
            .command = 49,
            .signature = "SIGNATURE_VADPSnapshotVM",
            .before = {},
            .in = {Text(""), Text(""), Text(""), Flag(false), Flag(false), Flag(true)},
            .script = "result=0 timestamp=0x80000001 error=0x99 log=a level=1",
            .error_text = "boom",
            .seen = std::vector<std::string>{"SnapshotVM path=\"\" name=\"\" description=\"\" timestamp=0 "
                                             "credentials=null cache=null isCBT=0 isMemory=0 isQuiesce=1"} +
                    ErrorTaken("0x99"),
            .reply = "FFFFFF9D 00000001 61 00000001 FFFFFC19 FFFFFFFF 00000004 626F6F6D 80000001",
            .logged = {"debug: ProcessAlt_VADPSnapshotVM()", "debug: About to read path etc.",
                       "debug: path==, name==, description==, isCBT==0, isMemory==0, isQuiesce==1"},
            .cuts = EachCut(6, {std::vector<std::string>{"SnapshotVM path=\"\" name=\"\" description=\"\" timestamp=0 "
                                                         "credentials=null cache=null isCBT=0 isMemory=0 isQuiesce=0"} +
                                    ErrorTaken("0x99"),
                                "FFFFFF9D 00000001 61 00000001 FFFFFC19 FFFFFFFF 00000004 626F6F6D 80000001"}),
        },
        {
            // The options are the first ones.
            .function = "StartBackupSession",
            .command = 6,
            .signature = "SIGNATURE_VADPStartBackupSession",
            .before = {BackupCredentials("0x701"), BackupOptions("0x201"), BackupOptions("0x202"),
                       BackupAcl("a", "0x401"), BackupAcl("b", "0x402"), BackupSession("0x501"),
                       BackupSession("0x502")},
            .in = {Text("vm"), Number("00000001")},
            .script = "result=1 session=0x503",
            .error_text = "none",
            .seen = {"StartBackupSession path=\"vm\" credentials=0x701 session=null options=0x201 aclinfo=0x402"},
            .reply = no_log + "00000002",
            .logged = {"debug: ProcessAlt_VADPStartBackupSession()"},
            .cuts = EachCut(2, skipped),
        },
        {
            // There are no options, and no ACL information of a negative number.
            .function = "StartBackupSession",
            .command = 6,
            .signature = "SIGNATURE_VADPStartBackupSession",
            .before = {BackupAcl("a", "0x401")},
            .in = {Text("vm"), Number("FFFFFFFE")},
            .script = "result=1 session=0x501 log=a level=1",
            .error_text = "none",
            .seen = {"StartBackupSession path=\"vm\" credentials=null session=null options=null aclinfo=null"},
            .reply = "FFFFFF9D 00000001 61 00000001 FFFFFC19 00000000",
            .logged = {"debug: ProcessAlt_VADPStartBackupSession()"},
            .cuts = EachCut(2, skipped),
        },
        {
            // -1 stands ahead of the text.
            .function = "StartBackupSession",
            .command = 6,
            .signature = "SIGNATURE_VADPStartBackupSession",
            .before = {},
            .in = {Text(""), Number("00000000")},
            .script = "result=0 session=0x501 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"StartBackupSession path=\"\" credentials=null session=null "
                                             "options=null aclinfo=null"} +
                    ErrorTaken("0x99"),
            .reply = StatusFailed("boom"),
            .logged = {"debug: ProcessAlt_VADPStartBackupSession()"},
            .cuts = EachCut(2, {ErrorTaken("null"), StatusFailed("boom")}),
        },
        {
            .function = "EndBackupSession",
            .command = 7,
            .signature = "SIGNATURE_VADPEndBackupSession",
            .before = ThreeSessions(),
            .in = {Number("00000001")},
            .script = "result=1 session=0",
            .error_text = "none",
            .seen = {"EndBackupSession session=0x502"},
            .reply = status_okay,
            .logged = {"debug: ProcessAlt_VADPEndBackupSession()"},
            .cuts = {skipped},
        },
        {
            .function = "EndBackupSession",
            .command = 7,
            .signature = "SIGNATURE_VADPEndBackupSession",
            .before = ThreeSessions(),
            .in = {Number("00000003")},
            .script = "result=0 error=0x99 log=a level=1",
            .error_text = "none",
            .seen = std::vector<std::string>{"EndBackupSession session=null"} + ErrorTaken("0x99"),
            .reply = "FFFFFF9D 00000001 61 00000001 FFFFFC19 FFFFFFFF 00000004 6E6F6E65",
            .logged = {"debug: ProcessAlt_VADPEndBackupSession()"},
            .cuts = {skipped},
        },
        {
            .function = "EndBackupSession",
            .command = 7,
            .signature = "SIGNATURE_VADPEndBackupSession",
            .before = ThreeSessions(),
            .in = {Number("FFFFFFFF")},
            .script = "result=1",
            .error_text = "none",
            .seen = {"EndBackupSession session=null"},
            .reply = status_okay,
            .logged = {"debug: ProcessAlt_VADPEndBackupSession()"},
            .cuts = {skipped},
        },
        {
            // The index stands behind the items.
            .function = "GetDiskChangeIDS",
            .command = 44,
            .signature = "SIGNATURE_VADPGetDiskChangeIDS",
            .before = {BackupCredentials("0x701"), BackupSession("0x501"), BackupSession("0x502")},
            .in = {Text("vm")},
            .script = "result=1 session=0x503 items=a:1:2:3,bc:-1:0xFFFFFFFFFFFFFFFE:0x80000004 log=x level=9",
            .error_text = "none",
            .seen = {"GetDiskChangeIDS path=\"vm\" credentials=0x701 session=null listing=null"},
            .reply = "FFFFFF9D 00000001 78 00000009 FFFFFC19 00000001 00000002 "
                     "00000001 61 0000000000000002 00000001 00000003 "
                     "00000002 6263 FFFFFFFFFFFFFFFE FFFFFFFF 80000004 00000002",
            .logged = {"debug: ProcessAlt_VADPGetDiskChangeIDS()", "debug: Writing n_items==2"},
            .cuts = {skipped},
        },
        {
            // No listing, though it succeeds.
            .function = "GetDiskChangeIDS",
            .command = 44,
            .signature = "SIGNATURE_VADPGetDiskChangeIDS",
            .before = {BackupSession("0x501")},
            .in = {Text("")},
            .script = "result=1 session=0x502",
            .error_text = "none",
            .seen = {"GetDiskChangeIDS path=\"\" credentials=null session=null listing=null"},
            .reply = status_okay + "00000000 00000001",
            .logged = {"debug: ProcessAlt_VADPGetDiskChangeIDS()", "debug: Writing n_items==0"},
            .cuts = {skipped},
        },
        {
            // Nothing of the listing is sent.
            .function = "GetDiskChangeIDS",
            .command = 44,
            .signature = "SIGNATURE_VADPGetDiskChangeIDS",
            .before = {},
            .in = {Text("vm")},
            .script = "result=0 session=0x501 items=a:1:2:3 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"GetDiskChangeIDS path=\"vm\" credentials=null session=null "
                                             "listing=null"} +
                    ErrorTaken("0x99"),
            .reply = StatusFailed("boom"),
            .logged = {"debug: ProcessAlt_VADPGetDiskChangeIDS()"},
            .cuts = {{ErrorTaken("null"), StatusFailed("boom")}},
        },
        {
            // Here the session is the one that the parent names.
            .function = "GetDiskChangedSectorNum",
            .command = 45,
            .signature = "SIGNATURE_VADPGetDiskChangedSectorNum",
            .before = ThreeSessions(),
            .in = {Number("00000002"), Number("87654321"), Text("id")},
            .script = "result=1 session=0x5FF number=0xFEDCBA98",
            .error_text = "none",
            .seen = {"GetDiskChangedSectorNum session=0x503 second=2271560481 number=0 third=\"id\""},
            .reply = status_okay + "FEDCBA98",
            .logged = {"debug: ProcessAlt_VADPGetDiskChangedSectorNum()"},
            .cuts = EachCut(3, skipped),
        },
        {
            // The number is not sent after a failure.
            .function = "GetDiskChangedSectorNum",
            .command = 45,
            .signature = "SIGNATURE_VADPGetDiskChangedSectorNum",
            .before = ThreeSessions(),
            .in = {Number("FFFFFFFF"), Number("00000001"), Text("")},
            .script = "result=0 number=5 error=0x99 log=a level=1",
            .error_text = "none",
            .seen = std::vector<std::string>{"GetDiskChangedSectorNum session=null second=1 number=0 third=\"\""} +
                    ErrorTaken("0x99"),
            .reply = "FFFFFF9D 00000001 61 00000001 FFFFFC19 FFFFFFFF 00000004 6E6F6E65",
            .logged = {"debug: ProcessAlt_VADPGetDiskChangedSectorNum()"},
            .cuts = EachCut(3, skipped),
        },
    };
    return rows;
}

} // namespace kessil::test
