#include "callers/library_caller.h"

#include "marshal/replies.h"
#include "platform/last_error.h"
#include "unit/channel_fixture.h"

#include <array>
#include <optional>
#include <stdexcept>

namespace kessil::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// What the two handlers of the table and the hook were called with.
std::vector<std::string> seen;

std::string Number(const void *address)
{
    return std::to_string(reinterpret_cast<std::uintptr_t>(address));
}

void FirstHandler(CIPCCommunication &channel, void *function)
{
    seen.push_back("first " + Number(function));
    SendSuccessReply(channel);
}

void SecondHandler(CIPCCommunication &channel, void *function)
{
    seen.push_back("second " + Number(function));
    SendSuccessReply(channel);
}

void ThrowingHandler(CIPCCommunication & /*channel*/, void * /*function*/)
{
    throw std::runtime_error("the library's own");
}

CLibraryCaller *caller_in_use = nullptr;

void Hook(CIPCCommunication &channel, const WideString &name, platform::ModuleHandle module)
{
    call_log.Add("hook " + platform::ToUtf8(name) + " " + (module == FakeModuleHandle(0) ? "0" : "other"));
    // The reply is out and the library in the table: a call of it works from here.
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    if (caller_in_use != nullptr)
        caller_in_use->CallFunction({name, "one", "SIG_ONE"}, channel);
}

void NoHook(CIPCCommunication & /*channel*/, const WideString & /*name*/, platform::ModuleHandle /*module*/) {}

constexpr std::array rows = {
    SignatureRow{"SIG_ONE", FirstHandler, nullptr}, SignatureRow{"SIG_TWO", SecondHandler, SecondHandler},
    SignatureRow{"SIG_ALT", nullptr, FirstHandler}, SignatureRow{"SIG_THROWS", ThrowingHandler, nullptr}};

void *Export(std::uintptr_t number)
{
    return reinterpret_cast<void *>(number);
}

class CallerTest : public ChannelTest
{
protected:
    CallerTest()
    {
        seen.clear();
        caller_in_use = nullptr;
        caller.emplace(rows, NoHook);
    }

    void Load(const WideString &name)
    {
        Forget();
        caller->LoadLibraryW(name, channel);
        ASSERT_EQ(fake_pipe.written, SuccessFrame());
        Forget();
    }

    void Call(const WideString &library, const std::string &function, const std::string &signature)
    {
        caller->CallFunction({library, function, signature}, channel);
    }

    std::optional<CLibraryCaller> caller;
};

TEST_F(CallerTest, LoadAnswersWithSuccess)
{
    fake_module.Add(u"dir/a.dll", {});
    caller->LoadLibraryW(u"dir/a.dll", channel);
    EXPECT_EQ(fake_pipe.written, SuccessFrame());
    EXPECT_THAT(call_log.calls, ElementsAre("LoadModule dir/a.dll", "WritePipe 5"));
    EXPECT_THAT(Logged(), IsEmpty());
}

TEST_F(CallerTest, LoadThatFailsAnswersWithTheSystemsCodeAndText)
{
    fake_module.load_code = 193;
    fake_module.load_text = u"not a valid library\r\n";
    caller->LoadLibraryW(u"a", channel);
    EXPECT_EQ(fake_pipe.written, ErrorFrame(0, 193, u"not a valid library\r\n"));
    Forget();
    Call(u"a", "one", "SIG_ONE");
    EXPECT_EQ(fake_pipe.written, ErrorFrame(0, 0, u"Failed to find library..."));
}

TEST_F(CallerTest, AfterTheReplyTheLibraryIsInTheTableAndThenTheHookRuns)
{
    caller.emplace(rows, Hook);
    caller_in_use = &*caller;
    fake_module.Add(u"a", {{"one", Export(11)}});
    caller->LoadLibraryW(u"a", channel);
    EXPECT_THAT(call_log.calls,
                ElementsAre("LoadModule a", "WritePipe 5", "hook a 0", "FindExport one", "WritePipe 5"));
    EXPECT_THAT(seen, ElementsAre("first 11"));
}

