#include "callers/library_caller_alt.h"

#include "callers/library_caller.h"
#include "marshal/replies.h"
#include "unit/channel_fixture.h"

#include <array>
#include <optional>
#include <stdexcept>

namespace kessil::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const Bytes loaded = Hex("00 00 00 01");
const Bytes refused = Hex("FF FF FF FF");

// What the handlers were called with.
std::vector<std::string> seen;

std::string Number(const void *address)
{
    return std::to_string(reinterpret_cast<std::uintptr_t>(address));
}

void FirstHandler(CIPCCommunication & /*channel*/, void *function)
{
    seen.push_back("first " + Number(function));
}

void SecondHandler(CIPCCommunication & /*channel*/, void *function)
{
    seen.push_back("second " + Number(function));
}

void FramedHandler(CIPCCommunication &channel, void *function)
{
    seen.push_back("framed " + Number(function));
    SendSuccessReply(channel);
}

void ThrowingHandler(CIPCCommunication & /*channel*/, void * /*function*/)
{
    throw std::runtime_error("the library's own");
}

CLibraryCallerAlt *caller_in_use = nullptr;

IPCStruct_FunctionCallAlt Request(const std::string &function, const std::string &signature)
{
    IPCStruct_FunctionCallAlt request;
    request.function = function;
    request.signature = signature;
    return request;
}

void Hook(CIPCCommunication &channel, const WideString &name, platform::ModuleHandle module)
{
    call_log.Add("hook " + platform::ToUtf8(name) + " " + (module == FakeModuleHandle(0) ? "0" : "other"));
    // The library is in the table: a call of it works from here.
    if (caller_in_use != nullptr)
        caller_in_use->CallFunction(Request("one", "SIG_ONE"), channel);
}

void NoHook(CIPCCommunication & /*channel*/, const WideString & /*name*/, platform::ModuleHandle /*module*/) {}

constexpr std::array rows = {
    SignatureRow{"SIG_ONE", FirstHandler, SecondHandler}, SignatureRow{"SIG_FRAMED", FramedHandler, FramedHandler},
    SignatureRow{"SIG_FIRST", FirstHandler, nullptr}, SignatureRow{"SIG_ALT", nullptr, SecondHandler},
    SignatureRow{"SIG_THROWS", nullptr, ThrowingHandler}};

void *Export(std::uintptr_t number)
{
    return reinterpret_cast<void *>(number);
}

class CallerAltTest : public ChannelTest
{
protected:
    CallerAltTest()
    {
        seen.clear();
        caller_in_use = nullptr;
        caller.emplace(rows, NoHook);
    }

    void Load(const WideString &name)
    {
        Forget();
        caller->LoadLibraryW(name, channel);
        ASSERT_EQ(fake_pipe.written, loaded);
        Forget();
    }

    void Call(const std::string &function, const std::string &signature)
    {
        caller->CallFunction(Request(function, signature), channel);
    }

    std::optional<CLibraryCallerAlt> caller;
};

TEST_F(CallerAltTest, LoadAnswersWithABareOne)
{
    fake_module.Add(u"dir/a.dll", {});
    caller->LoadLibraryW(u"dir/a.dll", channel);
    EXPECT_EQ(fake_pipe.written, loaded);
    EXPECT_THAT(call_log.calls, ElementsAre("LoadModule dir/a.dll", "WritePipe 4"));
    EXPECT_THAT(Logged(), IsEmpty());
}

TEST_F(CallerAltTest, LoadThatFailsAnswersWithABareMinusOneAndLogsWhy)
{
    fake_module.load_code = 193;
    fake_module.load_text = u"not a valid library\r\n";
    caller->LoadLibraryW(u"a", channel);
    EXPECT_EQ(fake_pipe.written, refused);
    EXPECT_THAT(call_log.calls, ElementsAre("LoadModule a", "WritePipe 4"));
    EXPECT_THAT(Logged(), ElementsAre("error LibraryCaller: Load library failure:  not a valid library\r\n"));
    Forget();
    Call("one", "SIG_ONE");
    EXPECT_EQ(fake_pipe.written, refused);
    EXPECT_THAT(seen, IsEmpty());
}

