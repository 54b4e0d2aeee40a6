#include "fakes/fake_code_page.h"
#include "fakes/fake_critical_section.h"
#include "families/vadp/adapter_call.h"
#include "families/vadp/alt_call.h"
#include "families/vadp/error_messages.h"
#include "families/vadp/item_list.h"
#include "support/heap_probe.h"
#include "unit/families/adapter_test.h"

#include <cstddef>

namespace kessil::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

void *Object(std::uintptr_t number)
{
    return reinterpret_cast<void *>(number);
}

VMLib_ErrorInfo *ErrorRecord(std::uintptr_t number)
{
    return reinterpret_cast<VMLib_ErrorInfo *>(number);
}

TEST(HandleTableTest, FindsWhatWasStoredAndNothingElse)
{
    HandleTable table;
    EXPECT_EQ(table[0], nullptr);
    EXPECT_EQ(table.Store(Object(0x10)), 0);
    EXPECT_EQ(table.Store(Object(0x11)), 1);
    EXPECT_EQ(table[0], Object(0x10));
    EXPECT_EQ(table[1], Object(0x11));
    EXPECT_EQ(table[2], nullptr);
    EXPECT_EQ(table[0xFFFFFFFF], nullptr);
    EXPECT_EQ(table[0x80000000], nullptr);
}

TEST(HandleTableTest, GivesOutTheLowestFreeIndexAndNeverShrinks)
{
    HandleTable table;
    for (std::uintptr_t number = 0; number < 6; ++number)
        table.Store(Object(0x10 + number));
    table.Clear(5);
    table.Clear(2);
    EXPECT_EQ(table.Size(), 6u);
    EXPECT_EQ(table[2], nullptr);
    EXPECT_EQ(table.Store(Object(0x20)), 2);
    EXPECT_EQ(table.Store(Object(0x21)), 5);
    EXPECT_EQ(table.Store(Object(0x22)), 6);
}

TEST(HandleTableTest, LeavesOtherIndicesAlone)
{
    HandleTable table;
    table.Store(Object(0x10));
    table.Clear(1);
    table.Clear(0xFFFFFFFF);
    EXPECT_EQ(table[0], Object(0x10));
    EXPECT_EQ(table.Size(), 1u);
}

TEST(HandleTableTest, ANullObjectTakesTheLowestIndexAndLeavesItFree)
{
    HandleTable table;
    EXPECT_EQ(table.Store(nullptr), 0);
    EXPECT_EQ(table.Size(), 1u);
    EXPECT_EQ(table.Store(Object(0x10)), 0);
}

class StoresTest : public AdapterTest
{};

TEST_F(StoresTest, EachKindHasATableOfItsOwn)
{
    EXPECT_EQ(storeBackupOptions(Object(0x10)), 0);
    EXPECT_EQ(storeListing(Object(0x11)), 0);
    EXPECT_EQ(storeACLInfo(Object(0x12)), 0);
    EXPECT_EQ(storeBackupSession(Object(0x13)), 0);
    EXPECT_EQ(storeRestoreSession(Object(0x14)), 0);
    EXPECT_EQ(storeBackupFile(Object(0x15)), 0);
    EXPECT_EQ(storeRestoreFile(Object(0x16)), 0);
    EXPECT_EQ(g_vBackupOptions[0], Object(0x10));
    EXPECT_EQ(g_vListing[0], Object(0x11));
    EXPECT_EQ(g_vACLInfo[0], Object(0x12));
    EXPECT_EQ(g_vBackupSession[0], Object(0x13));
    EXPECT_EQ(g_vRestoreSession[0], Object(0x14));
    EXPECT_EQ(g_vBackupFile[0], Object(0x15));
    EXPECT_EQ(g_vRestoreFile[0], Object(0x16));
}

class BindingTest : public AdapterTest
{
protected:
    BindingTest() { Unbind(); }

    void Bind(const WideString &name)
    {
        fake_module.Add(name, AdapterExports());
        bindAdapterFunctions(channel, name, platform::LoadModule(name));
    }

