#include "rows/adapter_machines_rows.h"

namespace kessil::test {

namespace machines {

const Step credentials = {
    "CreateCredentials", "SIGNATURE_VADPCreateCredentials", {Str("u"), Str("p")}, "result=1 credentials=0x701"};

namespace {

// Restore sessions 0x501, 0x502 and 0x503, at 0, 1 and 2.
Step Session(const std::string &object)
{
    return {"PrepareVMRestore",
            "SIGNATURE_VADPPrepareVMRestore",
            {Str("vm"), "0000000000000000", Str("nbd")},
            "result=1 session=" + object};
}

const std::vector<Step> sessions = {Session("0x501"), Session("0x502"), Session("0x503")};

// Listings 0x301 and 0x302, at 0 and 1.
Step Listing(const std::string &object)
{
    return {"GetVMConfig", "SIGNATURE_VADPGetVMConfig", {Str("vm")}, "result=1 listing=" + object};
}

} // namespace

const Step disk = {"OpenDisk", "SIGNATURE_VADPOpenDisk", {Str("vm"), Str("disk"), "0000"}, "result=1 disk=0x601"};

namespace {

// In most texts of these rows the verb has a z.
std::u16string InputWithZ(const std::string &name)
{
    return u"Failed to serialize input (Process_VADP" + std::u16string(name.begin(), name.end()) + u")";
}

std::u16string OutputWithZ(const std::string &name)
{
    return u"Failed to serialize output (Process_VADP" + std::u16string(name.begin(), name.end()) + u")";
}

} // namespace

std::string Zeros(std::size_t bytes)
{
    return std::string(2 * bytes, '0');
}

namespace {

// The answer to a negative number: a status that says whether the values could be read, and the text only if not.
const std::string refused_after_good_reads = "00000001";

const std::string refused_after_a_failed_read =
    "FFFFFFFF" + Text("Invalid input: negative numbers are not allowed.").bytes;

// What an unread block looks like to the adapter, and the answer with no sectors.
const std::string no_data = " data=null";

const std::string no_sectors = no_log + "00000000";

} // namespace

} // namespace machines

const std::vector<AdapterRow> &MachinesRows()
{
    using namespace machines;
    static const std::vector<AdapterRow> rows = {
        {
            .function = "GetVMConfig",
            .signature = "SIGNATURE_VADPGetVMConfig",
            .before = {credentials, Listing("0x301"), Listing("0x302")},
            .in = {Str("dc/vm1")},
            .script = "result=1 listing=0x303 log=hello level=7",
            .error_text = "",
            .seen = {"GetVMConfig path=\"dc/vm1\" credentials=0x701 listing=null"},
            .frames = "4D 00000010 00000007 680065006C006C006F000000",
            .out = "00000002 00",
            .logged = {"debug: Process_VADPGetVMConfig()"},
            .input_failure = InputWithZ("GetVMConfig"),
            .error_failure = u"",
            .output_failure = OutputWithZ("GetVMConfig"),
            .room = 6,
        },
        {
            .function = "GetVMConfig",
            .signature = "SIGNATURE_VADPGetVMConfig",
            .before = {},
            .in = {Str("")},
            .script = "result=0 listing=0x303 error=0x99 log=x level=1",
            .error_text = "boom",
            .seen =
                std::vector<std::string>{"GetVMConfig path=\"\" credentials=null listing=null"} + ErrorTaken("0x99"),
            .frames = "4D 00000008 00000001 78000000",
            .out = "FFFFFFFF" + Str("boom"),
            .logged = {"debug: Process_VADPGetVMConfig()"},
            .input_failure = InputWithZ("GetVMConfig"),
            .error_failure = AdapterError("GetVMConfig"),
            .output_failure = OutputWithZ("GetVMConfig"),
            .room = 10,
        },
        {
            .function = "SetVMConfig",
            .signature = "SIGNATURE_VADPSetVMConfig",
            .before = sessions,
            .in = {"00000002", Str("cpus=2")},
            .script = "result=1",
            .error_text = "",
            .seen = {"SetVMConfig session=0x503 config=\"cpus=2\""},
            .frames = "",
            .out = "00",
            .logged = {"debug: Process_VADPSetVMConfig()"},
            .input_failure = InputWithZ("GetVMConfig"),
            .error_failure = u"",
            .output_failure = OutputWithZ("GetVMConfig"),
            .room = 2,
        },
        {
            .function = "SetVMConfig",
            .signature = "SIGNATURE_VADPSetVMConfig",
            .before = sessions,
            .in = {"00000003", Str("")},
            .script = "result=0 error=0x99",
            .error_text = "no session",
            .seen = std::vector<std::string>{"SetVMConfig session=null config=\"\""} + ErrorTaken("0x99"),
            .frames = "",
            .out = Str("no session"),
            .logged = {"debug: Process_VADPSetVMConfig()"},
            .input_failure = InputWithZ("GetVMConfig"),
            .error_failure = AdapterError("SetVMConfig"),
            .output_failure = OutputWithZ("GetVMConfig"),
            .room = 12,
        },
        {
            .function = "GetSnapshotConfig",
            .signature = "SIGNATURE_VADPGetSnapshotConfig",
            .before = {credentials, Listing("0x301"), Listing("0x302")},
            .in = {Str("vm"), "F0E1D2C3"},
            .script = "result=1 listing=0x303",
            .error_text = "",
            .seen = {"GetSnapshotConfig path=\"vm\" timestamp=4041331395 credentials=0x701 listing=null"},
            .frames = "",
            .out = "00000002 00",
            .logged = {"debug: Process_VADPGetSnapshotConfig()"},
            .input_failure = InputWithZ("GetSnapshotConfig"),
            .error_failure = u"",
            .output_failure = OutputWithZ("GetSnapshotConfig"),
            .room = 6,
        },
        {
            .function = "GetSnapshotConfig",
            .signature = "SIGNATURE_VADPGetSnapshotConfig",
            .before = {},
            .in = {Str("vm"), "00000001"},
            .script = "result=0 listing=0x303 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"GetSnapshotConfig path=\"vm\" timestamp=1 credentials=null "
                                             "listing=null"} +
                    ErrorTaken("0x99"),
            .frames = "",
            .out = "FFFFFFFF" + Str("boom"),
            .logged = {"debug: Process_VADPGetSnapshotConfig()"},
            .input_failure = InputWithZ("GetSnapshotConfig"),
            .error_failure = AdapterError("GetSnapshotConfig"),
            .output_failure = OutputWithZ("GetSnapshotConfig"),
            .room = 10,
        },
        {
            // Any bit of the 16 is enough.
            .function = "OpenDisk",
            .signature = "SIGNATURE_VADPOpenDisk",
            .before = {credentials, disk},
            .in = {Str("vm"), Str("disk1"), "0100"},
            .script = "result=1 disk=0x602",
            .error_text = "",
            .seen = {"OpenDisk vmPath=\"vm\" diskPath=\"disk1\" flag=1 credentials=0x701 disk=0x601"},
            .frames = "",
            .out = "00",
            .logged = {"debug: Process_VADPOpenDisk()"},
            .input_failure = InputWithZ("OpenDisk"),
            .error_failure = u"",
            .output_failure = OutputWithZ("OpenDisk"),
            .room = 2,
        },
        {
            .function = "OpenDisk",
            .signature = "SIGNATURE_VADPOpenDisk",
            .before = {},
            .in = {Str("vm"), Str("disk1"), "0000"},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"OpenDisk vmPath=\"vm\" diskPath=\"disk1\" flag=0 credentials=null "
                                             "disk=null"} +
                    ErrorTaken("0x99"),
            .frames = "",
            .out = Str("boom"),
            .logged = {"debug: Process_VADPOpenDisk()"},
            .input_failure = InputWithZ("OpenDisk"),
            .error_failure = AdapterError("OpenDisk"),
            .output_failure = OutputWithZ("OpenDisk"),
            .room = 6,
        },
        {
            .function = "CloseDisk",
            .signature = "SIGNATURE_VADPCloseDisk",
            .before = {disk},
            .in = {},
            .script = "result=1 thread_log=bye level=255",
            .error_text = "",
            .seen = {"CloseDisk disk=0x601"},
            .frames = "4D 0000000C 000000FF 6200790065000000",
            .out = "00",
            .logged = {"debug: Process_VADPCloseDisk()"},
            .input_failure = u"",
            .error_failure = u"",
            .output_failure = OutputWithZ("CloseDisk"),
            .room = 2,
        },
        {
            .function = "CloseDisk",
            .signature = "SIGNATURE_VADPCloseDisk",
            .before = {},
            .in = {},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"CloseDisk disk=null"} + ErrorTaken("0x99"),
            .frames = "",
            .out = Str("boom"),
            .logged = {"debug: Process_VADPCloseDisk()"},
            .input_failure = u"",
            .error_failure = AdapterError("CloseDisk"),
            .output_failure = OutputWithZ("CloseDisk"),
            .room = 6,
        },
        {
            // The data is at 16, where the in-list has it, and stays there; the error text begins where it would end
            // if the block were the first element.
            .function = "ReadSectors",
            .signature = "SIGNATURE_VADPReadSectors",
            .before = {disk},
            .in = {"F1F2F3F4", "80000002", "0000000C DDDDDDDD 101112131415161718191A1B"},
            .script = "result=1 peek=12 data=A0A1A2A3A4A5A6A7A8A9AAAB",
            .error_text = "",
            .seen = {"ReadSectors disk=0x601 start=4059231220 count=2147483650 data=101112131415161718191A1B"},
            .frames = "",
            .out = "0000000C 80000002 0000000C DDDDDDDD A0A1A2A3 00 A5A6A7A8A9AAAB",
            .logged = {},
            .input_failure = InputWithZ("ReadSectors"),
            .error_failure = u"",
            .output_failure = OutputWithZ("ReadSectors"),
            .room = 26,
        },
        {
            .function = "ReadSectors",
            .signature = "SIGNATURE_VADPReadSectors",
            .before = {},
            .in = {"00000003", "00000004", "00000008 DDDDDDDD 1011121314151617"},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"ReadSectors disk=null start=3 count=4 data="} + ErrorTaken("0x99"),
            .frames = "",
            .out = "00000008 00000004 00000008 DDDDDDDD" + Str("boom"),
            .logged = {},
            .input_failure = InputWithZ("ReadSectors"),
            .error_failure = AdapterError("ReadSectors"),
            .output_failure = OutputWithZ("ReadSectors"),
            .room = 26,
        },
        {
            .function = "WriteSectors",
            .signature = "SIGNATURE_VADPWriteSectors",
            .before = {disk},
            .in = {"F1F2F3F4", "80000002", "00000004 DDDDDDDD 10111213"},
            .script = "result=1 peek=4",
            .error_text = "",
            .seen = {"WriteSectors disk=0x601 start=4059231220 count=2147483650 data=10111213"},
            .frames = "",
            .out = "00",
            .logged = {},
            .input_failure = InputWithZ("WriteSectors"),
            .error_failure = u"",
            .output_failure = OutputWithZ("WriteSectors"),
            .room = 2,
        },
        {
            .function = "WriteSectors",
            .signature = "SIGNATURE_VADPWriteSectors",
            .before = {},
            .in = {"00000003", "00000004", "00000004 DDDDDDDD 10111213"},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"WriteSectors disk=null start=3 count=4 data="} + ErrorTaken("0x99"),
            .frames = "",
            .out = Str("boom"),
            .logged = {},
            .input_failure = InputWithZ("WriteSectors"),
            .error_failure = AdapterError("WriteSectors"),
            .output_failure = OutputWithZ("WriteSectors"),
            .room = 6,
        },
        {
            // The error text is asked for after a success as well.
            .function = "CreateVM",
            .signature = "SIGNATURE_VADPCreateVM",
            .before = {credentials},
            .in = {Str("one"), Str("two"), Str("three"), "00000002"},
            .script = "result=1",
            .error_text = "fine",
            .seen = std::vector<std::string>{"CreateVM first=\"one\" second=\"two\" third=\"three\" "
                                             "credentials=0x701 pairs=\"\""} +
                    ErrorTaken("null"),
            .frames = "",
            .out = Str("fine"),
            .logged = {"debug: Process_VADPCreateVM()"},
            .input_failure = InputWithZ("CreateVM"),
            .error_failure = AdapterError("CreateVM"),
            .output_failure = AdapterOutput("CreateVM"),
            .room = 6,
        },
        {
            // A line of the adapter's log doesn't come with the answer.
            .function = "CreateVM",
            .signature = "SIGNATURE_VADPCreateVM",
            .before = {},
            .in = {Str(""), Str(""), Str(""), "00000000"},
            .script = "result=0 error=0x99 log=waits level=1",
            .error_text = "boom",
            .seen = std::vector<std::string>{"CreateVM first=\"\" second=\"\" third=\"\" credentials=null "
                                             "pairs=\"\""} +
                    ErrorTaken("0x99"),
            .frames = "",
            .out = Str("boom"),
            .logged = {"debug: Process_VADPCreateVM()"},
            .input_failure = InputWithZ("CreateVM"),
            .error_failure = AdapterError("CreateVM"),
            .output_failure = AdapterOutput("CreateVM"),
            .room = 6,
        },
        {
            .function = "PowerOnVaioVM",
            .signature = "SIGNATURE_VADPPowerOnVaioVM",
            .before = {credentials},
            .in = {Str("vm")},
            .script = "result=1 log=x level=1",
            .error_text = "",
            .seen = std::vector<std::string>{"PowerOnVaioVM path=\"vm\" credentials=0x701"} + ErrorTaken("null"),
            .frames = "4D 00000008 00000001 78000000",
            .out = "00",
            .logged = {"debug: Process_VADPPowerOnVaioVM()"},
            .input_failure = InputWithZ("PowerOnVM"),
            .error_failure = AdapterError("PowerOnVaioVM"),
            .output_failure = OutputWithZ("PowerOnVaioVM"),
            .room = 2,
        },
        {
            .function = "PowerOnVaioVM",
            .signature = "SIGNATURE_VADPPowerOnVaioVM",
            .before = {},
            .in = {Str("")},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"PowerOnVaioVM path=\"\" credentials=null"} + ErrorTaken("0x99"),
            .frames = "",
            .out = Str("boom"),
            .logged = {"debug: Process_VADPPowerOnVaioVM()"},
            .input_failure = InputWithZ("PowerOnVM"),
            .error_failure = AdapterError("PowerOnVaioVM"),
            .output_failure = OutputWithZ("PowerOnVaioVM"),
            .room = 6,
        },
        {
            .function = "PowerOffVaioVM",
            .signature = "SIGNATURE_VADPPowerOffVaioVM",
            .before = {credentials},
            .in = {Str("vm")},
            .script = "result=1 log=x level=1",
            .error_text = "",
            .seen = std::vector<std::string>{"PowerOffVaioVM path=\"vm\" credentials=0x701"} + ErrorTaken("null"),
            .frames = "4D 00000008 00000001 78000000",
            .out = "00",
            .logged = {"debug: Process_VADPPowerOffVaioVM()"},
            .input_failure = InputWithZ("PowerOnVM"),
            .error_failure = AdapterError("PowerOffVaioVM"),
            .output_failure = OutputWithZ("PowerOffVaioVM"),
            .room = 2,
        },
        {
            .function = "PowerOffVaioVM",
            .signature = "SIGNATURE_VADPPowerOffVaioVM",
            .before = {},
            .in = {Str("")},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"PowerOffVaioVM path=\"\" credentials=null"} + ErrorTaken("0x99"),
            .frames = "",
            .out = Str("boom"),
            .logged = {"debug: Process_VADPPowerOffVaioVM()"},
            .input_failure = InputWithZ("PowerOnVM"),
            .error_failure = AdapterError("PowerOffVaioVM"),
            .output_failure = OutputWithZ("PowerOffVaioVM"),
            .room = 6,
        },
        {
            .function = "AttachPolicy",
            .signature = "SIGNATURE_VADPAttachPolicy",
            .before = {credentials},
            .in = {Str("vm"), Str("policy")},
            .script = "result=1 log=x level=1",
            .error_text = "",
            .seen = std::vector<std::string>{"AttachPolicy path=\"vm\" credentials=0x701 policyId=\"policy\""} +
                    ErrorTaken("null"),
            .frames = "4D 00000008 00000001 78000000",
            .out = "00",
            .logged = {"debug: Process_VADPAttachPolicy()"},
            .input_failure = InputWithZ("AttachPolicy"),
            .error_failure = AdapterError("AttachPolicy"),
            .output_failure = OutputWithZ("AttachPolicy"),
            .room = 2,
        },
        {
            .function = "AttachPolicy",
            .signature = "SIGNATURE_VADPAttachPolicy",
            .before = {},
            .in = {Str(""), Str("a policy with a name too long to be kept in place")},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"AttachPolicy path=\"\" credentials=null policyId=\"a policy with a "
                                             "name too long to be kept in place\""} +
                    ErrorTaken("0x99"),
            .frames = "",
            .out = Str("boom"),
            .logged = {"debug: Process_VADPAttachPolicy()"},
            .input_failure = InputWithZ("AttachPolicy"),
            .error_failure = AdapterError("AttachPolicy"),
            .output_failure = OutputWithZ("AttachPolicy"),
            .room = 6,
        },
        {
            .function = "GetHostCpus",
            .signature = "SIGNATURE_VADPGetHostCpus",
            .before = {credentials},
            .in = {Str("host")},
            .script = "result=1 number=0xF0000010",
            .error_text = "",
            .seen = {"GetHostCpus path=\"host\" credentials=0x701 number=0"},
            .frames = "",
            .out = "F0000010 00",
            .logged = {"debug: Process_VADPGetHostCpus()"},
            .input_failure = AdapterInput("GetHostCpus"),
            .error_failure = u"",
            .output_failure = AdapterOutput("GetHostCpus"),
            .room = 6,
        },
        {
            // The number is sent after a failure as well, as it was left.
            .function = "GetHostCpus",
            .signature = "SIGNATURE_VADPGetHostCpus",
            .before = {},
            .in = {Str("")},
            .script = "result=0 number=5 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"GetHostCpus path=\"\" credentials=null number=0"} + ErrorTaken("0x99"),
            .frames = "",
            .out = "00000005" + Str("boom"),
            .logged = {"debug: Process_VADPGetHostCpus()"},
            .input_failure = AdapterInput("GetHostCpus"),
            .error_failure = AdapterError("GetHostCpus"),
            .output_failure = AdapterOutput("GetHostCpus"),
            .room = 10,
        },
        {
            .function = "GetHostCpus",
            .signature = "SIGNATURE_VADPGetHostCpus",
            .before = {},
            .in = {Str("host")},
            .script = "result=0",
            .error_text = "none",
            .seen =
                std::vector<std::string>{"GetHostCpus path=\"host\" credentials=null number=0"} + ErrorTaken("null"),
            .frames = "",
            .out = "00000000" + Str("none"),
            .logged = {"debug: Process_VADPGetHostCpus()"},
            .input_failure = AdapterInput("GetHostCpus"),
            .error_failure = AdapterError("GetHostCpus"),
            .output_failure = AdapterOutput("GetHostCpus"),
            .room = 10,
        },
    };
    return rows;
}