// Each unit gives its low byte, whatever it stands for.
TEST_F(CallerAltTest, ReasonInTheLogHasTheLowByteOfEachUnit)
{
    fake_module.load_text = u"\u00FC\u20AC\U0001F600";
    caller->LoadLibraryW(u"a", channel);
    EXPECT_THAT(Logged(), ElementsAre(std::string("error LibraryCaller: Load library failure:  \xFC\xAC\x3D\x00", 48)));
}

TEST_F(CallerAltTest, RefusalThatCantBeWrittenIsLogged)
{
    fake_pipe.FailWrite(232);
    caller->LoadLibraryW(u"a", channel);
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_THAT(Logged(), ElementsAre("error LibraryCaller: Load library failure:  no such library\r\n",
                                      "error commfunc: Failed on write",
                                      "error LibraryCaller: Failed to write failure result after loading library alt"));
}

TEST_F(CallerAltTest, LoadWhoseAnswerCantBeWrittenIsLoggedAndStillCounts)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    caller.emplace(rows, Hook);
    fake_pipe.FailWrite(232);
    caller->LoadLibraryW(u"a", channel);
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_THAT(Logged(), ElementsAre("error commfunc: Failed on write",
                                      "error LibraryCaller: Failed to write success result after loading library alt"));
    EXPECT_THAT(call_log.calls, ElementsAre("LoadModule a", "WritePipe 4", "hook a 0"));
    Call("one", "SIG_ONE");
    EXPECT_THAT(seen, ElementsAre("second 11"));
}

TEST_F(CallerAltTest, AnswerOfWhichOnlyAPartIsWrittenIsNoneEither)
{
    fake_module.Add(u"a", {});
    fake_pipe.ShortenWrite(3);
    caller->LoadLibraryW(u"a", channel);
    EXPECT_THAT(Logged(), ElementsAre("error commfunc: Only wrote 3 out of 4",
                                      "error LibraryCaller: Failed to write success result after loading library alt"));
    EXPECT_EQ(fake_module.loaded, 1u);
}

TEST_F(CallerAltTest, AfterTheAnswerTheLibraryIsInTheTableAndThenTheHookRuns)
{
    caller.emplace(rows, Hook);
    caller_in_use = &*caller;
    fake_module.Add(u"a", {{"one", Export(11)}});
    caller->LoadLibraryW(u"a", channel);
    EXPECT_THAT(call_log.calls, ElementsAre("LoadModule a", "WritePipe 4", "hook a 0", "FindExport one"));
    EXPECT_THAT(seen, ElementsAre("second 11"));
}

TEST_F(CallerAltTest, LibraryIsNotInTheTableBeforeItsAnswerIsOut)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    fake_pipe.before_write = [this] { Call("one", "SIG_ONE"); };
    caller->LoadLibraryW(u"a", channel);
    EXPECT_EQ(fake_pipe.written, refused + loaded);
    EXPECT_THAT(seen, IsEmpty());
}

TEST_F(CallerAltTest, HookDoesNotRunForALoadThatFailed)
{
    caller.emplace(rows, Hook);
    caller->LoadLibraryW(u"a", channel);
    EXPECT_THAT(call_log.calls, ElementsAre("LoadModule a", "WritePipe 4"));
}

TEST_F(CallerAltTest, LoadingANameAgainReleasesTheOldModuleFirst)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    Load(u"a");
    fake_module.Add(u"a", {{"one", Export(22)}});
    caller->LoadLibraryW(u"a", channel);
    EXPECT_THAT(call_log.calls, ElementsAre("FreeModule a", "LoadModule a", "WritePipe 4"));
    EXPECT_EQ(fake_module.loaded, 1u);
    Call("one", "SIG_ONE");
    EXPECT_THAT(seen, ElementsAre("second 22"));
}

TEST_F(CallerAltTest, ReloadThatFailsLeavesNoEntry)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    Load(u"a");
    fake_module.Remove(u"a");
    caller->LoadLibraryW(u"a", channel);
    EXPECT_EQ(fake_pipe.written, refused);
    EXPECT_EQ(fake_module.loaded, 0u);
    Forget();
    Call("one", "SIG_ONE");
    EXPECT_EQ(fake_pipe.written, refused);
    EXPECT_THAT(Logged(), ElementsAre("error LibraryCaller: Failed to find library..."));
}

TEST_F(CallerAltTest, CallBeforeAnyLoad)
{
    Call("one", "SIG_ONE");
    EXPECT_EQ(fake_pipe.written, refused);
    EXPECT_THAT(call_log.calls, ElementsAre("WritePipe 4"));
    EXPECT_THAT(Logged(), ElementsAre("error LibraryCaller: Failed to find library..."));
}