    static bool IsBound()
    {
        return g_pfnGetErrorMessage == GetErrorMessage && g_pfnFreeErrorInfo == FreeErrorInfo &&
               g_pfnFreeCredentials == FreeCredentials && g_pfnSetLoggingCallBack == SetLoggingCallBack;
    }
};

TEST_F(BindingTest, FindsTheFourFunctions)
{
    Bind(u"tarnlink_windows_x64.dll");
    EXPECT_TRUE(IsBound());
}

TEST_F(BindingTest, KnowsTheNameInCapitalsInAPathAndWithMoreBehindIt)
{
    Bind(u"C:\\Adapters\\TARNLINK_Windows_X64.DLL.so");
    EXPECT_TRUE(IsBound());
}

TEST_F(BindingTest, LeavesOtherLibrariesAlone)
{
    for (const WideString &name : {WideString(), WideString(u"tarnlink_windows_x64"), WideString(u"tarnlink.dll"),
                                   WideString(u"arnlink_windows_x64.dll")}) {
        Bind(name);
        EXPECT_EQ(g_pfnGetErrorMessage, nullptr);
        EXPECT_EQ(g_pfnSetLoggingCallBack, nullptr);
    }
}

TEST_F(BindingTest, AnotherLibraryLeavesTheSlotsAsTheyWere)
{
    Bind(adapter_name);
    Bind(u"other.dll");
    EXPECT_TRUE(IsBound());
}

// A name that is missing is no error, and a later load without it takes it away.
TEST_F(BindingTest, AMissingNameLeavesANullSlot)
{
    Bind(adapter_name);
    fake_module.Add(adapter_name, {KESSIL_TEST_EXPORT(FreeErrorInfo)});
    bindAdapterFunctions(channel, adapter_name, platform::LoadModule(adapter_name));
    EXPECT_EQ(g_pfnGetErrorMessage, nullptr);
    EXPECT_EQ(g_pfnFreeErrorInfo, FreeErrorInfo);
    EXPECT_EQ(g_pfnFreeCredentials, nullptr);
    EXPECT_EQ(g_pfnSetLoggingCallBack, nullptr);
    EXPECT_THAT(Logged(), IsEmpty());
}

AdapterLoggingCallBack given_callback = nullptr;

void TakeCallback(AdapterLoggingCallBack callback)
{
    given_callback = callback;
}

TEST_F(BindingTest, HandsTheAdapterTheQueueAtEachLoad)
{
    fake_module.Add(adapter_name, {{"SetLoggingCallBack", reinterpret_cast<void *>(TakeCallback)}});
    for (int load = 0; load < 2; ++load) {
        Forget();
        given_callback = nullptr;
        bindAdapterFunctions(channel, adapter_name, platform::LoadModule(adapter_name));
        ASSERT_NE(given_callback, nullptr);
        given_callback("line", 3);
        sendAdapterLogAlt(channel);
        EXPECT_EQ(fake_pipe.written, Hex("FFFFFF9D 00000004 6C696E65 00000003 FFFFFC19"));
    }
}

class AdmissionTest : public ChannelTest
{
protected:
    // Whether the next section that this side makes admits ordinary users.
    bool AdmitsUsers()
    {
        fake_pipe.Deliver(SuccessFrame());
        call_log.recording = true;
        EXPECT_TRUE(channel.ResizeSharedMem(64, error));
        return std::ranges::any_of(call_log.calls, [](const std::string &call) {
            return call.find("CreateSection") != std::string::npos && call.find("admitting users") != std::string::npos;
        });
    }

    void Load(const WideString &name)
    {
        fake_module.Add(name, {});
        bindAdapterFunctions(channel, name, platform::LoadModule(name));
    }
};

TEST_F(AdmissionTest, ComesWithTheAdaptersNameEvenWithoutItsFunctions)
{
    GiveSection(u"s0", Bytes(16));
    Load(u"Tarnlink_windows_x64.dll");
    EXPECT_TRUE(AdmitsUsers());
}