TEST_F(CallerTest, LibraryIsNotInTheTableBeforeItsReplyIsOut)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    fake_pipe.before_write = [this] { Call(u"a", "one", "SIG_ONE"); };
    caller->LoadLibraryW(u"a", channel);
    const Bytes missing = ErrorFrame(0, 0, u"Failed to find library...");
    ASSERT_GE(fake_pipe.written.size(), missing.size());
    EXPECT_EQ(First(missing.size(), fake_pipe.written), missing);
    EXPECT_THAT(seen, IsEmpty());
}

TEST_F(CallerTest, HookDoesNotRunForALoadThatFailed)
{
    caller.emplace(rows, Hook);
    caller->LoadLibraryW(u"a", channel);
    EXPECT_THAT(call_log.calls, ElementsAre("LoadModule a", ::testing::StartsWith("WritePipe ")));
}

TEST_F(CallerTest, LoadWhoseReplyCantBeWrittenStillCounts)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    fake_pipe.FailWrite(232);
    caller->LoadLibraryW(u"a", channel);
    Call(u"a", "one", "SIG_ONE");
    EXPECT_THAT(seen, ElementsAre("first 11"));
}

TEST_F(CallerTest, LoadingANameAgainReleasesTheOldModuleFirst)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    Load(u"a");
    fake_module.Add(u"a", {{"one", Export(22)}});
    caller->LoadLibraryW(u"a", channel);
    EXPECT_THAT(call_log.calls, ElementsAre("FreeModule a", "LoadModule a", "WritePipe 5"));
    EXPECT_EQ(fake_module.loaded, 1u);
    Call(u"a", "one", "SIG_ONE");
    EXPECT_THAT(seen, ElementsAre("first 22"));
}

TEST_F(CallerTest, ReloadThatFailsLeavesNoEntry)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    Load(u"a");
    fake_module.Remove(u"a");
    caller->LoadLibraryW(u"a", channel);
    EXPECT_EQ(fake_pipe.written, ErrorFrame(0, 126, u"no such library\r\n"));
    EXPECT_EQ(fake_module.loaded, 0u);
    Forget();
    Call(u"a", "one", "SIG_ONE");
    EXPECT_EQ(fake_pipe.written, ErrorFrame(0, 0, u"Failed to find library..."));
    Forget();
    Call(u"", "one", "SIG_ONE");
    EXPECT_EQ(fake_pipe.written, ErrorFrame(0, 0, u"Failed to find library..."));
}

TEST_F(CallerTest, NamesThatDifferInCaseAreTwoEntries)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    fake_module.Add(u"A", {{"one", Export(22)}});
    Load(u"a");
    Load(u"A");
    EXPECT_EQ(fake_module.loaded, 2u);
    Call(u"a", "one", "SIG_ONE");
    Call(u"A", "one", "SIG_ONE");
    EXPECT_THAT(seen, ElementsAre("first 11", "first 22"));
}

TEST_F(CallerTest, EmptyNameIsTheLowestInTheTable)
{
    fake_module.Add(u"b", {{"one", Export(2)}});
    fake_module.Add(u"ab", {{"one", Export(1)}});
    fake_module.Add(u"a", {{"one", Export(0xA)}});
    Load(u"b");
    Call(u"", "one", "SIG_ONE");
    Load(u"ab");
    Call(u"", "one", "SIG_ONE");
    // A prefix comes first.
    Load(u"a");
    Call(u"", "one", "SIG_ONE");
    EXPECT_THAT(seen, ElementsAre("first 2", "first 1", "first 10"));
}

// Unit by unit and unsigned: U+FF41 lies above the surrogates that stand for U+1D41A.
TEST_F(CallerTest, NamesAreOrderedByTheirUnits)
{
    fake_module.Add(u"\uFF41", {{"one", Export(2)}});
    fake_module.Add(u"\U0001D41A", {{"one", Export(1)}});
    Load(u"\uFF41");
    Load(u"\U0001D41A");
    Call(u"", "one", "SIG_ONE");
    EXPECT_THAT(seen, ElementsAre("first 1"));
}

TEST_F(CallerTest, EmptyNameBeforeAnyLoad)
{
    Call(u"", "one", "SIG_ONE");
    EXPECT_EQ(fake_pipe.written, ErrorFrame(0, 0, u"Failed to find library..."));
    EXPECT_THAT(Logged(), ElementsAre("error LibraryCaller: Failed to find library..."));
}

