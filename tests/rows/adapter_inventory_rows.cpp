#include "rows/adapter_inventory_rows.h"

namespace kessil::test {

namespace inventory {
namespace {

// What the calls work on: objects 0x501 and up are credentials, 0x601 caches, 0x701 options, 0x301 listings, 0x801
// restore sessions, 0x901 readers.
Step WithCredentials()
{
    return {"CreateCredentials",
            "SIGNATURE_VADPCreateCredentials",
            {Str("user"), Str("word")},
            "result=1 credentials=0x501"};
}

Step WithCache()
{
    return {"CreateListingCache", "SIGNATURE_VADPCreateListingCache", {Str("cached")}, "result=1 cache=0x601"};
}

Step WithOptions(const std::string &object)
{
    return {"CreateBackupOptions",
            "SIGNATURE_VADPCreateBackupOptions",
            {"0000", "0000", "0000", "0000", "0000", Str("")},
            "result=1 options=" + object};
}

Step WithListing(const std::string &object)
{
    return {"ListResourcePools", "SIGNATURE_VADPListResourcePools", {Str("listed")}, "result=1 listing=" + object};
}

Step WithSession(const std::string &object)
{
    return {"PrepareVMRestore",
            "SIGNATURE_VADPPrepareVMRestore",
            {Str("vm"), "0000000000000000", Str("san")},
            "result=1 session=" + object};
}

Step WithReader(const std::string &object)
{
    return {"OpenConfigRead", "SIGNATURE_VADPOpenConfigRead", {"00000000", Str("read")}, "result=1 reader=" + object};
}

// The log line "hello", level 7, as it travels in either generation.
const std::string hello = "4D 00000010 00000007 680065006C006C006F000000";

const std::string hello_alt = "FFFFFF9D 00000005 68656C6C6F 00000007";

// The listings of one path: a success, whose listing is the second of the table, and a failure.
std::vector<AdapterRow> ListByPath(const std::string &name)
{
    return {
        {
            .function = name,
            .signature = "SIGNATURE_VADP" + name,
            .before = {WithCredentials(), WithListing("0x301")},
            .in = {Str("vc/dc")},
            .script = "result=1 listing=0x302 log=hello level=7",
            .error_text = "",
            .seen = {name + " path=\"vc/dc\" credentials=0x501 listing=null"},
            .frames = hello,
            .out = "00000001 00",
            .logged = {"debug: Process_VADP" + name + "()"},
            .input_failure = AdapterInput(name),
            .error_failure = u"",
            .output_failure = AdapterOutput(name),
            .room = 6,
        },
        {
            .function = name,
            .signature = "SIGNATURE_VADP" + name,
            .before = {},
            .in = {Str("")},
            .script = "result=0 listing=0x301 error=0x99 log=hello level=7",
            .error_text = "boom",
            .seen = std::vector<std::string>{name + " path=\"\" credentials=null listing=null"} + ErrorTaken("0x99"),
            .frames = hello,
            .out = "FFFFFFFF" + Str("boom"),
            .logged = {"debug: Process_VADP" + name + "()"},
            .input_failure = AdapterInput(name),
            .error_failure = AdapterError(name),
            .output_failure = AdapterOutput(name),
            .room = 10,
        },
    };
}

// The listing that commands answer with, without the second numbers and with them.
const std::string items = "items=b\\xE9:1:0xFEDCBA9876543210:3,c:0x80000000:5:0x87654321";

const std::string short_items = "00000002"
                                "00000002 62E9 FEDCBA9876543210 00000001"
                                "00000001 63 0000000000000005 80000000";

const std::string long_items = "00000002"
                               "00000002 62E9 FEDCBA9876543210 00000001 00000003"
                               "00000001 63 0000000000000005 80000000 87654321";

// The commands of one path: a listing, one that the adapter left null, and a failure that left a listing all the same.
// `skips` says what a failed read does; `logged` is what the log gets before the call, "@" being the path.
struct PathCommand
{
    std::string name;
    std::uint8_t command;
    bool skips;
    std::string reply;
    std::vector<std::string> logged;
    std::vector<std::string> ahead_of_list;
    std::vector<std::string> behind_list;
    std::vector<std::string> logged_failure;
};

std::vector<CommandRow> ListByPath(const PathCommand &list)
{
    const std::vector<std::string> entry = {"debug: ProcessAlt_VADP" + list.name + "()"};
    const auto before = [&](const std::string &path) {
        std::vector<std::string> lines = list.logged;
        for (std::string &line : lines)
            line.replace(line.find('@'), 1, path);
        return lines;
    };
    const std::string unread = list.name + " path=\"\" credentials=0x501 listing=null";
    return {
        {
            .function = list.name,
            .command = list.command,
            .signature = "SIGNATURE_VADP" + list.name,
            .before = {WithCredentials()},
            .in = {Text("vc/dc")},
            .script = "result=1 log=hello level=7 " + items,
            .error_text = "none",
            .seen = {list.name + " path=\"vc/dc\" credentials=0x501 listing=null"},
            .reply = hello_alt + no_log + list.reply,
            .logged = entry + before("vc/dc") + list.ahead_of_list +
                      std::vector<std::string>{"debug: Writing n_items==2"} + list.behind_list,
            .cuts = {list.skips ? Cut{ErrorTaken("null"), StatusFailed("none")}
                                : Cut{{unread}, hello_alt + no_log + list.reply}},
        },
        {
            .function = list.name,
            .command = list.command,
            .signature = "SIGNATURE_VADP" + list.name,
            .before = {},
            .in = {Text("")},
            .script = "result=1",
            .error_text = "none",
            .seen = {list.name + " path=\"\" credentials=null listing=null"},
            .reply = no_log + "00000000",
            .logged = entry + before("") + list.ahead_of_list + std::vector<std::string>{"debug: Writing n_items==0"} +
                      list.behind_list,
            .cuts = {list.skips ? Cut{ErrorTaken("null"), StatusFailed("none")}
                                : Cut{{list.name + " path=\"\" credentials=null listing=null"}, no_log + "00000000"}},
        },
        {
            .function = list.name,
            .command = list.command,
            .signature = "SIGNATURE_VADP" + list.name,
            .before = {WithCredentials()},
            .in = {Text("vc")},
            .script = "result=0 error=0x99 log=hello level=7 " + items,
            .error_text = "boom",
            .seen = std::vector<std::string>{list.name + " path=\"vc\" credentials=0x501 listing=null"} +
                    ErrorTaken("0x99"),
            .reply = hello_alt + StatusFailed("boom"),
            .logged = entry + before("vc") + list.logged_failure,
            .cuts = {list.skips ? Cut{ErrorTaken("null"), StatusFailed("boom")}
                                : Cut{std::vector<std::string>{unread} + ErrorTaken("0x99"),
                                      hello_alt + StatusFailed("boom")}},
        },
    };
}

} // namespace

} // namespace inventory

namespace {

std::vector<AdapterRow> MakeInventoryRows()
{
    using namespace inventory;
    std::vector<AdapterRow> rows = {
        {
            .function = "GetLibraryVersion",
            .signature = "SIGNATURE_VADPGetLibraryVersion",
            .before = {},
            .in = {},
            .script = "log=hello level=7 text=6.5.1 build 2",
            .error_text = "unasked",
            .seen = {"GetLibraryVersion"},
            .frames = hello,
            .out = Str("6.5.1 build 2"),
            .logged = {"debug: Process_VADPGetLibraryVersion()"},
            .input_failure = u"",
            .error_failure = u"",
            .output_failure = AdapterOutput("GetLibraryVersion"),
            .room = 15,
        },
        {
            .function = "GetLibraryVersion",
            .signature = "SIGNATURE_VADPGetLibraryVersion",
            .before = {},
            .in = {},
            .script = "", // null
            .error_text = "unasked",
            .seen = {"GetLibraryVersion"},
            .frames = "",
            .out = "00",
            .logged = {"debug: Process_VADPGetLibraryVersion()"},
            .input_failure = u"",
            .error_failure = u"",
            .output_failure = AdapterOutput("GetLibraryVersion"),
            .room = 2,
        },
        {
            .function = "VADPVersion",
            .signature = "SIGNATURE_VADPVADPVersion",
            .before = {WithCredentials()},
            .in = {Str("vc")},
            .script = "log=hello level=7 text=5.0 u2",
            .error_text = "",
            .seen = std::vector<std::string>{"VADPVersion first=\"vc\" credentials=0x501"} + ErrorTaken("null"),
            .frames = hello,
            .out = Str("5.0 u2") + "00",
            .logged = {},
            .input_failure = AdapterInput("ReadBackupFile"),
            .error_failure = AdapterError("Version"),
            .output_failure = AdapterOutput("GetLibraryVersion"),
            .room = 10,
        },
        {
            .function = "VADPVersion",
            .signature = "SIGNATURE_VADPVADPVersion",
            .before = {},
            .in = {Str("")},
            .script = "error=0x99", // null
            .error_text = "boom",
            .seen = std::vector<std::string>{"VADPVersion first=\"\" credentials=null"} + ErrorTaken("0x99"),
            .frames = "",
            .out = "00" + Str("boom"),
            .logged = {},
            .input_failure = AdapterInput("ReadBackupFile"),
            .error_failure = AdapterError("Version"),
            .output_failure = AdapterOutput("GetLibraryVersion"),
            .room = 8,
        },
        {
            .function = "CreateCredentials",
            .signature = "SIGNATURE_VADPCreateCredentials",
            .before = {},
            .in = {Str("host"), Str("secret")},
            .script = "result=1 credentials=0x501 log=hello level=7",
            .error_text = "",
            .seen = {"CreateCredentials first=\"host\" second=\"secret\" credentials=null"},
            .frames = hello,
            .out = "00",
            .logged = {"debug: Process_VADPCreateCredentials()"},
            .input_failure = AdapterInput("CreateCredentials"),
            .error_failure = u"",
            .output_failure = AdapterOutput("CreateCredentials"),
            .room = 2,
        },
        {
            .function = "CreateCredentials",
            .signature = "SIGNATURE_VADPCreateCredentials",
            .before = {WithCredentials()},
            .in = {Str("host"), Str("wrong")},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"CreateCredentials first=\"host\" second=\"wrong\" credentials=0x501"} +
                    ErrorTaken("0x99"),
            .frames = "",
            .out = Str("boom"),
            .logged = {"debug: Process_VADPCreateCredentials()"},
            .input_failure = AdapterInput("CreateCredentials"),
            .error_failure = AdapterError("CreateCredentials"),
            .output_failure = AdapterOutput("CreateCredentials"),
            .room = 6,
        },
        {
            .function = "FreeCredentials",
            .signature = "SIGNATURE_VADPFreeCredentials",
            .before = {WithCredentials()},
            .in = {},
            .script = "log=late level=1",
            .error_text = "unasked",
            .seen = {"FreeCredentials credentials=0x501"},
            .frames = "",
            .out = "",
            .logged = {"debug: Process_VADPFreeCredentials()"},
            .input_failure = u"",
            .error_failure = u"",
            .output_failure = u"",
        },
        {
            .function = "FreeCredentials",
            .signature = "SIGNATURE_VADPFreeCredentials",
            .before = {},
            .in = {},
            .script = "",
            .error_text = "unasked",
            .seen = {"FreeCredentials credentials=null"},
            .frames = "",
            .out = "",
            .logged = {"debug: Process_VADPFreeCredentials()"},
            .input_failure = u"",
            .error_failure = u"",
            .output_failure = u"",
        },
        // The three rows distinguish each flag from the others.
        {
            .function = "CreateBackupOptions",
            .signature = "SIGNATURE_VADPCreateBackupOptions",
            .before = {WithOptions("0x701")},
            .in = {"0001", "0000", "0100", "0000", "8000", Str("a=1")},
            .script = "result=1 options=0x702 log=hello level=7",
            .error_text = "",
            .seen = {"CreateBackupOptions first=1 second=0 third=1 fourth=0 fifth=1 sixth=\"a=1\" options=null"},
            .frames = hello,
            .out = "00000001 00",
            .logged = {"debug: Process_VADPCreateBackupOptions()"},
            .input_failure = AdapterInput("CreateBackupOptions"),
            .error_failure = u"",
            .output_failure = AdapterOutput("CreateBackupOptions"),
            .room = 6,
        },
        {
            .function = "CreateBackupOptions",
            .signature = "SIGNATURE_VADPCreateBackupOptions",
            .before = {},
            .in = {"0000", "FFFF", "0002", "0000", "0000", Str("")},
            .script = "result=1 options=0x701",
            .error_text = "",
            .seen = {"CreateBackupOptions first=0 second=1 third=1 fourth=0 fifth=0 sixth=\"\" options=null"},
            .frames = "",
            .out = "00000000 00",
            .logged = {"debug: Process_VADPCreateBackupOptions()"},
            .input_failure = AdapterInput("CreateBackupOptions"),
            .error_failure = u"",
            .output_failure = AdapterOutput("CreateBackupOptions"),
            .room = 6,
        },
        {
            .function = "CreateBackupOptions",
            .signature = "SIGNATURE_VADPCreateBackupOptions",
            .before = {},
            .in = {"0000", "0000", "0000", "0100", "0001", Str("x")},
            .script = "result=0 options=0x701 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"CreateBackupOptions first=0 second=0 third=0 fourth=1 fifth=1 "
                                             "sixth=\"x\" options=null"} +
                    ErrorTaken("0x99"),
            .frames = "",
            .out = "FFFFFFFF" + Str("boom"),
            .logged = {"debug: Process_VADPCreateBackupOptions()"},
            .input_failure = AdapterInput("CreateBackupOptions"),
            .error_failure = AdapterError("CreateBackupOptions"),
            .output_failure = AdapterOutput("CreateBackupOptions"),
            .room = 10,
        },
        {
            .function = "FreeBackupOptions",
            .signature = "SIGNATURE_VADPFreeBackupOptions",
            .before = {WithOptions("0x701"), WithOptions("0x702"), WithOptions("0x703")},
            .in = {"00000001"},
            .script = "log=late level=1",
            .error_text = "unasked",
            .seen = {"FreeBackupOptions options=0x702"},
            .frames = "",
            .out = "",
            .logged = {"debug: Process_VADPFreeBackupOptions()"},
            .input_failure = AdapterInput("FreeBackupOptions"),
            .error_failure = u"",
            .output_failure = u"",
        },
        {
            .function = "FreeBackupOptions",
            .signature = "SIGNATURE_VADPFreeBackupOptions",
            .before = {WithOptions("0x701")},
            .in = {"00000001"},
            .script = "",
            .error_text = "unasked",
            .seen = {"FreeBackupOptions options=null"},
            .frames = "",
            .out = "",
            .logged = {"debug: Process_VADPFreeBackupOptions()"},
            .input_failure = AdapterInput("FreeBackupOptions"),
            .error_failure = u"",
            .output_failure = u"",
        },
        {
            .function = "OpenListing",
            .signature = "SIGNATURE_VADPOpenListing",
            .before = {WithCredentials(), WithCache(), WithListing("0x301")},
            .in = {Str("vc/dc"), "80000002"},
            .script = "result=1 listing=0x302 log=hello level=7",
            .error_text = "",
            .seen = {"OpenListing path=\"vc/dc\" credentials=0x501 cache=0x601 listing=null listing_opts=2147483650"},
            .frames = hello,
            .out = "00000001 00",
            .logged = {"debug: Process_VADPOpenListing()"},
            .input_failure = AdapterInput("OpenListing"),
            .error_failure = u"",
            .output_failure = AdapterOutput("OpenListing"),
            .room = 6,
        },
        {
            .function = "OpenListing",
            .signature = "SIGNATURE_VADPOpenListing",
            .before = {},
            .in = {Str(""), "00000000"},
            .script = "result=0 listing=0x301 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"OpenListing path=\"\" credentials=null cache=null listing=null "
                                             "listing_opts=0"} +
                    ErrorTaken("0x99"),
            .frames = "",
            .out = "FFFFFFFF" + Str("boom"),
            .logged = {"debug: Process_VADPOpenListing()"},
            .input_failure = AdapterInput("OpenListing"),
            .error_failure = AdapterError("OpenListing"),
            .output_failure = AdapterOutput("OpenListing"),
            .room = 10,
        },
        {
            .function = "NextItem",
            .signature = "SIGNATURE_VADPNextItem",
            .before = {WithListing("0x301"), WithListing("0x302")},
            .in = {"00000001"},
            .script = "result=1 name=vm\\xE9 number=0x80000001 value=0xFEDCBA9876543210 extra=0x82345678 log=hello "
                      "level=7",
            .error_text = "",
            .seen = {"NextItem listing=0x302 name=\"\" number=0 value=0 extra=0"},
            .frames = hello,
            .out = "766DE900 80000001 FEDCBA9876543210 82345678 00",
            .logged = {"debug: Process_VADPNextItem()"},
            .input_failure = AdapterInput("NextItem"),
            .error_failure = u"",
            .output_failure = AdapterOutput("NextItem"),
            .room = 23,
        },
        // A failure sends what the adapter set, and what it didn't set as it was.
        {
            .function = "NextItem",
            .signature = "SIGNATURE_VADPNextItem",
            .before = {WithListing("0x301")},
            .in = {"00000001"},
            .script = "result=0 name=x number=7 value=8 extra=9 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"NextItem listing=null name=\"\" number=0 value=0 extra=0"} +
                    ErrorTaken("0x99"),
            .frames = "",
            .out = "7800 00000007 0000000000000008 00000009" + Str("boom"),
            .logged = {"debug: Process_VADPNextItem()"},
            .input_failure = AdapterInput("NextItem"),
            .error_failure = AdapterError("NextItem"),
            .output_failure = AdapterOutput("NextItem"),
            .room = 25,
        },
        {
            .function = "NextItem",
            .signature = "SIGNATURE_VADPNextItem",
            .before = {},
            .in = {"FFFFFFFF"},
            .script = "result=0",
            .error_text = "end",
            .seen = std::vector<std::string>{"NextItem listing=null name=\"\" number=0 value=0 extra=0"} +
                    ErrorTaken("null"),
            .frames = "",
            .out = "00 00000000 0000000000000000 00000000" + Str("end"),
            .logged = {"debug: Process_VADPNextItem()"},
            .input_failure = AdapterInput("NextItem"),
            .error_failure = AdapterError("NextItem"),
            .output_failure = AdapterOutput("NextItem"),
            .room = 23,
        },
        {
            .function = "FreeListing",
            .signature = "SIGNATURE_VADPFreeListing",
            .before = {WithListing("0x301"), WithListing("0x302"), WithListing("0x303")},
            .in = {"00000001"},
            .script = "log=late level=1",
            .error_text = "unasked",
            .seen = {"FreeListing listing=0x302"},
            .frames = "",
            .out = "",
            .logged = {"debug: Process_VADPFreeListing()"},
            .input_failure = AdapterInput("FreeListing"),
            .error_failure = u"",
            .output_failure = u"",
        },
        {
            .function = "FreeListing",
            .signature = "SIGNATURE_VADPFreeListing",
            .before = {WithListing("0x301")},
            .in = {"FFFFFFFF"},
            .script = "",
            .error_text = "unasked",
            .seen = {"FreeListing listing=null"},
            .frames = "",
            .out = "",
            .logged = {"debug: Process_VADPFreeListing()"},
            .input_failure = AdapterInput("FreeListing"),
            .error_failure = u"",
            .output_failure = u"",
        },
        {
            .function = "ListDataStores",
            .signature = "SIGNATURE_VADPListDataStores",
            .before = {WithCredentials(), WithCache(), WithListing("0x301")},
            .in = {Str("vc"), Str("dc"), "0100"},
            .script = "result=1 listing=0x302 thread_log=hello level=200",
            .error_text = "",
            .seen = {"ListDataStores first=\"vc\" credentials=0x501 cache=0x601 listing=null second=\"dc\" flag=1"},
            .frames = "4D 00000010 000000C8 680065006C006C006F000000",
            .out = "00000001 00",
            .logged = {"debug: Process_VADPListDataStores()"},
            .input_failure = AdapterInput("ListDataStores"),
            .error_failure = u"",
            .output_failure = AdapterOutput("ListDataStores"),
            .room = 6,
        },
        {
            .function = "ListDataStores",
            .signature = "SIGNATURE_VADPListDataStores",
            .before = {},
            .in = {Str(""), Str("dc"), "0000"},
            .script = "result=0 listing=0x301 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"ListDataStores first=\"\" credentials=null cache=null listing=null "
                                             "second=\"dc\" flag=0"} +
                    ErrorTaken("0x99"),
            .frames = "",
            .out = "FFFFFFFF" + Str("boom"),
            .logged = {"debug: Process_VADPListDataStores()"},
            .input_failure = AdapterInput("ListDataStores"),
            .error_failure = AdapterError("ListDataStores"),
            .output_failure = AdapterOutput("ListDataStores"),
            .room = 10,
        },
        {
            .function = "ListResourcePools",
            .signature = "SIGNATURE_VADPListResourcePools",
            .before = {WithCredentials(), WithCache(), WithListing("0x301")},
            .in = {Str("vc/dc")},
            .script = "result=1 listing=0x302 log=hello level=7",
            .error_text = "",
            .seen = {"ListResourcePools path=\"vc/dc\" credentials=0x501 cache=0x601 listing=null"},
            .frames = hello,
            .out = "00000001 00",
            .logged = {"debug: Process_VADPListResourcePools()"},
            .input_failure = AdapterInput("ListResourcePools"),
            .error_failure = u"",
            .output_failure = AdapterOutput("ListResourcePools"),
            .room = 6,
        },
        {
            .function = "ListResourcePools",
            .signature = "SIGNATURE_VADPListResourcePools",
            .before = {},
            .in = {Str("")},
            .script = "result=0 listing=0x301 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"ListResourcePools path=\"\" credentials=null cache=null listing=null"} +
                    ErrorTaken("0x99"),
            .frames = "",
            .out = "FFFFFFFF" + Str("boom"),
            .logged = {"debug: Process_VADPListResourcePools()"},
            .input_failure = AdapterInput("ListResourcePools"),
            .error_failure = AdapterError("ListResourcePools"),
            .output_failure = AdapterOutput("ListResourcePools"),
            .room = 10,
        },
        {
            .function = "OpenConfigRead",
            .signature = "SIGNATURE_VADPOpenConfigRead",
            .before = {WithSession("0x801"), WithSession("0x802"), WithReader("0x901")},
            .in = {"00000001", Str("vm.cfg")},
            .script = "result=1 reader=0x902 log=hello level=7",
            .error_text = "",
            .seen = {"OpenConfigRead session=0x802 path=\"vm.cfg\" reader=null"},
            .frames = hello,
            .out = "00000001 00",
            .logged = {"debug: Process_VADPOpenConfigRead()"},
            .input_failure = AdapterInput("OpenConfigRead"),
            .error_failure = u"",
            .output_failure = AdapterOutput("OpenConfigRead"),
            .room = 6,
        },
        {
            .function = "OpenConfigRead",
            .signature = "SIGNATURE_VADPOpenConfigRead",
            .before = {WithSession("0x801")},
            .in = {"00000001", Str("")},
            .script = "result=0 reader=0x901 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"OpenConfigRead session=null path=\"\" reader=null"} + ErrorTaken("0x99"),
            .frames = "",
            .out = "FFFFFFFF" + Str("boom"),
            .logged = {"debug: Process_VADPOpenConfigRead()"},
            .input_failure = AdapterInput("OpenConfigRead"),
            .error_failure = AdapterError("OpenConfigRead"),
            .output_failure = AdapterOutput("OpenConfigRead"),
            .room = 10,
        },
        {
            .function = "ListConfigItems",
            .signature = "SIGNATURE_VADPListConfigItems",
            .before = {WithSession("0x801"), WithSession("0x802"), WithListing("0x301")},
            .in = {"00000001"},
            .script = "result=1 listing=0x302 log=hello level=7",
            .error_text = "",
            .seen = {"ListConfigItems session=0x802 listing=null"},
            .frames = hello,
            .out = "00000001 00",
            .logged = {"debug: Process_VADPListConfigItems()"},
            .input_failure = AdapterInput("ListConfigItems"),
            .error_failure = u"",
            .output_failure = AdapterOutput("OpenListing"),
            .room = 6,
        },
        // The readers are no sessions: this one misses.
        {
            .function = "ListConfigItems",
            .signature = "SIGNATURE_VADPListConfigItems",
            .before = {WithSession("0x801"), WithReader("0x901"), WithReader("0x902")},
            .in = {"00000001"},
            .script = "result=0 listing=0x301 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"ListConfigItems session=null listing=null"} + ErrorTaken("0x99"),
            .frames = "",
            .out = "FFFFFFFF" + Str("boom"),
            .logged = {"debug: Process_VADPListConfigItems()"},
            .input_failure = AdapterInput("ListConfigItems"),
            .error_failure = AdapterError("OpenListing"),
            .output_failure = AdapterOutput("OpenListing"),
            .room = 10,
        },
        {
            .function = "CreateListingCache",
            .signature = "SIGNATURE_VADPCreateListingCache",
            .before = {WithCredentials(), WithCache()},
            .in = {Str("vc")},
            .script = "result=1 flag=1 cache=0x602 log=hello level=7",
            .error_text = "",
            .seen = {"CreateListingCache path=\"vc\" credentials=0x501 flag=0 cache=0x601"},
            .frames = hello,
            .out = "0001 00",
            .logged = {"debug: Process_VADPCreateListingCache()"},
            .input_failure = AdapterInput("CreateListingCache"),
            .error_failure = u"",
            .output_failure = AdapterOutput("CreateListingCache"),
            .room = 4,
        },
        {
            .function = "CreateListingCache",
            .signature = "SIGNATURE_VADPCreateListingCache",
            .before = {},
            .in = {Str("")},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"CreateListingCache path=\"\" credentials=null flag=0 cache=null"} +
                    ErrorTaken("0x99"),
            .frames = "",
            .out = "0000" + Str("boom"),
            .logged = {"debug: Process_VADPCreateListingCache()"},
            .input_failure = AdapterInput("CreateListingCache"),
            .error_failure = AdapterError("CreateListingCache"),
            .output_failure = AdapterOutput("CreateListingCache"),
            .room = 8,
        },
        {
            .function = "FreeListingCache",
            .signature = "SIGNATURE_VADPFreeListingCache",
            .before = {WithCache()},
            .in = {},
            .script = "log=late level=1",
            .error_text = "unasked",
            .seen = {"FreeListingCache cache=0x601"},
            .frames = "",
            .out = "",
            .logged = {"debug: Process_VADPFreeListingCache()"},
            .input_failure = u"",
            .error_failure = u"",
            .output_failure = u"",
        },
        {
            .function = "FreeListingCache",
            .signature = "SIGNATURE_VADPFreeListingCache",
            .before = {},
            .in = {},
            .script = "",
            .error_text = "unasked",
            .seen = {"FreeListingCache cache=null"},
            .frames = "",
            .out = "",
            .logged = {"debug: Process_VADPFreeListingCache()"},
            .input_failure = u"",
            .error_failure = u"",
            .output_failure = u"",
        },
    };
    for (const char *const name :
         {"ListFolders", "ListHosts", "ListMachineProperties", "ListDatacenters", "ListMachines"})
        for (const AdapterRow &row : ListByPath(name))
            rows.push_back(row);
    return rows;
}

} // namespace