TEST_F(AdmissionTest, DoesNotComeWithAnotherLibrary)
{
    GiveSection(u"s0", Bytes(16));
    Load(u"other.dll");
    EXPECT_FALSE(AdmitsUsers());
}

class AdapterLogTest : public AdapterTest
{};

TEST_F(AdapterLogTest, TravelsAsNoticesOldestFirstAndOnce)
{
    queueAdapterLogLine("one", 1);
    queueAdapterLogLine("", 255);
    flushAdapterLog(channel);
    EXPECT_EQ(fake_pipe.written, Frame('M', Be32(1) + Wide(u"one")) + Frame('M', Be32(255) + Wide(u"")));
    Forget();
    flushAdapterLog(channel);
    EXPECT_THAT(fake_pipe.written, IsEmpty());
}

TEST_F(AdapterLogTest, NoticesAreInTheThreadsCodePage)
{
    fake_code_page.answer = u"\u0416";
    queueAdapterLogLine("\xC6", 2);
    flushAdapterLog(channel);
    EXPECT_EQ(fake_pipe.written, Frame('M', Be32(2) + Wide(u"\u0416")));
}

TEST_F(AdapterLogTest, TravelsAsNumberedRecordsInItsOwnBytes)
{
    queueAdapterLogLine("\xFF\x01", 200);
    queueAdapterLogLine("", 0);
    sendAdapterLogAlt(channel);
    EXPECT_EQ(fake_pipe.written, Hex("FFFFFF9D 00000002 FF01 000000C8  FFFFFF9D 00000000 00000000  FFFFFC19"));
    Forget();
    sendAdapterLogAlt(channel);
    EXPECT_EQ(fake_pipe.written, Hex("FFFFFC19"));
}

TEST_F(AdapterLogTest, ANullLineIsAnEmptyOne)
{
    queueAdapterLogLine(nullptr, 7);
    sendAdapterLogAlt(channel);
    EXPECT_EQ(fake_pipe.written, Hex("FFFFFF9D 00000000 00000007 FFFFFC19"));
}

// A failure to send them is ignored, and none is kept for later.
TEST_F(AdapterLogTest, LinesThatCanNotBeWrittenAreGone)
{
    queueAdapterLogLine("one", 1);
    queueAdapterLogLine("two", 2);
    fake_pipe.FailWrite(232);
    sendAdapterLogAlt(channel);
    EXPECT_EQ(fake_pipe.written, Hex("00000003 6F6E65 00000001  FFFFFF9D 00000003 74776F 00000002  FFFFFC19"));
    Forget();
    sendAdapterLogAlt(channel);
    EXPECT_EQ(fake_pipe.written, Hex("FFFFFC19"));
}

TEST_F(AdapterLogTest, TheLockIsHeldWhileLinesAreSent)
{
    queueAdapterLogLine("one", 1);
    int held_at_write = -1;
    fake_pipe.before_write = [&] { held_at_write = fake_critical_section.held; };
    sendAdapterLogAlt(channel);
    EXPECT_EQ(held_at_write, 1);
    held_at_write = -1;
    queueAdapterLogLine("two", 1);
    fake_pipe.before_write = [&] { held_at_write = fake_critical_section.held; };
    flushAdapterLog(channel);
    EXPECT_EQ(held_at_write, 1);
    EXPECT_EQ(fake_critical_section.held, 0);
}

TEST_F(AdapterLogTest, TheLockIsTakenForALine)
{
    const int before = fake_critical_section.entered;
    queueAdapterLogLine("one", 1);
    EXPECT_EQ(fake_critical_section.entered, before + 1);
    EXPECT_EQ(fake_critical_section.held, 0);
}

TEST_F(AdapterLogTest, ALineThatFindsNoMemoryIsLost)
{
    const std::string text(1000, 'x');
    {
        const NoMemoryFrom limit(1000);
        queueAdapterLogLine(text.c_str(), 1);
    }
    sendAdapterLogAlt(channel);
    EXPECT_EQ(fake_pipe.written, Hex("FFFFFC19"));
}