const std::vector<CommandRow> &MachinesCommands()
{
    using namespace machines;
    // The first item's numbers have their highest bits set; neither of the second numbers is sent.
    const std::string items = "items=a:0x80000001:0xF122334455667788:9,bc:2:3:4";
    const std::string listing =
        no_log + "00000002" + "00000001 61 F122334455667788 80000001" + "00000002 6263 0000000000000003 00000002";
    static const std::vector<CommandRow> rows = {
        {
            .function = "GetVMConfig",
            .command = 53,
            .signature = "SIGNATURE_VADPGetVMConfig",
            .before = {credentials},
            .in = {Text("dc/vm1")},
            .script = "result=1 " + items,
            .error_text = "",
            .seen = {"GetVMConfig path=\"dc/vm1\" credentials=0x701 listing=null"},
            .reply = listing,
            .logged = {"debug: ProcessAlt_VADPGetVMConfig()", "debug: path==dc/vm1", "debug: Writing n_items==2"},
            .cuts = EachCut(1, {{"GetVMConfig path=\"\" credentials=0x701 listing=null"}, listing}),
        },
        {
            .function = "GetVMConfig",
            .command = 53,
            .signature = "SIGNATURE_VADPGetVMConfig",
            .before = {},
            .in = {Text("vm")},
            .script = "result=0 error=0x99 " + items,
            .error_text = "boom",
            .seen =
                std::vector<std::string>{"GetVMConfig path=\"vm\" credentials=null listing=null"} + ErrorTaken("0x99"),
            .reply = StatusFailed("boom"),
            .logged = {"debug: ProcessAlt_VADPGetVMConfig()", "debug: path==vm"},
            .cuts = EachCut(1, {std::vector<std::string>{"GetVMConfig path=\"\" credentials=null listing=null"} +
                                    ErrorTaken("0x99"),
                                StatusFailed("boom")}),
        },
        {
            .function = "GetVMConfig",
            .command = 53,
            .signature = "SIGNATURE_VADPGetVMConfig",
            .before = {},
            .in = {Text("")},
            .script = "result=1",
            .error_text = "",
            .seen = {"GetVMConfig path=\"\" credentials=null listing=null"},
            .reply = no_log + "00000000",
            .logged = {"debug: ProcessAlt_VADPGetVMConfig()", "debug: path==", "debug: Writing n_items==0"},
            .cuts = EachCut(1, {{"GetVMConfig path=\"\" credentials=null listing=null"}, no_log + "00000000"}),
        },
        {
            .function = "SetVMConfig",
            .command = 61,
            .signature = "SIGNATURE_VADPSetVMConfig",
            .before = sessions,
            .in = {Number("00000002"), {"00000006 637075733D32"}},
            .script = "result=1 log=x level=200",
            .error_text = "",
            .seen = {"SetVMConfig session=0x503 config=\"cpus=2\""},
            .reply = "FFFFFF9D 00000001 78 000000C8" + status_okay,
            .logged = {"debug: ProcessAlt_VADPSetVMConfig()"},
            .cuts = {{{"SetVMConfig session=null config=\"\""}, "FFFFFF9D 00000001 78 000000C8" + status_okay},
                     {{"SetVMConfig session=0x503 config=\"\""}, "FFFFFF9D 00000001 78 000000C8" + status_okay}},
        },
        {
            // A text ends where the adapter finds its end.
            .function = "SetVMConfig",
            .command = 61,
            .signature = "SIGNATURE_VADPSetVMConfig",
            .before = sessions,
            .in = {Number("FFFFFFFE"), {"00000003 610062"}},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"SetVMConfig session=null config=\"a\""} + ErrorTaken("0x99"),
            .reply = StatusFailed("boom"),
            .logged = {"debug: ProcessAlt_VADPSetVMConfig()"},
            .cuts = EachCut(2, {std::vector<std::string>{"SetVMConfig session=null config=\"\""} + ErrorTaken("0x99"),
                                StatusFailed("boom")}),
        },
        {
            .function = "SetVMConfig",
            .command = 61,
            .signature = "SIGNATURE_VADPSetVMConfig",
            .before = sessions,
            .in = {Number("00000003"), {"00000000"}},
            .script = "result=1",
            .error_text = "",
            .seen = {"SetVMConfig session=null config=\"\""},
            .reply = status_okay,
            .logged = {"debug: ProcessAlt_VADPSetVMConfig()"},
            .cuts = EachCut(2, {{"SetVMConfig session=null config=\"\""}, status_okay}),
        },
        {
            .function = "GetSnapshotConfig",
            .command = 54,
            .signature = "SIGNATURE_VADPGetSnapshotConfig",
            .before = {credentials},
            .in = {Text("vm"), Number("F0E1D2C3")},
            .script = "result=1 " + items,
            .error_text = "",
            .seen = {"GetSnapshotConfig path=\"vm\" timestamp=4041331395 credentials=0x701 listing=null"},
            .reply = listing,
            .logged = {"debug: ProcessAlt_VADPGetSnapshotConfig()", "debug: path==vm", "debug: timestamp==4041331395",
                       "debug: Writing n_items==2"},
            .cuts = {{{"GetSnapshotConfig path=\"\" timestamp=0 credentials=0x701 listing=null"}, listing},
                     {{"GetSnapshotConfig path=\"vm\" timestamp=0 credentials=0x701 listing=null"}, listing}},
        },
        {
            .function = "GetSnapshotConfig",
            .command = 54,
            .signature = "SIGNATURE_VADPGetSnapshotConfig",
            .before = {},
            .in = {Text("vm"), Number("00000001")},
            .script = "result=0 error=0x99 items=",
            .error_text = "boom",
            .seen = std::vector<std::string>{"GetSnapshotConfig path=\"vm\" timestamp=1 credentials=null "
                                             "listing=null"} +
                    ErrorTaken("0x99"),
            .reply = StatusFailed("boom"),
            .logged = {"debug: ProcessAlt_VADPGetSnapshotConfig()", "debug: path==vm", "debug: timestamp==1"},
            .cuts = {{std::vector<std::string>{"GetSnapshotConfig path=\"\" timestamp=0 credentials=null "
                                               "listing=null"} +
                          ErrorTaken("0x99"),
                      StatusFailed("boom")},
                     {std::vector<std::string>{"GetSnapshotConfig path=\"vm\" timestamp=0 credentials=null "
                                               "listing=null"} +
                          ErrorTaken("0x99"),
                      StatusFailed("boom")}},
        },
        {
            // Any bit of the 32 is enough.
            .function = "OpenDisk",
            .command = 55,
            .signature = "SIGNATURE_VADPOpenDisk",
            .before = {credentials, disk},
            .in = {Text("vm"), Text("disk1"), Number("01000000")},
            .script = "result=1 disk=0x602 thread_log=\\xFF level=200",
            .error_text = "",
            .seen = {"OpenDisk vmPath=\"vm\" diskPath=\"disk1\" flag=1 credentials=0x701 disk=0x601"},
            .reply = "FFFFFF9D 00000001 FF 000000C8" + status_okay,
            .logged = {"debug: ProcessAlt_VADPOpenDisk()", "debug: vmPath==vm", "debug: diskPath==disk1"},
            .cuts = {{{"OpenDisk vmPath=\"\" diskPath=\"\" flag=0 credentials=0x701 disk=0x601"},
                      "FFFFFF9D 00000001 FF 000000C8" + status_okay},
                     {{"OpenDisk vmPath=\"vm\" diskPath=\"\" flag=0 credentials=0x701 disk=0x601"},
                      "FFFFFF9D 00000001 FF 000000C8" + status_okay},
                     {{"OpenDisk vmPath=\"vm\" diskPath=\"disk1\" flag=0 credentials=0x701 disk=0x601"},
                      "FFFFFF9D 00000001 FF 000000C8" + status_okay}},
        },
        {
            .function = "OpenDisk",
            .command = 55,
            .signature = "SIGNATURE_VADPOpenDisk",
            .before = {},
            .in = {Text("vm"), Text("disk1"), Flag(false)},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"OpenDisk vmPath=\"vm\" diskPath=\"disk1\" flag=0 credentials=null "
                                             "disk=null"} +
                    ErrorTaken("0x99"),
            .reply = StatusFailed("boom"),
            .logged = {"debug: ProcessAlt_VADPOpenDisk()", "debug: vmPath==vm", "debug: diskPath==disk1"},
            .cuts = {{std::vector<std::string>{"OpenDisk vmPath=\"\" diskPath=\"\" flag=0 credentials=null "
                                               "disk=null"} +
                          ErrorTaken("0x99"),
                      StatusFailed("boom")},
                     {std::vector<std::string>{"OpenDisk vmPath=\"vm\" diskPath=\"\" flag=0 credentials=null "
                                               "disk=null"} +
                          ErrorTaken("0x99"),
                      StatusFailed("boom")},
                     {std::vector<std::string>{"OpenDisk vmPath=\"vm\" diskPath=\"disk1\" flag=0 credentials=null "
                                               "disk=null"} +
                          ErrorTaken("0x99"),
                      StatusFailed("boom")}},
        },
        {
            .function = "CloseDisk",
            .command = 56,
            .signature = "SIGNATURE_VADPCloseDisk",
            .before = {disk},
            .in = {},
            .script = "result=1",
            .error_text = "",
            .seen = {"CloseDisk disk=0x601"},
            .reply = status_okay,
            .logged = {"debug: ProcessAlt_VADPCloseDisk()"},
            .cuts = {},
        },
        {
            .function = "CloseDisk",
            .command = 56,
            .signature = "SIGNATURE_VADPCloseDisk",
            .before = {},
            .in = {},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"CloseDisk disk=null"} + ErrorTaken("0x99"),
            .reply = StatusFailed("boom"),
            .logged = {"debug: ProcessAlt_VADPCloseDisk()"},
            .cuts = {},
        },
        {
            // The block that the parent sends is of no use; the adapter gets zeros.
            .function = "ReadSectors",
            .command = 57,
            .signature = "SIGNATURE_VADPReadSectors",
            .before = {disk},
            .in = {Number("7102030405060708"), Number("0000000000000001"), {"00000003 AABBCC"}},
            .script = "result=1 peek=512",
            .error_text = "",
            .seen = {"ReadSectors disk=0x601 start=8143074392038311688 count=1 data=" + Zeros(512)},
            .reply = no_log + "00000200" + Zeros(512),
            .logged = {},
            .cuts = {{{"ReadSectors disk=0x601 start=0 count=0" + no_data}, no_sectors},
                     {{"ReadSectors disk=0x601 start=8143074392038311688 count=0" + no_data}, no_sectors},
                     {{"ReadSectors disk=0x601 start=8143074392038311688 count=1 data=" + Zeros(512)},
                      no_log + "00000200" + Zeros(512)}},
        },
        {
            .function = "ReadSectors",
            .command = 57,
            .signature = "SIGNATURE_VADPReadSectors",
            .before = {},
            .in = {Number("0000000000000003"), Number("0000000000000001"), {"00000000"}},
            .script = "result=0 error=0x99 log=x level=1",
            .error_text = "boom",
            .seen = std::vector<std::string>{"ReadSectors disk=null start=3 count=1 data="} + ErrorTaken("0x99"),
            .reply = "FFFFFF9D 00000001 78 00000001" + StatusFailed("boom"),
            .logged = {},
            .cuts = {{std::vector<std::string>{"ReadSectors disk=null start=0 count=0" + no_data} + ErrorTaken("0x99"),
                      "FFFFFF9D 00000001 78 00000001" + StatusFailed("boom")},
                     {std::vector<std::string>{"ReadSectors disk=null start=3 count=0" + no_data} + ErrorTaken("0x99"),
                      "FFFFFF9D 00000001 78 00000001" + StatusFailed("boom")},
                     {std::vector<std::string>{"ReadSectors disk=null start=3 count=1 data="} + ErrorTaken("0x99"),
                      "FFFFFF9D 00000001 78 00000001" + StatusFailed("boom")}},
        },
        {
            // A negative start is answered ahead of everything else, and read all the same.
            .function = "ReadSectors",
            .command = 57,
            .signature = "SIGNATURE_VADPReadSectors",
            .before = {disk},
            .in = {Number("FFFFFFFFFFFFFFFF"), Number("0000000000000001"), {"00000000"}},
            .script = "result=1 log=x level=1",
            .error_text = "",
            .seen = {"ReadSectors disk=0x601 start=18446744073709551615 count=1 data="},
            .reply = refused_after_good_reads + "FFFFFF9D 00000001 78 00000001" + no_log + "00000200" + Zeros(512),
            .logged = {},
            .cuts =
                {{{"ReadSectors disk=0x601 start=0 count=0" + no_data}, "FFFFFF9D 00000001 78 00000001" + no_sectors},
                 {{"ReadSectors disk=0x601 start=18446744073709551615 count=0" + no_data},
                  refused_after_a_failed_read + "FFFFFF9D 00000001 78 00000001" + no_sectors},
                 {{"ReadSectors disk=0x601 start=18446744073709551615 count=1 data="},
                  refused_after_a_failed_read + "FFFFFF9D 00000001 78 00000001" + no_log + "00000200" + Zeros(512)}},
        },
        {
            .function = "WriteSectors",
            .command = 58,
            .signature = "SIGNATURE_VADPWriteSectors",
            .before = {disk},
            .in = {Number("7102030405060708"), Number("6102030405060708"), {"00000004 10111213"}},
            .script = "result=1 peek=4",
            .error_text = "",
            .seen = {"WriteSectors disk=0x601 start=8143074392038311688 count=6990152887431464712 data=10111213"},
            .reply = status_okay,
            .logged = {},
            .cuts = {{{"WriteSectors disk=0x601 start=0 count=0" + no_data}, status_okay},
                     {{"WriteSectors disk=0x601 start=8143074392038311688 count=0" + no_data}, status_okay},
                     {{"WriteSectors disk=0x601 start=8143074392038311688 count=6990152887431464712" + no_data},
                      status_okay}},
        },
        {
            .function = "WriteSectors",
            .command = 58,
            .signature = "SIGNATURE_VADPWriteSectors",
            .before = {},
            .in = {Number("0000000000000003"), Number("0000000000000004"), {"00000000"}},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"WriteSectors disk=null start=3 count=4" + no_data} + ErrorTaken("0x99"),
            .reply = StatusFailed("boom"),
            .logged = {},
            .cuts = {{std::vector<std::string>{"WriteSectors disk=null start=0 count=0" + no_data} + ErrorTaken("0x99"),
                      StatusFailed("boom")},
                     {std::vector<std::string>{"WriteSectors disk=null start=3 count=0" + no_data} + ErrorTaken("0x99"),
                      StatusFailed("boom")},
                     {std::vector<std::string>{"WriteSectors disk=null start=3 count=4" + no_data} + ErrorTaken("0x99"),
                      StatusFailed("boom")}},
        },
        {
            // A negative count is answered ahead of everything else, and written all the same.
            .function = "WriteSectors",
            .command = 58,
            .signature = "SIGNATURE_VADPWriteSectors",
            .before = {disk},
            .in = {Number("0000000000000003"), Number("FFFFFFFFFFFFFFFF"), {"00000002 1011"}},
            .script = "result=1 peek=2 log=x level=1",
            .error_text = "",
            .seen = {"WriteSectors disk=0x601 start=3 count=18446744073709551615 data=1011"},
            .reply = refused_after_good_reads + "FFFFFF9D 00000001 78 00000001" + status_okay,
            .logged = {},
            .cuts = {{{"WriteSectors disk=0x601 start=0 count=0" + no_data},
                      "FFFFFF9D 00000001 78 00000001" + status_okay},
                     {{"WriteSectors disk=0x601 start=3 count=0" + no_data},
                      "FFFFFF9D 00000001 78 00000001" + status_okay},
                     {{"WriteSectors disk=0x601 start=3 count=18446744073709551615" + no_data},
                      refused_after_a_failed_read + "FFFFFF9D 00000001 78 00000001" + status_okay}},
        },
        {
            .function = "WriteSectors",
            .command = 58,
            .signature = "SIGNATURE_VADPWriteSectors",
            .before = {disk},
            .in = {Number("8000000000000000"), Number("0000000000000001"), {"00000000"}},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"WriteSectors disk=0x601 start=9223372036854775808 count=1" + no_data} +
                    ErrorTaken("0x99"),
            .reply = refused_after_good_reads + StatusFailed("boom"),
            .logged = {},
            .cuts = {{std::vector<std::string>{"WriteSectors disk=0x601 start=0 count=0" + no_data} +
                          ErrorTaken("0x99"),
                      StatusFailed("boom")},
                     {std::vector<std::string>{"WriteSectors disk=0x601 start=9223372036854775808 count=0" + no_data} +
                          ErrorTaken("0x99"),
                      refused_after_a_failed_read + StatusFailed("boom")},
                     {std::vector<std::string>{"WriteSectors disk=0x601 start=9223372036854775808 count=1" + no_data} +
                          ErrorTaken("0x99"),
                      refused_after_a_failed_read + StatusFailed("boom")}},
        },
        {
            // No pairs.
            .function = "CreateVM",
            .command = 59,
            .signature = "SIGNATURE_VADPCreateVM",
            .before = {credentials},
            .in = {Number("0000000000000000"), Text("one"), Text("two"), Text("three")},
            .script = "result=1",
            .error_text = "",
            .seen = {"CreateVM first=\"one\" second=\"two\" third=\"three\" credentials=0x701 pairs=\"\""},
            .reply = status_okay,
            .logged = {"debug: ProcessAlt_VADPCreateVM()"},
            .cuts = {{{"CreateVM first=\"\" second=\"\" third=\"\" credentials=0x701 pairs=\"\""}, status_okay},
                     {{"CreateVM first=\"\" second=\"\" third=\"\" credentials=0x701 pairs=\"\""}, status_okay},
                     {{"CreateVM first=\"one\" second=\"\" third=\"\" credentials=0x701 pairs=\"\""}, status_okay},
                     {{"CreateVM first=\"one\" second=\"two\" third=\"\" credentials=0x701 pairs=\"\""}, status_okay}},
        },
        {
            // Less than no pairs.
            .function = "CreateVM",
            .command = 59,
            .signature = "SIGNATURE_VADPCreateVM",
            .before = {},
            .in = {Number("FFFFFFFFFFFFFFFF"), Text("1"), Text("2"), Text("3")},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"CreateVM first=\"1\" second=\"2\" third=\"3\" credentials=null "
                                             "pairs=\"\""} +
                    ErrorTaken("0x99"),
            .reply = StatusFailed("boom"),
            .logged = {"debug: ProcessAlt_VADPCreateVM()"},
            .cuts = {{std::vector<std::string>{"CreateVM first=\"\" second=\"\" third=\"\" credentials=null "
                                               "pairs=\"\""} +
                          ErrorTaken("0x99"),
                      StatusFailed("boom")},
                     {std::vector<std::string>{"CreateVM first=\"\" second=\"\" third=\"\" credentials=null "
                                               "pairs=\"\""} +
                          ErrorTaken("0x99"),
                      StatusFailed("boom")},
                     {std::vector<std::string>{"CreateVM first=\"1\" second=\"\" third=\"\" credentials=null "
                                               "pairs=\"\""} +
                          ErrorTaken("0x99"),
                      StatusFailed("boom")},
                     {std::vector<std::string>{"CreateVM first=\"1\" second=\"2\" third=\"\" credentials=null "
                                               "pairs=\"\""} +
                          ErrorTaken("0x99"),
                      StatusFailed("boom")}},
        },
        {
            .function = "PowerOnVaioVM",
            .command = 62,
            .signature = "SIGNATURE_VADPPowerOnVaioVM",
            .before = {credentials},
            .in = {Text("vm")},
            .script = "result=1",
            .error_text = "",
            .seen = {"PowerOnVaioVM path=\"vm\" credentials=0x701"},
            .reply = status_okay,
            .logged = {"debug: ProcessAlt_VADPPowerOnVaioVM()", "debug: path==vm"},
            .cuts = EachCut(1, {{"PowerOnVaioVM path=\"\" credentials=0x701"}, status_okay}),
        },
        {
            .function = "PowerOnVaioVM",
            .command = 62,
            .signature = "SIGNATURE_VADPPowerOnVaioVM",
            .before = {},
            .in = {Text("vm")},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"PowerOnVaioVM path=\"vm\" credentials=null"} + ErrorTaken("0x99"),
            .reply = StatusFailed("boom"),
            .logged = {"debug: ProcessAlt_VADPPowerOnVaioVM()", "debug: path==vm"},
            .cuts =
                EachCut(1, {std::vector<std::string>{"PowerOnVaioVM path=\"\" credentials=null"} + ErrorTaken("0x99"),
                            StatusFailed("boom")}),
        },
        {
            .function = "PowerOffVaioVM",
            .command = 63,
            .signature = "SIGNATURE_VADPPowerOffVaioVM",
            .before = {credentials},
            .in = {Text("vm")},
            .script = "result=1",
            .error_text = "",
            .seen = {"PowerOffVaioVM path=\"vm\" credentials=0x701"},
            .reply = status_okay,
            .logged = {"debug: ProcessAlt_VADPPowerOffVaioVM()", "debug: path==vm"},
            .cuts = EachCut(1, {{"PowerOffVaioVM path=\"\" credentials=0x701"}, status_okay}),
        },
        {
            .function = "PowerOffVaioVM",
            .command = 63,
            .signature = "SIGNATURE_VADPPowerOffVaioVM",
            .before = {},
            .in = {Text("vm")},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"PowerOffVaioVM path=\"vm\" credentials=null"} + ErrorTaken("0x99"),
            .reply = StatusFailed("boom"),
            .logged = {"debug: ProcessAlt_VADPPowerOffVaioVM()", "debug: path==vm"},
            .cuts =
                EachCut(1, {std::vector<std::string>{"PowerOffVaioVM path=\"\" credentials=null"} + ErrorTaken("0x99"),
                            StatusFailed("boom")}),
        },
        {
            .function = "DeleteVaioVM",
            .command = 64,
            .signature = "SIGNATURE_VADPDeleteVaioVM",
            .before = {credentials},
            .in = {Text("vm")},
            .script = "result=1",
            .error_text = "",
            .seen = {"DeleteVaioVM path=\"vm\" credentials=0x701"},
            .reply = status_okay,
            .logged = {"debug: ProcessAlt_VADPDeleteVaioVM()", "debug: path==vm"},
            .cuts = EachCut(1, {{"DeleteVaioVM path=\"\" credentials=0x701"}, status_okay}),
        },
        {
            .function = "DeleteVaioVM",
            .command = 64,
            .signature = "SIGNATURE_VADPDeleteVaioVM",
            .before = {},
            .in = {Text("vm")},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"DeleteVaioVM path=\"vm\" credentials=null"} + ErrorTaken("0x99"),
            .reply = StatusFailed("boom"),
            .logged = {"debug: ProcessAlt_VADPDeleteVaioVM()", "debug: path==vm"},
            .cuts =
                EachCut(1, {std::vector<std::string>{"DeleteVaioVM path=\"\" credentials=null"} + ErrorTaken("0x99"),
                            StatusFailed("boom")}),
        },
        {
            .function = "CloneVM",
            .command = 65,
            .signature = "SIGNATURE_VADPCloneVM",
            .before = {credentials},
            .in = {Text("vm"), Text("copy"), Text("store")},
            .script = "result=1",
            .error_text = "",
            .seen = {"CloneVM sourcePath=\"vm\" second=\"copy\" third=\"store\" credentials=0x701"},
            .reply = status_okay,
            .logged = {"debug: ProcessAlt_VADPCloneVM()", "debug: sourcePath==vm", "debug: destinationPath==copy",
                       "debug: destinationPath==store"},
            .cuts = {{{"CloneVM sourcePath=\"\" second=\"\" third=\"\" credentials=0x701"}, status_okay},
                     {{"CloneVM sourcePath=\"vm\" second=\"\" third=\"\" credentials=0x701"}, status_okay},
                     {{"CloneVM sourcePath=\"vm\" second=\"copy\" third=\"\" credentials=0x701"}, status_okay}},
        },
        {
            .function = "CloneVM",
            .command = 65,
            .signature = "SIGNATURE_VADPCloneVM",
            .before = {},
            .in = {Text("a"), Text("b"), Text("c")},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"CloneVM sourcePath=\"a\" second=\"b\" third=\"c\" credentials=null"} +
                    ErrorTaken("0x99"),
            .reply = StatusFailed("boom"),
            .logged = {"debug: ProcessAlt_VADPCloneVM()", "debug: sourcePath==a", "debug: destinationPath==b",
                       "debug: destinationPath==c"},
            .cuts = {{std::vector<std::string>{"CloneVM sourcePath=\"\" second=\"\" third=\"\" credentials=null"} +
                          ErrorTaken("0x99"),
                      StatusFailed("boom")},
                     {std::vector<std::string>{"CloneVM sourcePath=\"a\" second=\"\" third=\"\" credentials=null"} +
                          ErrorTaken("0x99"),
                      StatusFailed("boom")},
                     {std::vector<std::string>{"CloneVM sourcePath=\"a\" second=\"b\" third=\"\" credentials=null"} +
                          ErrorTaken("0x99"),
                      StatusFailed("boom")}},
        },
        {
            .function = "AttachPolicy",
            .command = 66,
            .signature = "SIGNATURE_VADPAttachPolicy",
            .before = {credentials},
            .in = {Text("vm"), Text("policy")},
            .script = "result=1",
            .error_text = "",
            .seen = {"AttachPolicy path=\"vm\" credentials=0x701 policyId=\"policy\""},
            .reply = status_okay,
            .logged = {"debug: ProcessAlt_VADPAttachPolicy()", "debug: path==vm", "debug: policyId==policy"},
            .cuts = {{{"AttachPolicy path=\"\" credentials=0x701 policyId=\"\""}, status_okay},
                     {{"AttachPolicy path=\"vm\" credentials=0x701 policyId=\"\""}, status_okay}},
        },
        {
            .function = "AttachPolicy",
            .command = 66,
            .signature = "SIGNATURE_VADPAttachPolicy",
            .before = {},
            .in = {Text("vm"), Text("p")},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"AttachPolicy path=\"vm\" credentials=null policyId=\"p\""} +
                    ErrorTaken("0x99"),
            .reply = StatusFailed("boom"),
            .logged = {"debug: ProcessAlt_VADPAttachPolicy()", "debug: path==vm", "debug: policyId==p"},
            .cuts = {{std::vector<std::string>{"AttachPolicy path=\"\" credentials=null policyId=\"\""} +
                          ErrorTaken("0x99"),
                      StatusFailed("boom")},
                     {std::vector<std::string>{"AttachPolicy path=\"vm\" credentials=null policyId=\"\""} +
                          ErrorTaken("0x99"),
                      StatusFailed("boom")}},
        },
    };
    return rows;
}

} // namespace kessil::test