TEST_F(CallerAltTest, CallBeforeAnyLoadWhoseAnswerCantBeWritten)
{
    fake_pipe.FailWrite(232);
    Call("one", "SIG_ONE");
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_THAT(Logged(),
                ElementsAre("error LibraryCaller: Failed to find library...", "error commfunc: Failed on write",
                            "error LibraryCaller: Failed to write error code."));
}

TEST_F(CallerAltTest, CallOfAMissingExport)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    Load(u"a");
    Call("none", "SIG_ONE");
    EXPECT_EQ(fake_pipe.written, refused);
    EXPECT_THAT(call_log.calls, ElementsAre("FindExport none", "WritePipe 4"));
    EXPECT_THAT(Logged(), ElementsAre("error LibraryCaller: func_ptr==NULL"));
    EXPECT_THAT(seen, IsEmpty());
}

TEST_F(CallerAltTest, CallOfAMissingExportWhoseAnswerCantBeWritten)
{
    fake_module.Add(u"a", {});
    Load(u"a");
    fake_pipe.FailWrite(232);
    Call("none", "SIG_ONE");
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_THAT(Logged(), ElementsAre("error LibraryCaller: func_ptr==NULL", "error commfunc: Failed on write",
                                      "error LibraryCaller: write failed"));
}

TEST_F(CallerAltTest, CallWithAnUnknownSignature)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    Load(u"a");
    Call("one", "SIG_NONE");
    EXPECT_EQ(fake_pipe.written, refused);
    EXPECT_THAT(call_log.calls, ElementsAre("FindExport one", "WritePipe 4"));
    EXPECT_THAT(Logged(), ElementsAre("error LibraryCaller: Invalid signature"));
    EXPECT_THAT(seen, IsEmpty());
}

TEST_F(CallerAltTest, CallWithAnUnknownSignatureWhoseAnswerCantBeWritten)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    Load(u"a");
    fake_pipe.FailWrite(232);
    Call("one", "SIG_NONE");
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_THAT(Logged(), ElementsAre("error LibraryCaller: Invalid signature", "error commfunc: Failed on write",
                                      "error LibraryCaller: Failed to write error code."));
}

TEST_F(CallerAltTest, LibraryIsLookedUpBeforeTheFunctionAndThatBeforeTheSignature)
{
    Call("none", "SIG_NONE");
    EXPECT_THAT(Logged(), ElementsAre("error LibraryCaller: Failed to find library..."));
    fake_module.Add(u"a", {{"one", Export(11)}});
    Load(u"a");
    Call("none", "SIG_NONE");
    EXPECT_THAT(Logged(), ElementsAre("error LibraryCaller: func_ptr==NULL"));
}

TEST_F(CallerAltTest, SignatureSelectsTheHandlerOfTheSecondGeneration)
{
    fake_module.Add(u"a", {{"one", Export(11)}, {"two", Export(22)}});
    Load(u"a");
    Call("one", "SIG_ONE");
    Call("two", "SIG_ALT");
    EXPECT_THAT(seen, ElementsAre("second 11", "second 22"));
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_THAT(Logged(), IsEmpty());
}

// A handler of the first generation keeps its own conduct.
TEST_F(CallerAltTest, HandlerOfBothGenerationsAnswersWithAFrame)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    Load(u"a");
    Call("one", "SIG_FRAMED");
    EXPECT_THAT(seen, ElementsAre("framed 11"));
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
}

TEST_F(CallerAltTest, RowOfTheFirstGenerationAloneIsInvalid)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    Load(u"a");
    Call("one", "SIG_FIRST");
    EXPECT_EQ(fake_pipe.written, refused);
    EXPECT_THAT(seen, IsEmpty());
}

TEST_F(CallerAltTest, ExceptionOfAHandlerPassesThrough)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    Load(u"a");
    EXPECT_THROW(Call("one", "SIG_THROWS"), std::runtime_error);
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_EQ(fake_module.loaded, 1u);
}