// Adapters are built against this layout.
TEST(ItemDataTest, HasItsFieldsInOrder)
{
    EXPECT_EQ(offsetof(tag_item_data, item_name), 0u);
    EXPECT_EQ(offsetof(tag_item_data, item_number), sizeof(std::string));
    EXPECT_EQ(offsetof(tag_item_data, item_value), sizeof(std::string) + 8);
    EXPECT_EQ(offsetof(tag_item_data, item_extra), sizeof(std::string) + 16);
    EXPECT_EQ(sizeof(tag_item_data), sizeof(std::string) + 24);
}

class ItemListTest : public AdapterTest
{
protected:
    const AdapterListing list = {{"ab", -2, 0x0102030405060708, -3}, {"", 0x7FFFFFFF, 0, 4}};
};

TEST_F(ItemListTest, HasTheWideValueAheadOfTheNumber)
{
    EXPECT_TRUE(writeItemList(channel, list, false, false));
    EXPECT_EQ(fake_pipe.written, Hex("00000002  00000002 6162 0102030405060708 FFFFFFFE  00000000 0000000000000000 "
                                     "7FFFFFFF"));
    EXPECT_EQ(FamilyLog(), std::vector<std::string>{"debug: Writing n_items==2"});
}

TEST_F(ItemListTest, HasTheExtraNumberWhereItIsAskedFor)
{
    EXPECT_TRUE(writeItemList(channel, list, true, false));
    EXPECT_EQ(fake_pipe.written, Hex("00000002  00000002 6162 0102030405060708 FFFFFFFE FFFFFFFD  00000000 "
                                     "0000000000000000 7FFFFFFF 00000004"));
}

TEST_F(ItemListTest, HasAMarkAheadOfTheCountWhereItIsAskedFor)
{
    EXPECT_TRUE(writeItemList(channel, {}, true, true));
    EXPECT_EQ(fake_pipe.written, Hex("FFFFFC19 00000000"));
}

TEST_F(ItemListTest, ACountThatCanNotBeWrittenIsLogged)
{
    fake_pipe.FailWrite(232);
    EXPECT_FALSE(writeItemList(channel, list, false, false));
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_THAT(FamilyLog(), ElementsAre("debug: Writing n_items==2", "error: Failed to write n items"));
    Forget();
    fake_pipe.FailWrite(232);
    EXPECT_FALSE(writeItemList(channel, list, false, true));
    EXPECT_THAT(fake_pipe.written, IsEmpty());
    EXPECT_THAT(FamilyLog(), ElementsAre("debug: Writing n_items==2", "error: Failed to write n items"));
}

// The n-th write fails; nothing follows it, and nothing is logged.
TEST_F(ItemListTest, EndsAtTheFirstWriteThatFails)
{
    const std::vector<Bytes> writes = {Hex("00000002"),         Hex("00000002"), Hex("6162"),
                                       Hex("0102030405060708"), Hex("FFFFFFFE"), Hex("FFFFFFFD")};
    Bytes before;
    for (std::size_t failing = 1; failing < writes.size(); ++failing) {
        before = before + writes[failing - 1];
        Forget();
        for (std::size_t write = 0; write < failing; ++write)
            fake_pipe.ShortenWrite(static_cast<std::uint32_t>(writes[write].size()));
        fake_pipe.FailWrite(232);
        EXPECT_FALSE(writeItemList(channel, list, true, false)) << failing;
        EXPECT_EQ(fake_pipe.written, before) << failing;
        EXPECT_THAT(FamilyLog(), ElementsAre("debug: Writing n_items==2"));
    }
}

class ErrorMessageTest : public AdapterTest
{
protected:
    ErrorMessageTest() { stand_in.script["GetErrorMessage"] = "text=boom"; }
};

