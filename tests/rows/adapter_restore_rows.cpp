#include "rows/adapter_restore_rows.h"

namespace kessil::test {

const RestoreName power_on = {"PowerOnVDR", "PowerOn", "SIGNATURE_VADPPowerOnVDR"};

const RestoreName power_off = {"PowerOffVDR", "PowerOff", "SIGNATURE_VADPPowerOff"};

Step RestoreSession(const std::string &address)
{
    return {"PrepareVMRestore",
            "SIGNATURE_VADPPrepareVMRestore",
            {Str("vm"), "0000000000000000", Str("san")},
            "result=1 session=" + address};
}

Step RestoreFile(const std::string &address)
{
    return {"OpenRestoreFile", "SIGNATURE_VADPOpenRestoreFile", {"00000000", Str("disk")}, "result=1 file=" + address};
}

namespace {

Step RestoreACLInfo(const std::string &key, const std::string &address)
{
    return {"CreateACLInfo",
            "SIGNATURE_VADPCreateACLInfo",
            {"00000001 EEEEEEEE 77", Str(key), Str("")},
            "result=1 aclinfo=" + address};
}

} // namespace

const Step restore_credentials = {
    "CreateCredentials", "SIGNATURE_VADPCreateCredentials", {Str("u"), Str("p")}, "result=1 credentials=0x101"};

namespace {

const Step restore_cache = {"AddFolder", "SIGNATURE_VADPAddFolder", {Str("f")}, "result=1 cache=0x202"};

} // namespace

const std::vector<Step> restore_sessions = {RestoreSession("0x500"), RestoreSession("0x501"), RestoreSession("0x502")};

const std::vector<Step> restore_files = {RestoreFile("0x600"), RestoreFile("0x601"), RestoreFile("0x602")};

namespace {

// Every function logs a line, which travels ahead of the answer: as a frame, or bare with the mark behind it.
const std::string restore_logs = " log=hello level=7";

} // namespace

const std::string restore_frame = "4D 00000010 00000007 680065006C006C006F000000";

const std::string restore_line = "FFFFFF9D 00000005 68656C6C6F 00000007 FFFFFC19";

namespace {

const std::string restore_okay = restore_line + "00000001";

const std::string restore_failed = restore_line + "FFFFFFFF 00000004 626F6F6D";

// A call that succeeds. `index` is the result ahead of the error text, where there is one.
AdapterRow RestoreOkay(const RestoreName &name, const std::vector<Step> &before, const std::vector<std::string> &in,
                       const std::string &script, const std::string &seen, const std::string &index = "")
{
    return {
        .function = name.function,
        .signature = name.signature,
        .before = before,
        .in = in,
        .script = "result=1" + restore_logs + script,
        .error_text = "",
        .seen = {seen},
        .frames = restore_frame,
        .out = index + "00",
        .logged = {"debug: Process_VADP" + name.handler + "()"},
        .input_failure = AdapterInput(name.handler),
        .error_failure = u"",
        .output_failure = AdapterOutput(name.handler),
        .room = index.size() / 2 + 2,
    };
}

// One that fails.
AdapterRow RestoreFails(const RestoreName &name, const std::vector<Step> &before, const std::vector<std::string> &in,
                        const std::string &script, const std::string &seen, const std::string &index = "")
{
    AdapterRow row = RestoreOkay(name, before, in, "", seen, index);
    row.script = "result=0 error=0x99" + restore_logs + script;
    row.error_text = "boom";
    row.seen = row.seen + ErrorTaken("0x99");
    row.out = index + "626F6F6D 00";
    row.error_failure = AdapterError(name.handler);
    row.room = index.size() / 2 + 6;
    return row;
}

// Calls that move data in bulk don't log that they run.
AdapterRow WithoutEntryLog(AdapterRow row)
{
    row.logged = {};
    return row;
}

// The texts of a reconfiguration have a part of the handler's name doubled.
AdapterRow Reconfiguring(AdapterRow row)
{
    row.input_failure = u"Failed to serialise input (Process_VADPVADPReconfigureMachine)";
    row.output_failure = u"Failed to serialise output (Process_VADPVADPReconfigureMachine)";
    if (!row.error_failure.empty())
        row.error_failure = u"Failed to get error message (Process_VADPVADPReconfigureMachine)";
    return row;
}

// Neither the result nor the error of this call is looked at.
AdapterRow Ignored(AdapterRow row)
{
    row.script = "result=0 error=0x99" + row.script.substr(std::string("result=1").size());
    return row;
}

} // namespace

const std::vector<AdapterRow> &RestoreRows()
{
    const std::vector<Step> &sessions = restore_sessions;
    const std::vector<Step> &files = restore_files;
    const std::vector<Step> acls = {RestoreACLInfo("k0", "0x700"), RestoreACLInfo("k1", "0x701")};
    static const std::vector<AdapterRow> rows = {
        RestoreOkay("PrepareVMRestore", {restore_credentials, RestoreSession("0x500")},
                    {Str("vm"), "FEDCBA9876543210", Str("san")}, " session=0x501",
                    "PrepareVMRestore path=\"vm\" credentials=0x101 opt_flags=18364758544493064720 "
                    "transport_mode=\"san\" session=null",
                    "00000001"),
        RestoreFails("PrepareVMRestore", {}, {Str(""), "0000000000000001", Str("")}, " session=0x501",
                     "PrepareVMRestore path=\"\" credentials=null opt_flags=1 transport_mode=\"\" session=null",
                     "FFFFFFFF"),

        RestoreOkay("PrepareVMRestoreIncremental", {restore_credentials, RestoreSession("0x500")},
                    {Str("vm"), "FEDCBA9876543210", Str("san")}, " session=0x501",
                    "PrepareVMRestoreIncremental path=\"vm\" credentials=0x101 opt_flags=18364758544493064720 "
                    "transport_mode=\"san\" session=null",
                    "00000001"),
        RestoreFails("PrepareVMRestoreIncremental", {}, {Str(""), "0000000000000001", Str("")}, " session=0x501",
                     "PrepareVMRestoreIncremental path=\"\" credentials=null opt_flags=1 transport_mode=\"\" "
                     "session=null",
                     "FFFFFFFF"),

        RestoreOkay("SetOverrideValue", sessions, {"00000002", Str("key"), Str("value")}, "",
                    "SetOverrideValue session=0x502 key=\"key\" value=\"value\""),
        RestoreFails("SetOverrideValue", sessions, {"00000001", Str("key"), Str("value")}, "",
                     "SetOverrideValue session=0x501 key=\"key\" value=\"value\""),
        RestoreOkay("SetOverrideValue", sessions, {"00000005", Str(""), Str("")}, "",
                    "SetOverrideValue session=null key=\"\" value=\"\""),

        RestoreOkay("AddFolder", {restore_credentials, restore_cache}, {Str("folder")}, " cache=0x203",
                    "AddFolder path=\"folder\" credentials=0x101 cache=0x202"),
        RestoreFails("AddFolder", {}, {Str("folder")}, " cache=0x203",
                     "AddFolder path=\"folder\" credentials=null cache=null"),

        RestoreOkay("OpenRestoreFile", {RestoreSession("0x500"), RestoreSession("0x501"), RestoreFile("0x600")},
                    {"00000001", Str("a.vmdk")}, " file=0x601",
                    "OpenRestoreFile session=0x501 path=\"a.vmdk\" file=null", "00000001"),
        RestoreFails("OpenRestoreFile", sessions, {"00000002", Str("a.vmdk")}, " file=0x601",
                     "OpenRestoreFile session=0x502 path=\"a.vmdk\" file=null", "FFFFFFFF"),
        RestoreOkay("OpenRestoreFile", sessions, {"FFFFFFFF", Str("")}, " file=0x601",
                    "OpenRestoreFile session=null path=\"\" file=null", "00000000"),

        RestoreOkay("OpenRestoreFileIncremental",
                    {RestoreSession("0x500"), RestoreSession("0x501"), RestoreFile("0x600")},
                    {"00000001", Str("a.vmdk"), "89ABCDEF"}, " file=0x601",
                    "OpenRestoreFileIncremental session=0x501 path=\"a.vmdk\" third=2309737967 file=null", "00000001"),
        RestoreFails("OpenRestoreFileIncremental", sessions, {"00000002", Str("a.vmdk"), "00000001"}, " file=0x601",
                     "OpenRestoreFileIncremental session=0x502 path=\"a.vmdk\" third=1 file=null", "FFFFFFFF"),
        RestoreOkay("OpenRestoreFileIncremental", sessions, {"00000003", Str(""), "00000000"}, " file=0x601",
                    "OpenRestoreFileIncremental session=null path=\"\" third=0 file=null", "00000000"),

        WithoutEntryLog(RestoreOkay("WriteRestoreFile", files, {"00000001", "00000003 AA00BB"}, "",
                                    "WriteRestoreFile file=0x601 data=AA00BB length=3")),
        WithoutEntryLog(RestoreFails("WriteRestoreFile", files, {"00000002", "00000000"}, "",
                                     "WriteRestoreFile file=0x602 data= length=0")),
        WithoutEntryLog(RestoreOkay("WriteRestoreFile", files, {"00000003", "00000001 AA"}, "",
                                    "WriteRestoreFile file=null data=AA length=1")),

        WithoutEntryLog(
            RestoreOkay("WriteRestoreFileIncremental", files, {"00000001", "00000003 AA00BB", "FEDCBA9876543210"}, "",
                        "WriteRestoreFileIncremental file=0x601 data=AA00BB length=3 offset=18364758544493064720")),
        WithoutEntryLog(RestoreFails("WriteRestoreFileIncremental", files, {"00000002", "00000000", "0000000000000001"},
                                     "", "WriteRestoreFileIncremental file=0x602 data= length=0 offset=1")),
        WithoutEntryLog(RestoreOkay("WriteRestoreFileIncremental", files,
                                    {"00000003", "00000001 AA", "0000000000000000"}, "",
                                    "WriteRestoreFileIncremental file=null data=AA length=1 offset=0")),

        RestoreOkay("CloseRestoreFile", files, {"00000001"}, " file=0", "CloseRestoreFile file=0x601"),
        RestoreFails("CloseRestoreFile", files, {"00000002"}, " file=0", "CloseRestoreFile file=0x602"),
        RestoreOkay("CloseRestoreFile", files, {"00000003"}, "", "CloseRestoreFile file=null"),

        RestoreOkay("CloseRestoreFileIncremental", files, {"00000001"}, " file=0",
                    "CloseRestoreFileIncremental file=0x601"),
        RestoreFails("CloseRestoreFileIncremental", files, {"00000002"}, " file=0",
                     "CloseRestoreFileIncremental file=0x602"),
        RestoreOkay("CloseRestoreFileIncremental", files, {"00000003"}, "", "CloseRestoreFileIncremental file=null"),

        RestoreOkay("EndVMRestore", sessions, {"00000001", "02"}, " session=0", "EndVMRestore session=0x501 flag=1"),
        RestoreFails("EndVMRestore", sessions, {"00000002", "00"}, " session=0", "EndVMRestore session=0x502 flag=0"),
        RestoreOkay("EndVMRestore", sessions, {"00000003", "01"}, "", "EndVMRestore session=null flag=1"),

        RestoreOkay("EndVMRestoreIncremental", sessions, {"00000001", "02"}, " session=0",
                    "EndVMRestoreIncremental session=0x501 flag=1"),
        RestoreFails("EndVMRestoreIncremental", sessions, {"00000002", "00"}, " session=0",
                     "EndVMRestoreIncremental session=0x502 flag=0"),
        RestoreOkay("EndVMRestoreIncremental", sessions, {"00000003", "01"}, "",
                    "EndVMRestoreIncremental session=null flag=1"),

        RestoreOkay("CreateACLInfo", acls, {"00000003 EEEEEEEE AA00BB", Str("key"), Str("second")}, " aclinfo=0x702",
                    "CreateACLInfo length=3 data=AA00BB key=\"key\" second=\"second\" aclinfo=null", "00000002"),
        RestoreFails("CreateACLInfo", acls, {"00000000 EEEEEEEE", Str("key"), Str("")}, " aclinfo=0x702",
                     "CreateACLInfo length=0 data= key=\"key\" second=\"\" aclinfo=null", "FFFFFFFF"),
        RestoreOkay("CreateACLInfo", acls, {"00000001 EEEEEEEE AA", Str("k1"), Str("s")}, "",
                    "CreateACLInfo length=1 data=AA key=\"k1\" second=\"s\" aclinfo=0x701", "FFFFFFFF"),

        RestoreOkay("GetACLInfo", acls, {"00000001"}, " listing=0x301", "GetACLInfo aclinfo=0x701 listing=null",
                    "00000000"),
        Ignored(RestoreOkay("GetACLInfo", acls, {"00000000"}, " listing=0x301", "GetACLInfo aclinfo=0x700 listing=null",
                            "00000000")),
        RestoreOkay("GetACLInfo", acls, {"00000002"}, " listing=0x301", "GetACLInfo aclinfo=null listing=null",
                    "00000000"),

        RestoreOkay("WriteFileACL", files, {"00000001", "00000003 AA00BB"}, "",
                    "WriteFileACL file=0x601 data=AA00BB length=3"),
        RestoreFails("WriteFileACL", files, {"00000002", "00000000"}, "", "WriteFileACL file=0x602 data= length=0"),
        RestoreOkay("WriteFileACL", files, {"00000003", "00000001 AA"}, "", "WriteFileACL file=null data=AA length=1"),

        RestoreOkay("RenameMachine", sessions, {"00000001", Str("new")}, " session=0",
                    "RenameMachine session=0x501 name=\"new\""),
        RestoreFails("RenameMachine", sessions, {"00000002", Str("new")}, " session=0",
                     "RenameMachine session=0x502 name=\"new\""),
        RestoreOkay("RenameMachine", sessions, {"00000003", Str("")}, "", "RenameMachine session=null name=\"\""),

        Reconfiguring(RestoreOkay("ReconfigureMachine", sessions, {"00000001", "02"}, " session=0",
                                  "ReconfigureMachine session=0x501 flag=1")),
        Reconfiguring(RestoreFails("ReconfigureMachine", sessions, {"00000002", "00"}, " session=0",
                                   "ReconfigureMachine session=0x502 flag=0")),
        Reconfiguring(RestoreOkay("ReconfigureMachine", sessions, {"00000003", "01"}, "",
                                  "ReconfigureMachine session=null flag=1")),

        RestoreOkay(power_on, sessions, {"00000001"}, " session=0", "PowerOnVDR session=0x501"),
        RestoreFails(power_on, sessions, {"00000002"}, " session=0", "PowerOnVDR session=0x502"),
        RestoreOkay(power_on, sessions, {"00000003"}, "", "PowerOnVDR session=null"),

        RestoreOkay(power_off, sessions, {"00000001"}, " session=0", "PowerOffVDR session=0x501"),
        RestoreFails(power_off, sessions, {"00000002"}, " session=0", "PowerOffVDR session=0x502"),
        RestoreOkay(power_off, sessions, {"00000003"}, "", "PowerOffVDR session=null"),

        RestoreOkay("DeleteVM", {restore_credentials, RestoreSession("0x500"), RestoreSession("0x501")}, {Str("vm")},
                    "", "DeleteVM session=0x500 credentials=0x101 path=\"vm\""),
        RestoreFails("DeleteVM", {}, {Str("vm")}, "", "DeleteVM session=null credentials=null path=\"vm\""),
    };
    return rows;
}

namespace {

// The log of a command that has nothing more to say.
std::vector<std::string> RestoreLog(const RestoreName &name)
{
    return {"debug: ProcessAlt_VADP" + name.handler + "()"};
}

// A command that succeeds.
CommandRow RestoreCommandOkay(const RestoreName &name, std::uint8_t command, const std::vector<Step> &before,
                              const std::vector<Value> &in, const std::string &script, const std::string &seen,
                              const std::string &reply, const std::vector<std::string> &logged,
                              const std::vector<Cut> &cuts)
{
    return {
        .function = name.function,
        .command = command,
        .signature = name.signature,
        .before = before,
        .in = in,
        .script = "result=1" + restore_logs + script,
        .error_text = "boom",
        .seen = {seen},
        .reply = reply,
        .logged = logged,
        .cuts = cuts,
    };
}

// One that fails, and whose error text is taken.
CommandRow RestoreCommandFails(const RestoreName &name, std::uint8_t command, const std::vector<Step> &before,
                               const std::vector<Value> &in, const std::string &script, const std::string &seen,
                               const std::string &reply, const std::vector<std::string> &logged,
                               const std::vector<Cut> &cuts)
{
    CommandRow row = RestoreCommandOkay(name, command, before, in, "", seen, reply, logged, cuts);
    row.script = "result=0 error=0x99" + restore_logs + script;
    row.seen = row.seen + ErrorTaken("0x99");
    return row;
}

// One that fails while nobody looks, and so nobody asks for its error text.
CommandRow RestoreCommandUnnoticed(const RestoreName &name, std::uint8_t command, const std::vector<Step> &before,
                                   const std::vector<Value> &in, const std::string &script, const std::string &seen,
                                   const std::string &reply, const std::vector<std::string> &logged,
                                   const std::vector<Cut> &cuts)
{
    CommandRow row = RestoreCommandFails(name, command, before, in, script, seen, reply, logged, cuts);
    row.seen = {seen};
    return row;
}

} // namespace

const std::vector<CommandRow> &RestoreCommands()
{
    const std::vector<Step> &sessions = restore_sessions;
    const std::vector<Step> &files = restore_files;

    // The adapter isn't called, which counts as a failure without a record.
    const Cut skipped_status = {ErrorTaken("null"), no_log + "FFFFFFFF 00000004 626F6F6D"};
    const Cut skipped_value = {ErrorTaken("null"), no_log + "00000004 626F6F6D"};
    const std::string no_index = restore_line + "00000004 626F6F6D";

    static const std::vector<CommandRow> rows = {
        RestoreCommandOkay(
            "PrepareVMRestore", 15, {restore_credentials, RestoreSession("0x500")},
            {Text("vm"), Number("FEDCBA98"), Text("san")}, " session=0x501",
            "PrepareVMRestore path=\"vm\" credentials=0x101 opt_flags=4275878552 transport_mode=\"san\" session=null",
            restore_line + "00000001",
            {"debug: ProcessAlt_VADPPrepareVMRestore()", "debug: About to read path etc.",
             "debug: path==vm, opt_flags==4275878552, transport_mode==san",
             "debug: Added to g_vRestoreSession giving size of2"},
            {{{"PrepareVMRestore path=\"\" credentials=0x101 opt_flags=0 transport_mode=\"\" session=null",
               "GetErrorMessage error=null", "FreeErrorInfo error=null"},
              no_index},
             {{"PrepareVMRestore path=\"vm\" credentials=0x101 opt_flags=0 transport_mode=\"\" session=null",
               "GetErrorMessage error=null", "FreeErrorInfo error=null"},
              no_index},
             {{"PrepareVMRestore path=\"vm\" credentials=0x101 opt_flags=4275878552 transport_mode=\"\" session=null",
               "GetErrorMessage error=null", "FreeErrorInfo error=null"},
              no_index}}),
        RestoreCommandFails(
            "PrepareVMRestore", 15, {}, {Text(""), Number("00000001"), Text("")}, " session=0x501",
            "PrepareVMRestore path=\"\" credentials=null opt_flags=1 transport_mode=\"\" session=null", no_index,
            {"debug: ProcessAlt_VADPPrepareVMRestore()", "debug: About to read path etc.",
             "debug: path==, opt_flags==1, transport_mode=="},
            {{{"PrepareVMRestore path=\"\" credentials=null opt_flags=0 transport_mode=\"\" session=null",
               "GetErrorMessage error=0x99", "FreeErrorInfo error=0x99"},
              no_index},
             {{"PrepareVMRestore path=\"\" credentials=null opt_flags=0 transport_mode=\"\" session=null",
               "GetErrorMessage error=0x99", "FreeErrorInfo error=0x99"},
              no_index},
             {{"PrepareVMRestore path=\"\" credentials=null opt_flags=1 transport_mode=\"\" session=null",
               "GetErrorMessage error=0x99", "FreeErrorInfo error=0x99"},
              no_index}}),

        RestoreCommandOkay("PrepareVMRestoreIncremental", 32, {restore_credentials, RestoreSession("0x500")},
                           {Text("vm"), Number("FEDCBA98"), Text("san")}, " session=0x501",
                           "PrepareVMRestoreIncremental path=\"vm\" credentials=0x101 opt_flags=4275878552 "
                           "transport_mode=\"san\" session=null",
                           restore_line + "00000001", RestoreLog("PrepareVMRestoreIncremental"),
                           EachCut(3, skipped_value)),
        RestoreCommandFails(
            "PrepareVMRestoreIncremental", 32, {}, {Text(""), Number("00000001"), Text("")}, " session=0x501",
            "PrepareVMRestoreIncremental path=\"\" credentials=null opt_flags=1 transport_mode=\"\" session=null",
            no_index, RestoreLog("PrepareVMRestoreIncremental"), EachCut(3, skipped_value)),

        RestoreCommandOkay("SetOverrideValue", 16, sessions, {Number("00000001"), Text("key"), Text("value")}, "",
                           "SetOverrideValue session=0x501 key=\"key\" value=\"value\"", restore_line + "00000001",
                           {"debug: ProcessAlt_VADPSetOverrideValue()",
                            "debug: session_handle==1, key==key, value==value", "debug: g_vRestoreSession.size()==3",
                            "debug: calling real_f with pRestoreSession==0x501, key==key, value==value",
                            "debug: after real_f for ProcessAlt_VADPSetOverrideValue:  rez==1 with err_str==()"},
                           {{{"SetOverrideValue session=0x500 key=\"\" value=\"\""}, restore_line + "00000000"},
                            {{"SetOverrideValue session=0x501 key=\"\" value=\"\""}, restore_line + "00000000"},
                            {{"SetOverrideValue session=0x501 key=\"key\" value=\"\""}, restore_line + "00000000"}}),
        RestoreCommandFails("SetOverrideValue", 16, sessions, {Number("00000002"), Text("key"), Text("value")}, "",
                            "SetOverrideValue session=0x502 key=\"key\" value=\"value\"", no_index,
                            {"debug: ProcessAlt_VADPSetOverrideValue()",
                             "debug: session_handle==2, key==key, value==value", "debug: g_vRestoreSession.size()==3",
                             "debug: calling real_f with pRestoreSession==0x502, key==key, value==value",
                             "debug: after real_f for ProcessAlt_VADPSetOverrideValue:  rez==0 with err_str==(boom)"},
                            {{{"SetOverrideValue session=0x500 key=\"\" value=\"\"", "GetErrorMessage error=0x99",
                               "FreeErrorInfo error=0x99"},
                              no_index},
                             {{"SetOverrideValue session=0x502 key=\"\" value=\"\"", "GetErrorMessage error=0x99",
                               "FreeErrorInfo error=0x99"},
                              no_index},
                             {{"SetOverrideValue session=0x502 key=\"key\" value=\"\"", "GetErrorMessage error=0x99",
                               "FreeErrorInfo error=0x99"},
                              no_index}}),
        RestoreCommandOkay("SetOverrideValue", 16, sessions, {Number("FFFFFFFF"), Text(""), Text("v")}, "",
                           "SetOverrideValue session=null key=\"\" value=\"v\"", restore_line + "FFFFFFFF",
                           {"debug: ProcessAlt_VADPSetOverrideValue()", "debug: session_handle==-1, key==, value==v",
                            "debug: g_vRestoreSession.size()==3",
                            "debug: calling real_f with pRestoreSession==0, key==, value==v",
                            "debug: after real_f for ProcessAlt_VADPSetOverrideValue:  rez==1 with err_str==()"},
                           {{{"SetOverrideValue session=0x500 key=\"\" value=\"\""}, restore_line + "00000000"},
                            {{"SetOverrideValue session=null key=\"\" value=\"\""}, restore_line + "00000000"},
                            {{"SetOverrideValue session=null key=\"\" value=\"\""}, restore_line + "00000000"}}),

        RestoreCommandOkay("AddFolder", 26, {restore_credentials, restore_cache}, {Number("89ABCDEF"), Text("folder")},
                           " cache=0x203", "AddFolder path=\"folder\" credentials=0x101 cache=0x202", restore_okay,
                           {"debug: ProcessAlt_VADPAddFolder()", "debug: elLen==2309737967", "debug: elPath==folder"},
                           EachCut(2, {{"AddFolder path=\"\" credentials=0x101 cache=0x202",
                                        "GetErrorMessage error=null", "FreeErrorInfo error=null"},
                                       restore_failed})),
        RestoreCommandUnnoticed("AddFolder", 26, {}, {Number("00000006"), Text("folder")}, "",
                                "AddFolder path=\"folder\" credentials=null cache=null", restore_okay,
                                {"debug: ProcessAlt_VADPAddFolder()", "debug: elLen==6", "debug: elPath==folder"},
                                EachCut(2, {{"AddFolder path=\"\" credentials=null cache=null",
                                             "GetErrorMessage error=0x99", "FreeErrorInfo error=0x99"},
                                            restore_failed})),

        RestoreCommandOkay("OpenRestoreFile", 19,
                           {RestoreSession("0x500"), RestoreSession("0x501"), RestoreFile("0x600")},
                           {Number("00000001"), Text("a.vmdk")}, " file=0x601",
                           "OpenRestoreFile session=0x501 path=\"a.vmdk\" file=null", restore_line + "00000001",
                           RestoreLog("OpenRestoreFile"), EachCut(2, skipped_value)),
        RestoreCommandFails("OpenRestoreFile", 19, sessions, {Number("00000002"), Text("a.vmdk")}, " file=0x601",
                            "OpenRestoreFile session=0x502 path=\"a.vmdk\" file=null", no_index,
                            RestoreLog("OpenRestoreFile"), EachCut(2, skipped_value)),
        RestoreCommandOkay("OpenRestoreFile", 19, sessions, {Number("00000003"), Text("")}, " file=0x601",
                           "OpenRestoreFile session=null path=\"\" file=null", restore_line + "00000000",
                           RestoreLog("OpenRestoreFile"), EachCut(2, skipped_value)),
        RestoreCommandOkay("OpenRestoreFile", 19, sessions, {Number("80000000"), Text("")}, " file=0x601",
                           "OpenRestoreFile session=null path=\"\" file=null", restore_line + "00000000",
                           RestoreLog("OpenRestoreFile"), EachCut(2, skipped_value)),

        RestoreCommandOkay(
            "OpenRestoreFileIncremental", 40, {RestoreSession("0x500"), RestoreSession("0x501"), RestoreFile("0x600")},
            {Number("00000001"), Text("a.vmdk"), Number("89ABCDEF")}, " file=0x601",
            "OpenRestoreFileIncremental session=0x501 path=\"a.vmdk\" third=2309737967 file=null",
            restore_line + "00000001", RestoreLog("OpenRestoreFileIncremental"), EachCut(3, skipped_value)),
        RestoreCommandFails("OpenRestoreFileIncremental", 40, sessions,
                            {Number("00000002"), Text("a.vmdk"), Number("00000001")}, " file=0x601",
                            "OpenRestoreFileIncremental session=0x502 path=\"a.vmdk\" third=1 file=null", no_index,
                            RestoreLog("OpenRestoreFileIncremental"), EachCut(3, skipped_value)),
        RestoreCommandOkay(
            "OpenRestoreFileIncremental", 40, sessions, {Number("FFFFFFFF"), Text(""), Number("00000000")},
            " file=0x601", "OpenRestoreFileIncremental session=null path=\"\" third=0 file=null",
            restore_line + "00000000", RestoreLog("OpenRestoreFileIncremental"), EachCut(3, skipped_value)),

        RestoreCommandOkay("WriteRestoreFile", 21, files, {Number("00000001"), Number("00000003 AA00BB")}, "",
                           "WriteRestoreFile file=0x601 data=AA00BB length=3", restore_okay, {},
                           EachCut(2, skipped_status)),
        RestoreCommandFails("WriteRestoreFile", 21, files, {Number("00000002"), Number("00000001 AA")}, "",
                            "WriteRestoreFile file=0x602 data=AA length=1", restore_failed, {},
                            EachCut(2, skipped_status)),
        RestoreCommandOkay("WriteRestoreFile", 21, files, {Number("FFFFFFFF"), Number("00000001 AA")}, "",
                           "WriteRestoreFile file=null data=AA length=1", restore_okay, {}, EachCut(2, skipped_status)),

        RestoreCommandOkay("WriteRestoreFileIncremental", 41, files,
                           {Number("00000001"), Number("FEDCBA9876543210"), Number("00000003 AA00BB")}, "",
                           "WriteRestoreFileIncremental file=0x601 data=AA00BB length=3 offset=18364758544493064720",
                           restore_okay, {}, EachCut(3, skipped_status)),
        RestoreCommandFails("WriteRestoreFileIncremental", 41, files,
                            {Number("00000002"), Number("0000000000000001"), Number("00000001 AA")}, "",
                            "WriteRestoreFileIncremental file=0x602 data=AA length=1 offset=1", restore_failed, {},
                            EachCut(3, skipped_status)),
        RestoreCommandOkay("WriteRestoreFileIncremental", 41, files,
                           {Number("FFFFFFFF"), Number("0000000000000000"), Number("00000001 AA")}, "",
                           "WriteRestoreFileIncremental file=null data=AA length=1 offset=0", restore_okay, {},
                           EachCut(3, skipped_status)),

        RestoreCommandOkay("CloseRestoreFile", 22, files, {Number("00000001")}, " file=0",
                           "CloseRestoreFile file=0x601", restore_okay, RestoreLog("CloseRestoreFile"),
                           EachCut(1, skipped_status)),
        RestoreCommandFails("CloseRestoreFile", 22, files, {Number("00000002")}, " file=0",
                            "CloseRestoreFile file=0x602", restore_failed, RestoreLog("CloseRestoreFile"),
                            EachCut(1, skipped_status)),
        RestoreCommandOkay("CloseRestoreFile", 22, files, {Number("FFFFFFFF")}, "", "CloseRestoreFile file=null",
                           restore_okay, RestoreLog("CloseRestoreFile"), EachCut(1, skipped_status)),

        RestoreCommandOkay("CloseRestoreFileIncremental", 42, files, {Number("00000001")}, " file=0",
                           "CloseRestoreFileIncremental file=0x601", restore_okay,
                           RestoreLog("CloseRestoreFileIncremental"), EachCut(1, skipped_status)),
        RestoreCommandFails("CloseRestoreFileIncremental", 42, files, {Number("00000002")}, " file=0",
                            "CloseRestoreFileIncremental file=0x602", restore_failed,
                            RestoreLog("CloseRestoreFileIncremental"), EachCut(1, skipped_status)),
        RestoreCommandOkay("CloseRestoreFileIncremental", 42, files, {Number("FFFFFFFF")}, "",
                           "CloseRestoreFileIncremental file=null", restore_okay,
                           RestoreLog("CloseRestoreFileIncremental"), EachCut(1, skipped_status)),

        RestoreCommandOkay("EndVMRestore", 17, sessions, {Number("00000001"), Number("00000100")}, " session=0",
                           "EndVMRestore session=0x501 flag=1", restore_okay, RestoreLog("EndVMRestore"),
                           EachCut(2, skipped_status)),
        RestoreCommandFails("EndVMRestore", 17, sessions, {Number("00000002"), Flag(false)}, " session=0",
                            "EndVMRestore session=0x502 flag=0", restore_failed, RestoreLog("EndVMRestore"),
                            EachCut(2, skipped_status)),
        RestoreCommandOkay("EndVMRestore", 17, sessions, {Number("FFFFFFFF"), Flag(true)}, "",
                           "EndVMRestore session=null flag=1", restore_okay, RestoreLog("EndVMRestore"),
                           EachCut(2, skipped_status)),

        RestoreCommandOkay("EndVMRestoreIncremental", 33, sessions, {Number("00000001"), Number("00000100")},
                           " session=0", "EndVMRestoreIncremental session=0x501 flag=1", restore_okay,
                           RestoreLog("EndVMRestoreIncremental"), EachCut(2, skipped_status)),
        RestoreCommandFails("EndVMRestoreIncremental", 33, sessions, {Number("00000002"), Flag(false)}, " session=0",
                            "EndVMRestoreIncremental session=0x502 flag=0", restore_failed,
                            RestoreLog("EndVMRestoreIncremental"), EachCut(2, skipped_status)),
        RestoreCommandOkay("EndVMRestoreIncremental", 33, sessions, {Number("FFFFFFFF"), Flag(true)}, "",
                           "EndVMRestoreIncremental session=null flag=1", restore_okay,
                           RestoreLog("EndVMRestoreIncremental"), EachCut(2, skipped_status)),

        RestoreCommandOkay(
            "WriteFileACL", 20, files, {Number("00000001"), Number("00000003 AA00BB")}, "",
            "WriteFileACL file=0x601 data=AA00BB length=3", restore_okay, {},
            {{{"WriteFileACL file=0x600 data=null length=0", "GetErrorMessage error=null", "FreeErrorInfo error=null"},
              restore_failed},
             {{"WriteFileACL file=0x601 data=null length=0", "GetErrorMessage error=null", "FreeErrorInfo error=null"},
              restore_failed}}),
        RestoreCommandUnnoticed(
            "WriteFileACL", 20,
            files, {Number("00000002"), Number("00000001 AA")}, "", "WriteFileACL file=0x602 data=AA length=1",
            restore_okay, {},
            {{{"WriteFileACL file=0x600 data=null length=0", "GetErrorMessage error=0x99", "FreeErrorInfo error=0x99"},
              restore_failed},
             {{"WriteFileACL file=0x602 data=null length=0", "GetErrorMessage error=0x99", "FreeErrorInfo error=0x99"},
              restore_failed}}),
        RestoreCommandOkay(
            "WriteFileACL", 20, files, {Number("FFFFFFFF"), Number("00000001 AA")}, "",
            "WriteFileACL file=null data=AA length=1", restore_okay, {},
            {{{"WriteFileACL file=0x600 data=null length=0", "GetErrorMessage error=null", "FreeErrorInfo error=null"},
              restore_failed},
             {{"WriteFileACL file=null data=null length=0", "GetErrorMessage error=null", "FreeErrorInfo error=null"},
              restore_failed}}),

        RestoreCommandOkay("RenameMachine", 43, sessions, {Number("00000001"), Number("00000002"), Text("new")},
                           " session=0", "RenameMachine session=0x501 name=\"new\"", restore_okay,
                           {"debug: Process_VADPRenameMachine()"}, EachCut(3, skipped_status)),
        RestoreCommandFails("RenameMachine", 43, sessions, {Number("00000002"), Number("00000001"), Text("new")},
                            " session=0", "RenameMachine session=0x502 name=\"new\"", restore_failed,
                            {"debug: Process_VADPRenameMachine()"}, EachCut(3, skipped_status)),
        RestoreCommandOkay("RenameMachine", 43, sessions, {Number("FFFFFFFF"), Number("00000000"), Text("")}, "",
                           "RenameMachine session=null name=\"\"", restore_okay, {"debug: Process_VADPRenameMachine()"},
                           EachCut(3, skipped_status)),

        RestoreCommandOkay(power_on, 34, sessions, {Number("00000001")}, " session=0", "PowerOnVDR session=0x501",
                           restore_okay,
                           {"debug: ProcessAlt_VADPPowerOn()", "debug: session_handle:1", "debug: okay:1"},
                           EachCut(1, {{"PowerOnVDR session=null"}, restore_okay})),
        RestoreCommandFails(
            power_on, 34, sessions, {Number("00000002")}, " session=0", "PowerOnVDR session=0x502", restore_failed,
            {"debug: ProcessAlt_VADPPowerOn()", "debug: session_handle:2", "debug: okay:0"},
            EachCut(1, {{"PowerOnVDR session=null", "GetErrorMessage error=0x99", "FreeErrorInfo error=0x99"},
                        restore_failed})),
        RestoreCommandOkay(power_on, 34, sessions, {Number("FFFFFFFE")}, "", "PowerOnVDR session=null", restore_okay,
                           {"debug: ProcessAlt_VADPPowerOn()", "debug: session_handle:-2", "debug: okay:1"},
                           EachCut(1, {{"PowerOnVDR session=null"}, restore_okay})),

        RestoreCommandOkay(power_off, 35, sessions, {Number("00000001")}, " session=0", "PowerOffVDR session=0x501",
                           restore_okay,
                           {"debug: ProcessAlt_VADPPowerOff()", "debug: session_handle:1", "debug: okay:1"},
                           EachCut(1, {{"PowerOffVDR session=null"}, restore_okay})),
        RestoreCommandFails(
            power_off, 35, sessions, {Number("00000002")}, " session=0", "PowerOffVDR session=0x502", restore_failed,
            {"debug: ProcessAlt_VADPPowerOff()", "debug: session_handle:2", "debug: okay:0"},
            EachCut(1, {{"PowerOffVDR session=null", "GetErrorMessage error=0x99", "FreeErrorInfo error=0x99"},
                        restore_failed})),
        RestoreCommandOkay(power_off, 35, sessions, {Number("FFFFFFFE")}, "", "PowerOffVDR session=null", restore_okay,
                           {"debug: ProcessAlt_VADPPowerOff()", "debug: session_handle:-2", "debug: okay:1"},
                           EachCut(1, {{"PowerOffVDR session=null"}, restore_okay})),

        RestoreCommandOkay("DeleteVM", 31, {restore_credentials, RestoreSession("0x500"), RestoreSession("0x501")},
                           {Text("vm"), Number("00000001")}, "", "DeleteVM session=0x501 credentials=0x101 path=\"vm\"",
                           restore_okay, RestoreLog("DeleteVM"),
                           {{{"DeleteVM session=null credentials=0x101 path=\"\""}, restore_okay},
                            {{"DeleteVM session=null credentials=0x101 path=\"vm\""}, restore_okay}}),
        RestoreCommandFails("DeleteVM", 31, sessions, {Text("vm"), Number("00000002")}, "",
                            "DeleteVM session=0x502 credentials=null path=\"vm\"", restore_failed,
                            RestoreLog("DeleteVM"),
                            {{{"DeleteVM session=null credentials=null path=\"\"", "GetErrorMessage error=0x99",
                               "FreeErrorInfo error=0x99"},
                              restore_failed},
                             {{"DeleteVM session=null credentials=null path=\"vm\"", "GetErrorMessage error=0x99",
                               "FreeErrorInfo error=0x99"},
                              restore_failed}}),
        RestoreCommandOkay("DeleteVM", 31, sessions, {Text("vm"), Number("80000000")}, "",
                           "DeleteVM session=null credentials=null path=\"vm\"", restore_okay, RestoreLog("DeleteVM"),
                           {{{"DeleteVM session=null credentials=null path=\"\""}, restore_okay},
                            {{"DeleteVM session=null credentials=null path=\"vm\""}, restore_okay}}),
    };
    return rows;
}

} // namespace kessil::test