TEST_F(CallerTest, LogOfAMissingLibraryComesBeforeTheReply)
{
    fake_pipe.FailWrite(232);
    Call(u"none", "one", "SIG_ONE");
    EXPECT_THAT(Logged(),
                ElementsAre("error LibraryCaller: Failed to find library...", "error commfunc: Failed on write"));
}

TEST_F(CallerTest, LogOfAnInvalidSignatureComesAfterTheReply)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    Load(u"a");
    fake_pipe.FailWrite(232);
    Call(u"a", "one", "SIG_NONE");
    EXPECT_THAT(Logged(),
                ElementsAre("error commfunc: Failed on write", "error LibraryCaller: Invalid signature:SIG_NONE"));
}

TEST_F(CallerTest, LibraryIsLookedUpBeforeTheFunctionAndThatBeforeTheSignature)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    Load(u"a");
    Call(u"none", "none", "SIG_NONE");
    EXPECT_EQ(fake_pipe.written, ErrorFrame(0, 0, u"Failed to find library..."));
    EXPECT_THAT(call_log.calls, ElementsAre(::testing::StartsWith("WritePipe")));
    Forget();
    Call(u"a", "none", "SIG_NONE");
    EXPECT_EQ(fake_pipe.written, ErrorFrame(0, 0, u"Failed to get function address..."));
    EXPECT_THAT(Logged(), IsEmpty());
    Forget();
    Call(u"a", "one", "SIG_NONE");
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"Invalid signature"));
    EXPECT_THAT(Logged(), ElementsAre("error LibraryCaller: Invalid signature:SIG_NONE"));
    EXPECT_THAT(seen, IsEmpty());
}

TEST_F(CallerTest, MissingExportDoesNotAskForTheLastError)
{
    fake_module.Add(u"a", {});
    Load(u"a");
    platform::SetLastError(77);
    Call(u"a", "none", "SIG_ONE");
    EXPECT_EQ(fake_pipe.written, ErrorFrame(0, 0, u"Failed to get function address..."));
}

TEST_F(CallerTest, SignatureSelectsTheHandler)
{
    fake_module.Add(u"a", {{"one", Export(11)}, {"two", Export(22)}});
    Load(u"a");
    Call(u"a", "one", "SIG_TWO");
    Call(u"a", "two", "SIG_ONE");
    EXPECT_THAT(seen, ElementsAre("second 11", "first 22"));
    EXPECT_EQ(fake_pipe.written, SuccessFrame() + SuccessFrame());
    EXPECT_THAT(Logged(), IsEmpty());
}

TEST_F(CallerTest, SignatureIsExact)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    Load(u"a");
    for (const char *signature : {"sig_one", "SIG_ON", "SIG_ONEE", " SIG_ONE", ""}) {
        Forget();
        Call(u"a", "one", signature);
        EXPECT_EQ(fake_pipe.written, FailureFrame(u"Invalid signature")) << signature;
    }
    EXPECT_THAT(seen, IsEmpty());
}

TEST_F(CallerTest, RowOfTheOtherGenerationAloneIsInvalid)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    Load(u"a");
    Call(u"a", "one", "SIG_ALT");
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"Invalid signature"));
}

TEST_F(CallerTest, ExceptionOfAHandlerPassesThrough)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    Load(u"a");
    EXPECT_THROW(Call(u"a", "one", "SIG_THROWS"), std::runtime_error);
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_EQ(fake_module.loaded, 1u);
}

TEST_F(CallerTest, FailedReplyLeavesTheCallerAtWork)
{
    fake_pipe.FailWrite(232);
    Call(u"", "one", "SIG_ONE");
    Call(u"", "one", "SIG_ONE");
    EXPECT_EQ(fake_pipe.written, ErrorFrame(0, 0, u"Failed to find library..."));
}

// A call that is made again needs no look-up, until something could have changed its outcome.

TEST_F(CallerTest, NothingToRepeatBeforeTheFirstCall)
{
    EXPECT_FALSE(caller->RepeatCall(channel));
    fake_module.Add(u"a", {});
    Load(u"a");
    EXPECT_FALSE(caller->RepeatCall(channel));
    EXPECT_THAT(fake_pipe.written, IsEmpty());
}