const std::vector<AdapterRow> &InventoryRows()
{
    static const std::vector<AdapterRow> rows = MakeInventoryRows();
    return rows;
}

namespace {

std::vector<CommandRow> MakeInventoryCommands()
{
    using namespace inventory;
    std::vector<CommandRow> rows = {
        {
            .function = "GetLibraryVersion",
            .command = 127,
            .signature = "SIGNATURE_VADPGetLibraryVersion",
            .before = {},
            .in = {},
            .script = "log=late level=1 text=6.5",
            .error_text = "unasked",
            .seen = {"GetLibraryVersion"},
            .reply = "00000003 362E35",
            .logged = {"debug: ProcessAlt_VADPGetLibraryVersion()"},
            .cuts = {},
        },
        {
            .function = "CreateCredentials",
            .command = 3,
            .signature = "SIGNATURE_VADPCreateCredentials",
            .before = {},
            .in = {Text("host"), Text("secret")},
            .script = "result=1 credentials=0x502 log=hello level=7",
            .error_text = "none",
            .seen = {"CreateCredentials first=\"host\" second=\"secret\" credentials=null"},
            .reply = hello_alt + status_okay,
            .logged = {"debug: ProcessAlt_VADPCreateCredentials()",
                       "debug: back from real_f with rez==1, g_pCredentials==0x502"},
            .cuts = EachCut(2, {ErrorTaken("null"), StatusFailed("none")}),
        },
        // The failure is the log's alone; and older credentials go first, read or not.
        {
            .function = "CreateCredentials",
            .command = 3,
            .signature = "SIGNATURE_VADPCreateCredentials",
            .before = {WithCredentials()},
            .in = {Text("host"), Text("wrong")},
            .script = "result=0 error=0x99",
            .error_text = "boom",
            .seen = {"FreeCredentials credentials=0x501",
                     "CreateCredentials first=\"host\" second=\"wrong\" credentials=null"},
            .reply = status_okay,
            .logged = {"debug: ProcessAlt_VADPCreateCredentials()",
                       "debug: back from real_f with rez==0, g_pCredentials==0"},
            .cuts = EachCut(2, {std::vector<std::string>{"FreeCredentials credentials=0x501"} + ErrorTaken("null"),
                                StatusFailed("boom")}),
        },
        // The three rows distinguish each flag from the others.
        {
            .function = "CreateBackupOptions",
            .command = 4,
            .signature = "SIGNATURE_VADPCreateBackupOptions",
            .before = {WithOptions("0x701"), WithOptions("0x702")},
            .in = {Flag(true), Flag(false), Number("00000100"), Flag(false), Number("80000000"), Text("a=1")},
            .script = "result=1 options=0x703 log=hello level=7",
            .error_text = "none",
            .seen = {"CreateBackupOptions first=1 second=0 third=1 fourth=0 fifth=1 sixth=\"a=1\" options=null"},
            .reply = hello_alt + no_log + "00000002",
            .logged = {"debug: ProcessAlt_VADPCreateBackupOptions()"},
            .cuts = EachCut(6, {ErrorTaken("null"), no_log + Text("none").bytes}),
        },
        {
            .function = "CreateBackupOptions",
            .command = 4,
            .signature = "SIGNATURE_VADPCreateBackupOptions",
            .before = {},
            .in = {Flag(false), Number("00010000"), Flag(true), Flag(false), Flag(false), Text("")},
            .script = "result=1 options=0x701",
            .error_text = "none",
            .seen = {"CreateBackupOptions first=0 second=1 third=1 fourth=0 fifth=0 sixth=\"\" options=null"},
            .reply = no_log + "00000000",
            .logged = {"debug: ProcessAlt_VADPCreateBackupOptions()"},
            .cuts = EachCut(6, {ErrorTaken("null"), no_log + Text("none").bytes}),
        },
        {
            .function = "CreateBackupOptions",
            .command = 4,
            .signature = "SIGNATURE_VADPCreateBackupOptions",
            .before = {},
            .in = {Flag(false), Flag(false), Flag(false), Number("01000000"), Flag(true), Text("x")},
            .script = "result=0 options=0x701 error=0x99",
            .error_text = "boom",
            .seen = std::vector<std::string>{"CreateBackupOptions first=0 second=0 third=0 fourth=1 fifth=1 "
                                             "sixth=\"x\" options=null"} +
                    ErrorTaken("0x99"),
            .reply = no_log + Text("boom").bytes,
            .logged = {"debug: ProcessAlt_VADPCreateBackupOptions()"},
            .cuts = EachCut(6, {ErrorTaken("null"), no_log + Text("boom").bytes}),
        },
        {
            .function = "OpenListing",
            .command = 5,
            .signature = "SIGNATURE_VADPOpenListing",
            .before = {WithCredentials(), WithCache()},
            .in = {Text("vc/dc"), Number("80000002")},
            .script = "result=1 log=hello level=7 " + items,
            .error_text = "none",
            .seen = {"OpenListing path=\"vc/dc\" credentials=0x501 cache=0x601 listing=null listing_opts=2147483650"},
            .reply = hello_alt + no_log + long_items,
            .logged = {"debug: ProcessAlt_VADPOpenListing()", "debug: path==vc/dc, listing_opts==2147483650",
                       "debug: Writing n_items==2"},
            .cuts = {{{"OpenListing path=\"\" credentials=0x501 cache=0x601 listing=null listing_opts=0"},
                      hello_alt + no_log + long_items},
                     {{"OpenListing path=\"vc/dc\" credentials=0x501 cache=0x601 listing=null listing_opts=0"},
                      hello_alt + no_log + long_items}},
        },
        {
            .function = "OpenListing",
            .command = 5,
            .signature = "SIGNATURE_VADPOpenListing",
            .before = {},
            .in = {Text("vc"), Number("00000001")},
            .script = "result=0 error=0x99 " + items,
            .error_text = "boom",
            .seen = std::vector<std::string>{"OpenListing path=\"vc\" credentials=null cache=null listing=null "
                                             "listing_opts=1"} +
                    ErrorTaken("0x99"),
            .reply = StatusFailed("boom"),
            .logged = {"debug: ProcessAlt_VADPOpenListing()", "debug: path==vc, listing_opts==1"},
            .cuts = {{std::vector<std::string>{"OpenListing path=\"\" credentials=null cache=null listing=null "
                                               "listing_opts=0"} +
                          ErrorTaken("0x99"),
                      StatusFailed("boom")},
                     {std::vector<std::string>{"OpenListing path=\"vc\" credentials=null cache=null listing=null "
                                               "listing_opts=0"} +
                          ErrorTaken("0x99"),
                      StatusFailed("boom")}},
        },
        // The flag is not the parent's here.
        {
            .function = "ListDataStores",
            .command = 13,
            .signature = "SIGNATURE_VADPListDataStores",
            .before = {WithCredentials(), WithCache()},
            .in = {Text("vc"), Text("dc")},
            .script = "result=1 thread_log=\\xFF level=200 " + items,
            .error_text = "none",
            .seen = {"ListDataStores first=\"vc\" credentials=0x501 cache=0x601 listing=null second=\"dc\" flag=0"},
            .reply = "FFFFFF9D 00000001 FF 000000C8" + no_log + short_items,
            .logged = {"debug: ProcessAlt_VADPListDataStores()", "debug: Writing n_items==2"},
            .cuts = EachCut(2, {ErrorTaken("null"), StatusFailed("none")}),
        },
        {
            .function = "ListDataStores",
            .command = 13,
            .signature = "SIGNATURE_VADPListDataStores",
            .before = {},
            .in = {Text(""), Text("dc")},
            .script = "result=0 error=0x99 " + items,
            .error_text = "boom",
            .seen = std::vector<std::string>{"ListDataStores first=\"\" credentials=null cache=null listing=null "
                                             "second=\"dc\" flag=0"} +
                    ErrorTaken("0x99"),
            .reply = StatusFailed("boom"),
            .logged = {"debug: ProcessAlt_VADPListDataStores()"},
            .cuts = EachCut(2, {ErrorTaken("null"), StatusFailed("boom")}),
        },
    };
    const PathCommand commands[] = {
        {"ListFolders", 38, true, long_items, {}, {}, {}, {}},
        {"ListHosts",
         37,
         true,
         short_items,
         {"debug: okay==1, srv==@"},
         {},
         {},
         {"error: ListHosts operation failed."}},
        {"ListMachines", 39, true, short_items, {}, {}, {}, {}},
        {"ListDatacenters",
         36,
         false,
         short_items,
         {"debug: path==@"},
         {"debug: Writing item list"},
         {"debug: Done writing item list"},
         {}},
    };
    for (const PathCommand &command : commands)
        for (const CommandRow &row : ListByPath(command))
            rows.push_back(row);
    return rows;
}

} // namespace

const std::vector<CommandRow> &InventoryCommands()
{
    static const std::vector<CommandRow> rows = MakeInventoryCommands();
    return rows;
}

} // namespace kessil::test