TEST_F(CallerAltTest, CallsGoToTheLowestNameWhicheverWasLoadedLast)
{
    fake_module.Add(u"b", {{"one", Export(2)}});
    fake_module.Add(u"ab", {{"one", Export(1)}});
    fake_module.Add(u"c", {{"one", Export(3)}});
    Load(u"b");
    Call("one", "SIG_ONE");
    Load(u"ab");
    Call("one", "SIG_ONE");
    Load(u"c");
    Call("one", "SIG_ONE");
    EXPECT_THAT(seen, ElementsAre("second 2", "second 1", "second 1"));
}

// Unit by unit and unsigned: U+FF41 lies above the surrogates that stand for U+1D41A.
TEST_F(CallerAltTest, NamesAreOrderedByTheirUnits)
{
    fake_module.Add(u"\uFF41", {{"one", Export(2)}});
    fake_module.Add(u"\U0001D41A", {{"one", Export(1)}});
    Load(u"\U0001D41A");
    Load(u"\uFF41");
    Call("one", "SIG_ONE");
    EXPECT_THAT(seen, ElementsAre("second 1"));
}

TEST_F(CallerAltTest, LibraryCanBeAskedForByItsName)
{
    fake_module.Add(u"a", {{"one", Export(1)}});
    fake_module.Add(u"b", {{"one", Export(2)}});
    Load(u"a");
    Load(u"b");
    IPCStruct_FunctionCallAlt request = Request("one", "SIG_ONE");
    request.library = u"b";
    caller->CallFunction(request, channel);
    EXPECT_THAT(seen, ElementsAre("second 2"));
    request.library = u"B";
    caller->CallFunction(request, channel);
    EXPECT_THAT(Logged(), ElementsAre("error LibraryCaller: Failed to find library..."));
}

TEST_F(CallerAltTest, SharesNothingWithTheCallerOfTheFirstGeneration)
{
    fake_module.Add(u"a", {{"one", Export(1)}});
    fake_module.Add(u"b", {{"one", Export(2)}});
    CLibraryCaller first(rows, NoHook);
    first.LoadLibraryW(u"a", channel);
    Forget();
    Call("one", "SIG_ONE");
    EXPECT_EQ(fake_pipe.written, refused);
    Load(u"b");
    Call("one", "SIG_ONE");
    first.CallFunction({u"", "one", "SIG_ONE"}, channel);
    EXPECT_THAT(seen, ElementsAre("second 2", "first 1"));
    first.CallFunction({u"b", "one", "SIG_ONE"}, channel);
    EXPECT_EQ(fake_pipe.written, ErrorFrame(0, 0, u"Failed to find library..."));
    // The same name in both is loaded twice, and each releases its own.
    Load(u"a");
    EXPECT_EQ(fake_module.loaded, 3u);
    caller.reset();
    EXPECT_EQ(fake_module.loaded, 1u);
    first.CallFunction({u"a", "one", "SIG_ONE"}, channel);
    EXPECT_EQ(seen.back(), "first 1");
}

TEST_F(CallerAltTest, ReleaseGoesInTheOrderOfTheNames)
{
    for (const char16_t *name : {u"c", u"a", u"b"}) {
        fake_module.Add(name, {});
        Load(name);
    }
    caller->ReleaseLibraries();
    EXPECT_THAT(call_log.calls, ElementsAre("FreeModule a", "FreeModule b", "FreeModule c"));
    Call("one", "SIG_ONE");
    EXPECT_EQ(fake_pipe.written, refused);
}

TEST_F(CallerAltTest, DestructionReleases)
{
    fake_module.Add(u"a", {});
    Load(u"a");
    caller.reset();
    EXPECT_THAT(call_log.calls, ElementsAre("FreeModule a"));
}

// A fault in a library's destructor: the rest is left to a further call, which finds that library gone.
TEST_F(CallerAltTest, ReleaseThatIsAbandonedGoesOnBehindTheLibraryThatFaulted)
{
    for (const char16_t *name : {u"a", u"b", u"c"}) {
        fake_module.Add(name, {});
        Load(name);
    }
    fake_module.on_free = [](const WideString &name) {
        if (name == u"b")
            throw std::runtime_error("a fault");
    };
    EXPECT_THROW(caller->ReleaseLibraries(), std::runtime_error);
    caller->ReleaseLibraries();
    EXPECT_THAT(call_log.calls, ElementsAre("FreeModule a", "FreeModule b", "FreeModule c"));
    EXPECT_EQ(fake_module.loaded, 0u);
}

} // namespace
} // namespace kessil::test