TEST_F(CallerTest, CallIsRepeatedWithoutALookUp)
{
    fake_module.Add(u"a", {{"one", Export(11)}, {"two", Export(22)}});
    Load(u"a");
    Call(u"a", "one", "SIG_ONE");
    Call(u"a", "two", "SIG_TWO");
    Forget();
    EXPECT_TRUE(caller->RepeatCall(channel));
    EXPECT_THAT(seen, ElementsAre("first 11", "second 22", "second 22"));
    EXPECT_THAT(call_log.calls, ElementsAre("WritePipe 5"));
}

TEST_F(CallerTest, CallThatFoundNoHandlerIsNotRepeated)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    Load(u"a");
    const std::vector<IPCStruct_FunctionCall> refused = {
        {u"none", "one", "SIG_ONE"}, {u"a", "none", "SIG_ONE"}, {u"a", "one", "SIG_NONE"}};
    for (const IPCStruct_FunctionCall &call : refused) {
        Call(u"a", "one", "SIG_ONE");
        caller->CallFunction(call, channel);
        EXPECT_FALSE(caller->RepeatCall(channel)) << call.function << call.signature;
    }
    EXPECT_THAT(seen, ElementsAre("first 11", "first 11", "first 11"));
}

TEST_F(CallerTest, AnyLoadEndsTheRepetition)
{
    fake_module.Add(u"b", {{"one", Export(11)}});
    fake_module.Add(u"a", {{"one", Export(22)}});
    Load(u"b");
    Call(u"", "one", "SIG_ONE");
    Load(u"a");
    EXPECT_FALSE(caller->RepeatCall(channel));
    Call(u"b", "one", "SIG_ONE");
    caller->LoadLibraryW(u"none", channel);
    EXPECT_FALSE(caller->RepeatCall(channel));
    EXPECT_THAT(seen, ElementsAre("first 11", "first 11"));
}

TEST_F(CallerTest, ReleaseEndsTheRepetition)
{
    fake_module.Add(u"a", {{"one", Export(11)}});
    Load(u"a");
    Call(u"a", "one", "SIG_ONE");
    caller->ReleaseLibraries();
    EXPECT_FALSE(caller->RepeatCall(channel));
}

TEST_F(CallerTest, ReleaseGoesInTheOrderOfTheNames)
{
    for (const char16_t *name : {u"c", u"a", u"b"}) {
        fake_module.Add(name, {});
        Load(name);
    }
    caller->ReleaseLibraries();
    EXPECT_THAT(call_log.calls, ElementsAre("FreeModule a", "FreeModule b", "FreeModule c"));
    Call(u"a", "one", "SIG_ONE");
    EXPECT_EQ(fake_pipe.written, ErrorFrame(0, 0, u"Failed to find library..."));
}

TEST_F(CallerTest, DestructionReleases)
{
    fake_module.Add(u"a", {});
    Load(u"a");
    caller.reset();
    EXPECT_THAT(call_log.calls, ElementsAre("FreeModule a"));
}

// A fault in a library's destructor: the rest is left to a further call, which finds that library gone.
TEST_F(CallerTest, ReleaseThatIsAbandonedGoesOnBehindTheLibraryThatFaulted)
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

TEST_F(CallerTest, ServesTheRowsThatItIsGivenAndNoOthers)
{
    constexpr std::array two_rows = {SignatureRow{"SIG_MINE", FirstHandler, nullptr},
                                     SignatureRow{"SIG_YOURS", SecondHandler, nullptr}};
    caller.emplace(two_rows, NoHook);
    fake_module.Add(u"a", {{"one", Export(11)}});
    Load(u"a");
    Call(u"a", "one", "SIG_YOURS");
    Call(u"a", "one", "SIG_MINE");
    EXPECT_THAT(seen, ElementsAre("second 11", "first 11"));
    Forget();
    Call(u"a", "one", "SIGNATURE_GetBackupType");
    EXPECT_EQ(fake_pipe.written, FailureFrame(u"Invalid signature"));
}

} // namespace
} // namespace kessil::test
