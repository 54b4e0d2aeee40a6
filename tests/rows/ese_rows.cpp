#include "rows/ese_rows.h"

namespace kessil::test {

const std::vector<Row> &EseRows()
{
    using Elements = std::vector<std::string>;
    const auto Usual = [](const char *function, const char *signature, const Elements &in, const char *script,
                          const char *recorded, const std::string &out, std::uint64_t room) {
        return Row{function, signature, in, script, recorded, out, InputOf(function), OutputOf(function), room};
    };
    const std::string two_instances = "00000002"
                                      // The first has two databases; the second of these has no list of streams.
                                      "0102030405060708 6F00 6E00 6500 0000 00000007 00000002"
                                      "6D00 6100 6900 6C00 0000  0000000C EEEEEEEE 6100 0000 6200 6300 0000 0000"
                                      "00000010 101112131415161718191A1B1C1D1E1F  00000003 80000001"
                                      "7000 7500 6200 0000  00000004 EEEEEEEE 0000 0000"
                                      "00000010 F0F1F2F3F4F5F6F7F8F9FAFBFCFDFEFF  00000004 00000002"
                                      "00000000"
                                      // The second has two icons, of which one is empty.
                                      "0000000000000002 0000 FFFFFFFF 00000000 00000002"
                                      "00000003 EEEE A1A2A3  00000000 EE";
    const std::string two_registered = "00000002"
                                       "6D00 7300 0000 0000 00000001 00000004 B1B2B3B4"
                                       "0000 6500 7000 0000 80000010 00000000 EEEEEEEE";
    static const std::vector<Row> rows = {
        // Backup
        Growing(Usual("HrESEBackupPrepare", "SIG_HR_ESE_BACKUP_PREPARE", {"7300 0000", "6100 6E00 0000"},
                      "context=0x99AABBCC11223344 instances=2 error=5",
                      R"( server="s" annotation="an" count=0 instances=null)",
                      "7300 0000 6100 6E00 0000 11223344 00000000" + two_instances + "00000000", 30),
                245),
        Usual("HrESEBackupPrepare", "SIG_HR_ESE_BACKUP_PREPARE", {"0000", "0000"}, "result=5 error=0x1F",
              R"( server="" annotation="" count=0 instances=null)", "0000 0000 00000000 00000005 00000000 0000001F",
              24),
        // Instances of a call that failed are handed on all the same.
        Growing(Usual("HrESEBackupPrepare", "SIG_HR_ESE_BACKUP_PREPARE", {"7300 0000", "6100 6E00 0000"},
                      "context=1 instances=2 result=0x80000005 error=0x1F",
                      R"( server="s" annotation="an" count=0 instances=null)",
                      "7300 0000 6100 6E00 0000 00000001 80000005" + two_instances + "0000001F", 30),
                245),
        Usual("HrESEBackupSetup", "SIGNATURE_ESE_BACKUP_SETUP", {"FFFFFFFE", "8000000000000001", "80000003"}, "error=5",
              " context=0xfffffffe instance=0x8000000000000001 type=0x80000003",
              "FFFFFFFE 8000000000000001 80000003 00000000 00000000", 24),
        Usual("HrESEBackupSetup", "SIGNATURE_ESE_BACKUP_SETUP", {"00000001", "0000000000000002", "00000003"},
              "result=7 error=8", " context=0x1 instance=0x2 type=0x3",
              "00000001 0000000000000002 00000003 00000007 00000008", 24),
        // The number of sections is 1, and no parent sends it.
        Usual("HrESEBackupOpenFile", "SIGNATURE_ESE_BACKUP_OPEN_FILE", {"FFFFFFFE", "6600 3D26 0000", "80000003"},
              "file=0x99AABBCC11223344 size=0x0102030405060708 error=5",
              R"( context=0xfffffffe name="f\u263D" read_hint=0x80000003 sections=1)",
              "FFFFFFFE 6600 3D26 0000 80000003 11223344 0102030405060708 00000000 00000000", 36),
        Usual("HrESEBackupOpenFile", "SIGNATURE_ESE_BACKUP_OPEN_FILE", {"00000001", "0000", "00000000"},
              "result=0xFFFFFC0C error=0xE0000001", R"( context=0x1 name="" read_hint=0x0 sections=1)",
              "00000001 0000 00000000 00000000 0000000000000000 FFFFFC0C E0000001", 32),
        // A handle of a call that failed is handed on all the same, here and in the rows of its kind.
        Usual("HrESEBackupOpenFile", "SIGNATURE_ESE_BACKUP_OPEN_FILE", {"00000001", "6600 0000", "00000002"},
              "file=0x99AABBCC11223344 size=0x0102030405060708 result=7 error=8",
              R"( context=0x1 name="f" read_hint=0x2 sections=1)",
              "00000001 6600 0000 00000002 11223344 0102030405060708 00000007 00000008", 34),
        Usual("HrESEBackupReadFile", "SIGNATURE_ESE_BACKUP_READ_FILE",
              {"0000000A", "FFFFFFFE", "00000010 EEEEEEEE A0A1A2A3A4A5A6A7A8A9AAABACADAEAF"},
              "fill=000102030405060708090A0B0C0D0E0F count=16 error=5",
              " context=0xa file=0xfffffffe size=16 data=A0A1A2A3A4A5A6A7A8A9AAABACADAEAF count=0",
              "0000000A FFFFFFFE 00000010 EEEEEEEE 000102030405060708090A0B0C0D0E0F 00000010 00000000 00000000", 48),
        // The end of the file: nothing was read, and the length is still the room that the parent gave.
        Usual("HrESEBackupReadFile", "SIGNATURE_ESE_BACKUP_READ_FILE",
              {"FFFFFFFF", "00000002", "00000005 EEEEEEEE A0A1A2A3A4"}, "count=0",
              " context=0xffffffff file=0x2 size=5 data=A0A1A2A3A4 count=0",
              "FFFFFFFF 00000002 00000005 EEEEEEEE A0A1A2A3A4 00000000 00000000 00000000", 37),
        Usual("HrESEBackupReadFile", "SIGNATURE_ESE_BACKUP_READ_FILE",
              {"00000001", "00000002", "00000004 EEEEEEEE A0A1A2A3"}, "fill=B0B1 result=0x26 error=38",
              " context=0x1 file=0x2 size=4 data=A0A1A2A3 count=0",
              "00000001 00000002 00000004 EEEEEEEE B0B1A2A3 00000000 00000026 00000026", 36),
        Usual("HrESEBackupReadFile", "SIGNATURE_ESE_BACKUP_READ_FILE", {"00000001", "00000002", "00000000 EEEEEEEE"},
              "count=7", " context=0x1 file=0x2 size=0 data= count=0",
              "00000001 00000002 00000000 EEEEEEEE 00000007 00000000 00000000", 32),
        Usual("HrESEBackupCloseFile", "SIG_HR_ESE_BACKUP_CLOSE_FILE", {"FFFFFFFE", "80000002"}, "error=5",
              " context=0xfffffffe file=0x80000002", "FFFFFFFE 80000002 00000000 00000000", 16),
        Usual("HrESEBackupCloseFile", "SIG_HR_ESE_BACKUP_CLOSE_FILE", {"00000001", "00000002"}, "result=7 error=6",
              " context=0x1 file=0x2", "00000001 00000002 00000007 00000006", 16),
        Growing(Usual("HrESEBackupGetLogAndPatchFiles", "SIGNATURE_ESE_BACKUP_GET_LOG_AND_PATCH_FILES", {"FFFFFFFE"},
                      "list=63000000640065000000000000000000 error=5", " context=0xfffffffe list=00000000",
                      "FFFFFFFE 0000000C 6300 0000 6400 6500 0000 0000 00000000 00000000", 28),
                36),
        // A list that the library leaves alone, or makes null, is the empty one.
        Usual("HrESEBackupGetLogAndPatchFiles", "SIGNATURE_ESE_BACKUP_GET_LOG_AND_PATCH_FILES", {"00000001"},
              "result=7 error=8", " context=0x1 list=00000000", "00000001 00000004 0000 0000 00000007 00000008", 28),
        Usual("HrESEBackupGetLogAndPatchFiles", "SIGNATURE_ESE_BACKUP_GET_LOG_AND_PATCH_FILES", {"00000001"},
              "list=null", " context=0x1 list=00000000", "00000001 00000004 0000 0000 00000000 00000000", 28),
        Growing(Usual("HrESEBackupGetLogAndPatchFiles", "SIGNATURE_ESE_BACKUP_GET_LOG_AND_PATCH_FILES", {"00000001"},
                      "list=630000000000 result=1 error=2", " context=0x1 list=00000000",
                      "00000001 00000006 6300 0000 0000 00000001 00000002", 28),
                30),
        Usual("HrESEBackupTruncateLogs", "SIG_HR_ESE_BACKUP_TRUNCATE_LOGS", {"FFFFFFFE"}, "error=5",
              " context=0xfffffffe", "FFFFFFFE 00000000 00000000", 12),
        Usual("HrESEBackupTruncateLogs", "SIG_HR_ESE_BACKUP_TRUNCATE_LOGS", {"00000001"}, "result=7 error=8",
              " context=0x1", "00000001 00000007 00000008", 12),
        Usual("HrESEBackupInstanceEnd", "SIG_HR_ESE_BACKUP_INSTANCE_END", {"FFFFFFFE", "80000002"}, "error=5",
              " context=0xfffffffe flags=0x80000002", "FFFFFFFE 80000002 00000000 00000000", 16),
        Usual("HrESEBackupInstanceEnd", "SIG_HR_ESE_BACKUP_INSTANCE_END", {"00000001", "00000002"}, "result=7 error=8",
              " context=0x1 flags=0x2", "00000001 00000002 00000007 00000008", 16),
        Usual("HrESEBackupEnd", "SIG_HR_ESE_BACKUP_END", {"FFFFFFFE"}, "error=5", " context=0xfffffffe",
              "FFFFFFFE 00000000 00000000", 12),
        Usual("HrESEBackupEnd", "SIG_HR_ESE_BACKUP_END", {"00000001"}, "result=7 error=8", " context=0x1",
              "00000001 00000007 00000008", 12),
        Growing(Usual("HrESEBackupRestoreGetRegistered", "SIGNATURE_ESE_BACKUP_RESTORE_GET_REGISTERED",
                      {"7300 0000", "6400 0000", "80000001"}, "registered=2 error=5",
                      R"( server="s" name="d" flags=0x80000001 count=0 registered=null)",
                      "7300 0000 6400 0000 80000001" + two_registered + "00000000 00000000", 28),
                88),
        // What a call found that failed then is handed on all the same.
        Growing(Usual("HrESEBackupRestoreGetRegistered", "SIGNATURE_ESE_BACKUP_RESTORE_GET_REGISTERED",
                      {"7300 0000", "6400 0000", "80000001"}, "registered=2 result=0x80000005 error=0x1F",
                      R"( server="s" name="d" flags=0x80000001 count=0 registered=null)",
                      "7300 0000 6400 0000 80000001" + two_registered + "80000005 0000001F", 28),
                88),
        // An empty name is null to the library, an empty server isn't.
        Usual("HrESEBackupRestoreGetRegistered", "SIGNATURE_ESE_BACKUP_RESTORE_GET_REGISTERED",
              {"0000", "0000", "00000002"}, "result=7 error=8",
              R"( server="" name=null flags=0x2 count=0 registered=null)",
              "0000 0000 00000002 00000000 00000007 00000008", 24),
        // Restore
        Usual("HrESERestoreOpen", "SIGNATURE_ESE_RESTORE_OPEN", {"7300 0000", "6100 0000", "7900 0000", "6C00 0000"},
              "context=0x99AABBCC11223344 error=5", R"( server="s" annotation="a" system_path="y" log_path="l")",
              "7300 0000 6100 0000 7900 0000 6C00 0000 11223344 00000000 00000000", 36),
        // Of the empty strings only the last is null to the library.
        Usual("HrESERestoreOpen", "SIGNATURE_ESE_RESTORE_OPEN", {"0000", "0000", "0000", "0000"}, "result=7 error=8",
              R"( server="" annotation="" system_path="" log_path=null)",
              "0000 0000 0000 0000 00000000 00000007 00000008", 28),
        Usual("HrESERestoreOpen", "SIGNATURE_ESE_RESTORE_OPEN", {"7300 0000", "6100 0000", "7900 0000", "6C00 0000"},
              "context=0x99AABBCC11223344 result=7 error=8",
              R"( server="s" annotation="a" system_path="y" log_path="l")",
              "7300 0000 6100 0000 7900 0000 6C00 0000 11223344 00000007 00000008", 36),
        Usual("HrESERestoreReopen", "SIGNATURE_ESE_RESTORE_REOPEN", {"7300 0000", "6100 0000", "6C00 0000"},
              "context=0x99AABBCC11223344 error=5", R"( server="s" annotation="a" log_path="l")",
              "7300 0000 6100 0000 6C00 0000 11223344 00000000 00000000", 30),
        Usual("HrESERestoreReopen", "SIGNATURE_ESE_RESTORE_REOPEN", {"0000", "0000", "0000"}, "result=7 error=8",
              R"( server="" annotation="" log_path=null)", "0000 0000 0000 00000000 00000007 00000008", 24),
        Usual("HrESERestoreReopen", "SIGNATURE_ESE_RESTORE_REOPEN", {"7300 0000", "6100 0000", "6C00 0000"},
              "context=0x99AABBCC11223344 result=7 error=8", R"( server="s" annotation="a" log_path="l")",
              "7300 0000 6100 0000 6C00 0000 11223344 00000007 00000008", 30),
        // The parent's list first, then the library's.
        Growing(
            Usual("HrESERestoreAddDatabase", "SIGNATURE_ESE_RESTORE_ADD_DATABASE",
                  {"FFFFFFFE", "7000 7500 6200 0000", "00000010 101112131415161718191A1B1C1D1E1F",
                   "0000000C EEEEEEEE 6100 0000 6200 6300 0000 0000"},
                  "list=780000000000 error=5",
                  R"( context=0xfffffffe name="pub" part1=0x13121110 part2=0x1514 part3=0x1716 part4=18191A1B1C1D1E1F)"
                  " source=610000006200630000000000 list=null",
                  "FFFFFFFE 7000 7500 6200 0000 00000010 101112131415161718191A1B1C1D1E1F"
                  "0000000C EEEEEEEE 6100 0000 6200 6300 0000 0000"
                  "00000006 7800 0000 0000 00000000 00000000",
                  90),
            92),
        Usual("HrESERestoreAddDatabase", "SIGNATURE_ESE_RESTORE_ADD_DATABASE",
              {"00000001", "0000", "00000010 EEEEEEEEEEEE 101112131415161718191A1B1C1D1E1F",
               "00000004 EEEEEEEE 0000 0000"},
              "list=null result=7 error=8",
              R"( context=0x1 name="" part1=0x13121110 part2=0x1514 part3=0x1716 part4=18191A1B1C1D1E1F)"
              " source=00000000 list=null",
              "00000001 0000 00000010 EEEEEEEEEEEE 101112131415161718191A1B1C1D1E1F"
              "00000004 EEEEEEEE 0000 0000"
              "00000004 0000 0000 00000007 00000008",
              76),
        // A GUID of another length is 16 bytes all the same, taken from where its data starts, and goes back as 16.
        Usual("HrESERestoreAddDatabase", "SIGNATURE_ESE_RESTORE_ADD_DATABASE",
              {"00000001", "0000", "00000004 EEEEEEEEEEEE A0A1A2A3", "0000000A 6100 6200 6300 0000 0000"}, "list=null",
              R"( context=0x1 name="" part1=0xa3a2a1a0 part2=0x0 part3=0xa00 part4=6100620063000000)"
              " source=61006200630000000000 list=null",
              "00000001 0000 00000010 EEEEEEEEEEEE A0A1A2A30000000A6100620063000000"
              "0000000A EEEEEEEE 6100 6200 6300 0000 0000"
              "00000004 EEEE 0000 0000 00000000 00000000",
              82),
        // The parent's list is taken at its length; a library that looks for its end finds one. The library's own list
        // is empty where it doesn't say.
        Usual("HrESERestoreAddDatabase", "SIGNATURE_ESE_RESTORE_ADD_DATABASE",
              {"00000001", "0000", "00000010 EEEEEEEEEEEE 101112131415161718191A1B1C1D1E1F", "00000002 EEEEEEEE 6100"},
              "result=1 error=2",
              R"( context=0x1 name="" part1=0x13121110 part2=0x1514 part3=0x1716 part4=18191A1B1C1D1E1F)"
              " source=610000000000 list=null",
              "00000001 0000 00000010 EEEEEEEEEEEE 101112131415161718191A1B1C1D1E1F"
              "00000002 EEEEEEEE 6100"
              "00000004 EEEE 0000 0000 00000001 00000002",
              74),
        Usual("HrESERestoreOpenFile", "SIGNATURE_ESE_RESTORE_OPEN_FILE", {"FFFFFFFE", "6600 0000"},
              "file=0x99AABBCC11223344 error=5", R"( context=0xfffffffe name="f" sections=1)",
              "FFFFFFFE 6600 0000 11223344 00000000 00000000", 22),
        Usual("HrESERestoreOpenFile", "SIGNATURE_ESE_RESTORE_OPEN_FILE", {"00000001", "0000"}, "result=7 error=8",
              R"( context=0x1 name="" sections=1)", "00000001 0000 00000000 00000007 00000008", 20),
        Usual("HrESERestoreOpenFile", "SIGNATURE_ESE_RESTORE_OPEN_FILE", {"00000001", "6600 0000"},
              "file=0x99AABBCC11223344 result=7 error=8", R"( context=0x1 name="f" sections=1)",
              "00000001 6600 0000 11223344 00000007 00000008", 22),
        Usual("HrESERestoreSaveEnvironment", "SIGNATURE_ESE_RESTORE_SAVE_ENVIRONMENT", {"FFFFFFFE"}, "error=5",
              " context=0xfffffffe", "FFFFFFFE 00000000 00000000", 12),
        Usual("HrESERestoreSaveEnvironment", "SIGNATURE_ESE_RESTORE_SAVE_ENVIRONMENT", {"00000001"}, "result=7 error=8",
              " context=0x1", "00000001 00000007 00000008", 12),
        // No empty string is null to the library here.
        Usual("HrESERestoreComplete", "SIGNATURE_ESE_RESTORE_COMPLETE",
              {"FFFFFFFE", "6300 0000", "6C00 0000", "7400 0000", "80000001"}, "error=5",
              R"( context=0xfffffffe checkpoint_path="c" log_path="l" target_instance="t" flags=0x80000001)",
              "FFFFFFFE 6300 0000 6C00 0000 7400 0000 80000001 00000000 00000000", 34),
        Usual("HrESERestoreComplete", "SIGNATURE_ESE_RESTORE_COMPLETE",
              {"00000001", "0000", "0000", "0000", "00000002"}, "result=7 error=8",
              R"( context=0x1 checkpoint_path="" log_path="" target_instance="" flags=0x2)",
              "00000001 0000 0000 0000 00000002 00000007 00000008", 28),
        Usual("HrESERestoreClose", "SIG_HR_ESE_BACKUP_RESTORE_CLOSE", {"FFFFFFFE", "80000002"}, "error=5",
              " context=0xfffffffe mode=0x80000002", "FFFFFFFE 80000002 00000000 00000000", 16),
        Usual("HrESERestoreClose", "SIG_HR_ESE_BACKUP_RESTORE_CLOSE", {"00000001", "00000002"}, "result=7 error=8",
              " context=0x1 mode=0x2", "00000001 00000002 00000007 00000008", 16),
    };
    return rows;
}

} // namespace kessil::test