TEST_F(ErrorMessageTest, IsTheAdaptersAndIsFreed)
{
    EXPECT_EQ(extractErrMsgAlt(false, ErrorRecord(0x99)), "boom");
    EXPECT_EQ(stand_in.lines, ErrorTaken("0x99"));
}

TEST_F(ErrorMessageTest, OfNoRecordIsAskedForAllTheSame)
{
    EXPECT_EQ(extractErrMsgAlt(false, nullptr), "boom");
    EXPECT_EQ(stand_in.lines, ErrorTaken("null"));
}

TEST_F(ErrorMessageTest, OfASuccessIsEmptyAndLeavesTheRecordAlone)
{
    EXPECT_EQ(extractErrMsgAlt(true, ErrorRecord(0x99)), "");
    EXPECT_THAT(stand_in.lines, IsEmpty());
}

TEST_F(ErrorMessageTest, HasWordsOfItsOwnWithoutAnAdapter)
{
    Unbind();
    EXPECT_EQ(extractErrMsgAlt(false, ErrorRecord(0x99)), "Failed to get error message");
    EXPECT_THAT(FamilyLog(), ElementsAre("debug: Error:  Failed to get error message"));
    EXPECT_THAT(stand_in.lines, IsEmpty());
}

TEST_F(ErrorMessageTest, ThatTheAdapterLeavesNullIsEmpty)
{
    stand_in.script["GetErrorMessage"] = "";
    EXPECT_EQ(extractErrMsgAlt(false, ErrorRecord(0x99)), "");
    EXPECT_EQ(stand_in.lines, ErrorTaken("0x99"));
}

TEST_F(ErrorMessageTest, IsTakenWhereNothingFreesIt)
{
    g_pfnFreeErrorInfo = nullptr;
    EXPECT_EQ(extractErrMsgAlt(false, ErrorRecord(0x99)), "boom");
}

TEST_F(ErrorMessageTest, FollowsTheFailureStatusAlone)
{
    sendErrMsgAlt(channel, true, std::string("unused"));
    EXPECT_EQ(fake_pipe.written, Hex("00000001"));
    Forget();
    sendErrMsgAlt(channel, false, std::string("why"));
    EXPECT_EQ(fake_pipe.written, Hex("FFFFFFFF 00000003 776879"));
    Forget();
    sendErrMsgAlt(channel, false, ErrorRecord(0x99));
    EXPECT_EQ(fake_pipe.written, Hex("FFFFFFFF 00000004 626F6F6D"));
}

TEST_F(ErrorMessageTest, StandsAloneInThePlaceOfAValue)
{
    sendErrMsgAltValue(channel, true, 5, std::string("unused"));
    EXPECT_EQ(fake_pipe.written, Hex("00000005"));
    Forget();
    sendErrMsgAltValue(channel, false, 5, std::string("why"));
    EXPECT_EQ(fake_pipe.written, Hex("00000003 776879"));
    Forget();
    sendErrMsgAltValue(channel, false, 5, ErrorRecord(0x99));
    EXPECT_EQ(fake_pipe.written, Hex("00000004 626F6F6D"));
}

// A status that can't be written is not logged; a text that can't be is.
TEST_F(ErrorMessageTest, ThatCanNotBeWrittenIsLogged)
{
    fake_pipe.FailWrite(232);
    sendErrMsgAlt(channel, false, std::string("why"));
    EXPECT_EQ(fake_pipe.written, Hex("00000003 776879"));
    EXPECT_THAT(FamilyLog(), IsEmpty());

    fake_pipe.ShortenWrite(4);
    fake_pipe.FailWrite(232);
    sendErrMsgAlt(channel, false, std::string("why"));
    EXPECT_THAT(FamilyLog(), ElementsAre("error: Failed to write error message."));
    Forget();

    fake_pipe.FailWrite(232);
    sendErrMsgAltValue(channel, false, 5, std::string("why"));
    EXPECT_THAT(FamilyLog(), ElementsAre("error: Failed to write error message."));
    Forget();

    fake_pipe.FailWrite(232);
    sendErrMsgAltValue(channel, true, 5, std::string("why"));
    EXPECT_THAT(FamilyLog(), IsEmpty());
}

class AltCallTest : public AdapterTest
{
protected:
    std::uint32_t handle = no_handle;
    std::uint64_t number = 5;
    std::string text = "old";
    std::vector<unsigned char> block = {9};
};

TEST_F(AltCallTest, ReadsInOrder)
{
    fake_pipe.Deliver(Hex("01020304 0102030405060708 00000002 6162 00000001 FF"));
    AltCall call(channel, "Handler", OnFailedRead::Skip);
    EXPECT_TRUE(call.Read(handle, number, text, block));
    EXPECT_TRUE(call.ReadsOkay());
    EXPECT_EQ(handle, 0x01020304u);
    EXPECT_EQ(number, 0x0102030405060708u);
    EXPECT_EQ(text, "ab");
    EXPECT_EQ(block, Bytes{0xFF});
    EXPECT_THAT(FamilyLog(), ElementsAre("debug: Handler()"));
}

TEST_F(AltCallTest, WhatIsNotReadStaysAsItWas)
{
    fake_pipe.ends_with_nothing = true;
    AltCall call(channel, "Handler", OnFailedRead::Call, EntryLog::None);
    EXPECT_TRUE(call.Read(handle, number, text, block));
    EXPECT_FALSE(call.ReadsOkay());
    EXPECT_EQ(handle, no_handle);
    EXPECT_EQ(number, 5u);
    EXPECT_EQ(text, "old");
    EXPECT_EQ(block, Bytes{9});
    EXPECT_THAT(FamilyLog(), IsEmpty());
}

TEST_F(AltCallTest, ABlockThatBreaksOffIsEmpty)
{
    fake_pipe.ends_with_nothing = true;
    fake_pipe.Deliver(Hex("00000004"));
    AltCall call(channel, "Handler", OnFailedRead::Skip);
    EXPECT_FALSE(call.Read(block));
    EXPECT_THAT(block, IsEmpty());
}

TEST_F(AltCallTest, TheFirstFailedReadEndsTheReading)
{
    fake_pipe.Deliver(Hex("00000001 00000401"));
    fake_pipe.Deliver(Hex("0000000000000007"));
    AltCall call(channel, "Handler", OnFailedRead::Skip);
    EXPECT_FALSE(call.Read(handle, text, number));
    EXPECT_EQ(handle, 1u);
    EXPECT_EQ(text, "old");
    EXPECT_EQ(number, 5u);
    EXPECT_FALSE(fake_pipe.IsReadOut());
}

TEST_F(AltCallTest, AStringMayHave1024BytesAndNoMore)
{
    fake_pipe.Deliver(Be32(1024) + Repeat('x', 1024));
    AltCall call(channel, "Handler", OnFailedRead::Skip);
    EXPECT_TRUE(call.Read(text));
    EXPECT_EQ(text, std::string(1024, 'x'));
    fake_pipe.Deliver(Be32(1025));
    EXPECT_FALSE(call.Read(text));
}

TEST_F(AltCallTest, ANullListingIsAnEmptyOne)
{
    AltCall call(channel, "Handler");
    call.ReplyList(true, nullptr, true);
    EXPECT_EQ(fake_pipe.written, Hex("FFFFFC19 00000000"));
}

// What the adapter logs while it is asked for the text comes with the next answer, unless the text was taken first.
TEST_F(AltCallTest, TheErrorTextIsTakenBehindTheLog)
{
    stand_in.script["GetErrorMessage"] = "log=late level=1 text=boom";
    AltCall call(channel, "Handler");
    call.ReplyStatus(false);
    EXPECT_EQ(fake_pipe.written, Hex("FFFFFC19 FFFFFFFF 00000004 626F6F6D"));
    Forget();
    call.SendLog();
    EXPECT_EQ(fake_pipe.written, Hex("FFFFFF9D 00000004 6C617465 00000001 FFFFFC19"));
}

} // namespace
} // namespace kessil::test
