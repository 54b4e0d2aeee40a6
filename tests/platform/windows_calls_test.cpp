#include "windows_calls.h"

#include "platform/critical_section.h"
#include "platform/environment.h"
#include "platform/last_error.h"
#include "platform/local_time.h"
#include "platform/logon.h"
#include "platform/message_table.h"
#include "platform/module.h"
#include "platform/pipe.h"
#include "platform/pipe_server.h"
#include "platform/process.h"
#include "platform/secret.h"
#include "platform/section.h"
#include "platform/system_version.h"
#include "platform/terminal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <map>
#include <optional>

namespace kessil::test {

using testing::ElementsAre;

namespace {

constexpr unsigned long failure = 1450;

Calls WithoutHandles(Calls calls)
{
    std::erase_if(calls, [](const std::string &call) { return call == "CloseHandle(some)"; });
    return calls;
}

/// The calls that creating a section makes. The list has 100 bytes for the Administrators' SID, 1000 for the
/// SID of the Users.
Calls CallsOfCreation(bool admit_users, const Failures &failures = {})
{
    return CallsDuring([admit_users] { platform::CreateSection(u"name", 70000, admit_users); }, failures);
}

} // namespace

TEST(ConnectPipe, WaitsAndOpens)
{
    platform::PipeHandle pipe = nullptr;
    const Calls calls = CallsDuring([&pipe] { pipe = platform::ConnectPipe(u"\\\\.\\pipe\\p", 30000); });
    EXPECT_THAT(calls, ElementsAre("WaitNamedPipeW(\"\\\\.\\pipe\\p\", 30000)",
                                   "CreateFileW(\"\\\\.\\pipe\\p\", 0xc0000000, 0, null, 3, 0x0, null)"));
    EXPECT_EQ(pipe, fake_pipe);
}

TEST(ConnectPipe, OpensNothingAfterAFailedWait)
{
    platform::PipeHandle pipe = nullptr;
    std::uint32_t code = 0;
    const Calls calls = CallsDuring(
        [&] {
            pipe = platform::ConnectPipe(u"p", 30000);
            code = platform::LastError();
        },
        {{"WaitNamedPipeW", 121}});
    EXPECT_THAT(calls, ElementsAre("WaitNamedPipeW(\"p\", 30000)"));
    EXPECT_EQ(pipe, platform::invalid_pipe);
    EXPECT_EQ(code, 121u);
}

TEST(ConnectPipe, ReportsThatThePipeCouldNotBeOpened)
{
    platform::PipeHandle pipe = nullptr;
    std::uint32_t code = 0;
    CallsDuring(
        [&] {
            pipe = platform::ConnectPipe(u"p", 30000);
            code = platform::LastError();
        },
        {{"CreateFileW", 231}});
    EXPECT_EQ(pipe, platform::invalid_pipe);
    EXPECT_EQ(code, 231u);
}

TEST(ReadPipe, IsOneCall)
{
    char buffer[16];
    bool done = false;
    std::uint32_t count = 0;
    const Calls calls = CallsDuring([&] { done = platform::ReadPipe(fake_pipe, buffer, 16, count); });
    EXPECT_THAT(calls, ElementsAre("ReadFile(pipe, some, 16, some, null)"));
    EXPECT_TRUE(done);
    EXPECT_EQ(count, 3u);
}

TEST(WritePipe, IsOneCall)
{
    bool done = false;
    std::uint32_t count = 0;
    const Calls calls = CallsDuring([&] { done = platform::WritePipe(fake_pipe, "data", 4, count); });
    EXPECT_THAT(calls, ElementsAre("WriteFile(pipe, some, 4, some, null)"));
    EXPECT_TRUE(done);
    EXPECT_EQ(count, 4u);
}

TEST(ReadPipe, ReportsAFailure)
{
    char buffer[16];
    bool done = true;
    std::uint32_t count = 0;
    std::uint32_t code = 0;
    CallsDuring(
        [&] {
            done = platform::ReadPipe(fake_pipe, buffer, 16, count);
            code = platform::LastError();
        },
        {{"ReadFile", 109}});
    EXPECT_FALSE(done);
    EXPECT_EQ(code, 109u);
}

TEST(WritePipe, ReportsAFailure)
{
    bool done = true;
    std::uint32_t count = 0;
    std::uint32_t code = 0;
    CallsDuring(
        [&] {
            done = platform::WritePipe(fake_pipe, "data", 4, count);
            code = platform::LastError();
        },
        {{"WriteFile", 232}});
    EXPECT_FALSE(done);
    EXPECT_EQ(code, 232u);
}

TEST(ErrorText, AsksTheSystemAndFreesItsBuffer)
{
    WideString text;
    const Calls calls = CallsDuring([&text] { text = platform::ErrorText(1234); });
    EXPECT_THAT(calls, ElementsAre("FormatMessageW(0x1300, null, 1234, 0, some, 0, null)", "LocalFree(message)"));
    EXPECT_EQ(text, u"text of the system\r\n");
}

TEST(ErrorText, IsEmptyWhereTheSystemHasNone)
{
    WideString text = u"before";
    const Calls calls = CallsDuring([&text] { text = platform::ErrorText(1234); }, {{"FormatMessageW", 317}});
    EXPECT_THAT(calls, ElementsAre("FormatMessageW(0x1300, null, 1234, 0, some, 0, null)"));
    EXPECT_EQ(text, u"");
}

TEST(LoadErrorText, IsTheTextOfTheCode)
{
    WideString text;
    const Calls calls = CallsDuring([&text] { text = platform::LoadErrorText(126); });
    EXPECT_THAT(calls, ElementsAre("FormatMessageW(0x1300, null, 126, 0, some, 0, null)", "LocalFree(message)"));
    EXPECT_EQ(text, u"text of the system\r\n");
}

TEST(LoadModule, SearchesTheLibrarysOwnDirectory)
{
    platform::ModuleHandle module = nullptr;
    const Calls calls = CallsDuring([&module] { module = platform::LoadModule(u"target.dll"); });
    EXPECT_THAT(calls, ElementsAre("LoadLibraryExW(\"target.dll\", null, 8)"));
    EXPECT_EQ(module, fake_module);
}

TEST(LoadModule, ReportsAFailure)
{
    platform::ModuleHandle module = fake_module;
    std::uint32_t code = 0;
    CallsDuring(
        [&] {
            module = platform::LoadModule(u"target.dll");
            code = platform::LastError();
        },
        {{"LoadLibraryExW", 126}});
    EXPECT_EQ(module, nullptr);
    EXPECT_EQ(code, 126u);
}

TEST(MessageTable, IsThatOfALoadedLibrary)
{
    platform::MessageTable table = nullptr;
    const Calls calls = CallsDuring([&table] { table = platform::OpenMessageTable(u"messages.dll"); });
    EXPECT_THAT(calls, ElementsAre("LoadLibraryW(\"messages.dll\")"));
    EXPECT_EQ(table, fake_module);
}

TEST(MessageTable, ReportsAFailedLoad)
{
    platform::MessageTable table = fake_module;
    std::uint32_t code = 0;
    CallsDuring(
        [&] {
            table = platform::OpenMessageTable(u"messages.dll");
            code = platform::LastError();
        },
        {{"LoadLibraryW", 126}});
    EXPECT_EQ(table, nullptr);
    EXPECT_EQ(code, 126u);
}

TEST(MessageTable, IsReadWithInsertsUnexpandedInTheSystemsLanguage)
{
    WideString text;
    const Calls calls = CallsDuring([&text] { EXPECT_TRUE(platform::ReadMessage(fake_module, 0xC0000005, text)); });
    EXPECT_THAT(calls,
                ElementsAre("FormatMessageW(0xb00, module, 3221225477, 0, some, 0, null)", "LocalFree(message)"));
    EXPECT_EQ(text, u"text of the system\r\n");
}

TEST(MessageTable, LeavesTheTextUnchangedWhereItHasNone)
{
    WideString text = u"before";
    const Calls calls =
        CallsDuring([&text] { EXPECT_FALSE(platform::ReadMessage(fake_module, 1, text)); }, {{"FormatMessageW", 317}});
    EXPECT_THAT(calls, ElementsAre("FormatMessageW(0xb00, module, 1, 0, some, 0, null)"));
    EXPECT_EQ(text, u"before");
}

TEST(MessageTable, IsFreedWithTheLastErrorKept)
{
    std::uint32_t code = 0;
    const Calls calls = CallsDuring([&code] {
        platform::SetLastError(1234);
        platform::CloseMessageTable(fake_module);
        code = platform::LastError();
    });
    EXPECT_THAT(calls, ElementsAre("FreeLibrary(module)"));
    EXPECT_EQ(code, 1234u);
}

TEST(Environment, IsReadThroughTheRunTimeLibrary)
{
    std::optional<WideString> value;
    const Calls calls = CallsDuring([&value] { value = platform::ReadEnvironment(u"PATH"); });
    EXPECT_THAT(calls, ElementsAre("_wgetenv(\"PATH\")"));
    EXPECT_EQ(value, u"value");
}

// The run-time library gives no reason, so the last error stays as it is.
TEST(Environment, LeavesTheLastErrorWhereAVariableIsNotSet)
{
    std::optional<WideString> value = u"before";
    std::uint32_t code = 0;
    CallsDuring(
        [&] {
            value = platform::ReadEnvironment(u"PATH");
            code = platform::LastError();
        },
        {{"_wgetenv", 203}});
    EXPECT_EQ(value, std::nullopt);
    EXPECT_EQ(code, 203u);
}

TEST(Environment, IsChangedThroughTheRunTimeLibrary)
{
    bool done = false;
    const Calls calls = CallsDuring([&done] { done = platform::PutEnvironment(u"PATH=C:\\a;old"); });
    EXPECT_THAT(calls, ElementsAre("_wputenv(\"PATH=C:\\a;old\")"));
    EXPECT_TRUE(done);
    CallsDuring([&done] { done = platform::PutEnvironment(u"PATH=C:\\a;old"); }, {{"_wputenv", 8}});
    EXPECT_FALSE(done);
}

TEST(LogOnUser, HasTypeAndProviderOfItsKind)
{
    const std::map<platform::LogonKind, std::string> kinds = {{platform::LogonKind::Interactive, "2, 0"},
                                                              {platform::LogonKind::Network, "8, 0"},
                                                              {platform::LogonKind::CredentialsOnly, "9, 3"}};
    for (const auto &[kind, type_and_provider] : kinds) {
        platform::UserToken user = nullptr;
        const Calls calls = CallsDuring([&] { user = platform::LogOnUser(u"ada", u"corp", u"secret", kind); });
        EXPECT_THAT(calls, ElementsAre("LogonUserW(\"ada\", \"corp\", \"secret\", " + type_and_provider + ")"));
        EXPECT_EQ(user, fake_user);
    }
}

TEST(LogOnUser, ReportsARefusal)
{
    platform::UserToken user = fake_user;
    std::uint32_t code = 0;
    CallsDuring(
        [&] {
            user = platform::LogOnUser(u"", u"", u"", platform::LogonKind::Network);
            code = platform::LastError();
        },
        {{"LogonUserW", 1326}});
    EXPECT_EQ(user, nullptr);
    EXPECT_EQ(code, 1326u);
}

TEST(Impersonate, IsOneCall)
{
    bool done = false;
    const Calls calls = CallsDuring([&done] { done = platform::Impersonate(fake_user); });
    EXPECT_THAT(calls, ElementsAre("ImpersonateLoggedOnUser(user)"));
    EXPECT_TRUE(done);
    CallsDuring([&done] { done = platform::Impersonate(fake_user); }, {{"ImpersonateLoggedOnUser", 1314}});
    EXPECT_FALSE(done);
}

// 40 is the right to query privileges and to change them.
TEST(ProcessToken, IsOpenedToBeChanged)
{
    platform::ProcessToken token = nullptr;
    const Calls calls = CallsDuring([&token] { token = platform::OpenToken(fake_process); });
    EXPECT_THAT(calls, ElementsAre("OpenProcessToken(process, 40)"));
    EXPECT_EQ(token, fake_token);
    CallsDuring([&token] { token = platform::OpenToken(fake_process); }, {{"OpenProcessToken", 5}});
    EXPECT_EQ(token, nullptr);
}

TEST(ProcessToken, IsThatOfThisProcess)
{
    EXPECT_EQ(platform::CurrentProcess(), reinterpret_cast<void *>(std::intptr_t{-1}));
}

TEST(ProcessToken, IsClosedWithTheLastErrorKept)
{
    std::uint32_t code = 0;
    const Calls calls = CallsDuring([&code] {
        platform::SetLastError(1234);
        platform::CloseToken(fake_token);
        code = platform::LastError();
    });
    EXPECT_THAT(calls, ElementsAre("CloseHandle(token)"));
    EXPECT_EQ(code, 1234u);
}

// One privilege, with the attribute 2, and without a request for the previous state.
TEST(Privilege, IsLookedUpOnASystemAndEnabled)
{
    const Calls calls = CallsDuring([] {
        std::uint64_t id = 0;
        EXPECT_TRUE(platform::LookUpPrivilege(u"host", u"SeBackupPrivilege", id));
        EXPECT_TRUE(platform::EnablePrivilege(fake_token, id));
    });
    EXPECT_THAT(calls, ElementsAre("LookupPrivilegeValueW(\"host\", \"SeBackupPrivilege\")",
                                   "AdjustTokenPrivileges(token, 0, 1, 0x11223344, 0x55667788, 2, 0, null, null)"));
}

TEST(Privilege, OfTheLocalSystemHasAnEmptyName)
{
    std::uint64_t id = 0;
    const Calls calls = CallsDuring([&id] { platform::LookUpPrivilege(u"", u"SeBackupPrivilege", id); });
    EXPECT_THAT(calls, ElementsAre("LookupPrivilegeValueW(\"\", \"SeBackupPrivilege\")"));
}

TEST(Privilege, ReportsFailures)
{
    std::uint64_t id = 0;
    CallsDuring([&id] { EXPECT_FALSE(platform::LookUpPrivilege(u"", u"SeBackupPrivilege", id)); },
                {{"LookupPrivilegeValueW", 1313}});
    CallsDuring([&id] { EXPECT_FALSE(platform::EnablePrivilege(fake_token, id)); }, {{"AdjustTokenPrivileges", 5}});
}

// Only the last error shows that some of them could not be enabled, and nothing reads it.
TEST(Privilege, CountsAsEnabledWhereItIsNotAvailable)
{
    CallsDuring([] {
        platform::SetLastError(1300);
        EXPECT_TRUE(platform::EnablePrivilege(fake_token, 1));
    });
}

TEST(CreateSection, AdmitsAdministrators)
{
    platform::SectionHandle section = nullptr;
    const Calls calls = CallsDuring([&section] { section = platform::CreateSection(u"name", 70000, false); });
    EXPECT_THAT(calls,
                ElementsAre("InitializeSecurityDescriptor(descriptor of 40 bytes, 1)",
                            "AllocateAndInitializeSid(000005, 2, 32, 544, 0, 0, 0, 0, 0, 0)", "IsValidSid(admins)",
                            "GetLengthSid(admins)", "InitializeAcl(acl of 116 bytes, 116, 2)",
                            "AddAccessAllowedAce(acl, 2, 0x10000000, admins)",
                            "SetSecurityDescriptorDacl(descriptor, 1, acl, 0)",
                            "CreateFileMappingW(invalid, {24, descriptor, 0}, 0x4, 0, 70000, \"name\")",
                            "FreeSid(admins)"));
    EXPECT_EQ(section, fake_section);
}

TEST(CreateSection, AdmitsUsersBehindAdministrators)
{
    EXPECT_THAT(
        CallsOfCreation(true),
        ElementsAre("AllocateAndInitializeSid(000005, 2, 32, 545, 0, 0, 0, 0, 0, 0)", "IsValidSid(users)",
                    "InitializeSecurityDescriptor(descriptor of 40 bytes, 1)",
                    "AllocateAndInitializeSid(000005, 2, 32, 544, 0, 0, 0, 0, 0, 0)", "IsValidSid(admins)",
                    "GetLengthSid(admins)", "GetLengthSid(users)", "InitializeAcl(acl of 1124 bytes, 1124, 2)",
                    "AddAccessAllowedAce(acl, 2, 0x10000000, admins)", "AddAccessAllowedAce(acl, 2, 0x10000000, users)",
                    "SetSecurityDescriptorDacl(descriptor, 1, acl, 0)", "FreeSid(users)",
                    "CreateFileMappingW(invalid, {24, descriptor, 0}, 0x4, 0, 70000, \"name\")", "FreeSid(admins)"));
}

TEST(CreateSection, ContinuesWithoutUsersWhenTheirSidCanNotBeCreated)
{
    EXPECT_THAT(CallsOfCreation(true, {{"AllocateAndInitializeSid", failure}}),
                ElementsAre("AllocateAndInitializeSid(000005, 2, 32, 545, 0, 0, 0, 0, 0, 0)",
                            "InitializeSecurityDescriptor(descriptor of 40 bytes, 1)",
                            "AllocateAndInitializeSid(000005, 2, 32, 544, 0, 0, 0, 0, 0, 0)", "IsValidSid(admins)",
                            "GetLengthSid(admins)", "InitializeAcl(acl of 116 bytes, 116, 2)",
                            "AddAccessAllowedAce(acl, 2, 0x10000000, admins)",
                            "SetSecurityDescriptorDacl(descriptor, 1, acl, 0)",
                            "CreateFileMappingW(invalid, {24, descriptor, 0}, 0x4, 0, 70000, \"name\")",
                            "FreeSid(admins)"));
}

TEST(CreateSection, ContinuesWithoutUsersWhenTheirSidIsNotValid)
{
    EXPECT_THAT(CallsOfCreation(true, {{"IsValidSid", failure}}),
                ElementsAre("AllocateAndInitializeSid(000005, 2, 32, 545, 0, 0, 0, 0, 0, 0)", "IsValidSid(users)",
                            "FreeSid(users)", "InitializeSecurityDescriptor(descriptor of 40 bytes, 1)",
                            "AllocateAndInitializeSid(000005, 2, 32, 544, 0, 0, 0, 0, 0, 0)", "IsValidSid(admins)",
                            "GetLengthSid(admins)", "InitializeAcl(acl of 116 bytes, 116, 2)",
                            "AddAccessAllowedAce(acl, 2, 0x10000000, admins)",
                            "SetSecurityDescriptorDacl(descriptor, 1, acl, 0)",
                            "CreateFileMappingW(invalid, {24, descriptor, 0}, 0x4, 0, 70000, \"name\")",
                            "FreeSid(admins)"));
}

TEST(CreateSection, HasNoAttributesWithoutADescriptor)
{
    EXPECT_THAT(CallsOfCreation(false, {{"InitializeSecurityDescriptor", failure}}),
                ElementsAre("InitializeSecurityDescriptor(descriptor of 40 bytes, 1)",
                            "CreateFileMappingW(invalid, null, 0x4, 0, 70000, \"name\")"));
}

TEST(CreateSection, HasNoAttributesWithoutTheAdministratorsSid)
{
    EXPECT_THAT(CallsOfCreation(false, {{"AllocateAndInitializeSid", failure}}),
                ElementsAre("InitializeSecurityDescriptor(descriptor of 40 bytes, 1)",
                            "AllocateAndInitializeSid(000005, 2, 32, 544, 0, 0, 0, 0, 0, 0)",
                            "CreateFileMappingW(invalid, null, 0x4, 0, 70000, \"name\")"));
}

TEST(CreateSection, HasNoAttributesWhenTheAdministratorsSidIsNotValid)
{
    EXPECT_THAT(CallsOfCreation(false, {{"IsValidSid", failure}}),
                ElementsAre("InitializeSecurityDescriptor(descriptor of 40 bytes, 1)",
                            "AllocateAndInitializeSid(000005, 2, 32, 544, 0, 0, 0, 0, 0, 0)", "IsValidSid(admins)",
                            "FreeSid(admins)", "CreateFileMappingW(invalid, null, 0x4, 0, 70000, \"name\")"));
}

TEST(CreateSection, HasNoAttributesWithoutAList)
{
    EXPECT_THAT(CallsOfCreation(false, {{"InitializeAcl", failure}}),
                ElementsAre("InitializeSecurityDescriptor(descriptor of 40 bytes, 1)",
                            "AllocateAndInitializeSid(000005, 2, 32, 544, 0, 0, 0, 0, 0, 0)", "IsValidSid(admins)",
                            "GetLengthSid(admins)", "InitializeAcl(acl of 116 bytes, 116, 2)",
                            "CreateFileMappingW(invalid, null, 0x4, 0, 70000, \"name\")", "FreeSid(admins)"));
}

TEST(CreateSection, HasNoAttributesWithoutTheFirstEntry)
{
    EXPECT_THAT(CallsOfCreation(true, {{"AddAccessAllowedAce", failure}}),
                ElementsAre("AllocateAndInitializeSid(000005, 2, 32, 545, 0, 0, 0, 0, 0, 0)", "IsValidSid(users)",
                            "InitializeSecurityDescriptor(descriptor of 40 bytes, 1)",
                            "AllocateAndInitializeSid(000005, 2, 32, 544, 0, 0, 0, 0, 0, 0)", "IsValidSid(admins)",
                            "GetLengthSid(admins)", "GetLengthSid(users)", "InitializeAcl(acl of 1124 bytes, 1124, 2)",
                            "AddAccessAllowedAce(acl, 2, 0x10000000, admins)", "FreeSid(users)",
                            "CreateFileMappingW(invalid, null, 0x4, 0, 70000, \"name\")", "FreeSid(admins)"));
}

TEST(CreateSection, HasNoAttributesWithoutTheSecondEntry)
{
    EXPECT_THAT(CallsOfCreation(true, {{"AddAccessAllowedAce 2", failure}}),
                ElementsAre("AllocateAndInitializeSid(000005, 2, 32, 545, 0, 0, 0, 0, 0, 0)", "IsValidSid(users)",
                            "InitializeSecurityDescriptor(descriptor of 40 bytes, 1)",
                            "AllocateAndInitializeSid(000005, 2, 32, 544, 0, 0, 0, 0, 0, 0)", "IsValidSid(admins)",
                            "GetLengthSid(admins)", "GetLengthSid(users)", "InitializeAcl(acl of 1124 bytes, 1124, 2)",
                            "AddAccessAllowedAce(acl, 2, 0x10000000, admins)",
                            "AddAccessAllowedAce(acl, 2, 0x10000000, users)", "FreeSid(users)",
                            "CreateFileMappingW(invalid, null, 0x4, 0, 70000, \"name\")", "FreeSid(admins)"));
}

TEST(CreateSection, HasNoAttributesWhenTheListCanNotBeSet)
{
    EXPECT_THAT(CallsOfCreation(false, {{"SetSecurityDescriptorDacl", failure}}),
                ElementsAre("InitializeSecurityDescriptor(descriptor of 40 bytes, 1)",
                            "AllocateAndInitializeSid(000005, 2, 32, 544, 0, 0, 0, 0, 0, 0)", "IsValidSid(admins)",
                            "GetLengthSid(admins)", "InitializeAcl(acl of 116 bytes, 116, 2)",
                            "AddAccessAllowedAce(acl, 2, 0x10000000, admins)",
                            "SetSecurityDescriptorDacl(descriptor, 1, acl, 0)",
                            "CreateFileMappingW(invalid, null, 0x4, 0, 70000, \"name\")", "FreeSid(admins)"));
}

TEST(CreateSection, KeepsItsOwnErrorThroughTheCleanup)
{
    platform::SectionHandle section = fake_section;
    std::uint32_t code = 0;
    CallsDuring(
        [&] {
            section = platform::CreateSection(u"name", 70000, true);
            code = platform::LastError();
        },
        {{"CreateFileMappingW", 112}});
    EXPECT_EQ(section, nullptr);
    EXPECT_EQ(code, 112u);
}

TEST(OpenSection, ReadsAndWrites)
{
    platform::SectionHandle section = nullptr;
    const Calls calls = CallsDuring([&section] { section = platform::OpenSection(u"name", 70000); });
    EXPECT_THAT(calls, ElementsAre("OpenFileMappingW(0x6, 0, \"name\")"));
    EXPECT_EQ(section, fake_section);
}

TEST(OpenSection, ReportsAFailure)
{
    platform::SectionHandle section = fake_section;
    std::uint32_t code = 0;
    CallsDuring(
        [&] {
            section = platform::OpenSection(u"name", 70000);
            code = platform::LastError();
        },
        {{"OpenFileMappingW", 2}});
    EXPECT_EQ(section, nullptr);
    EXPECT_EQ(code, 2u);
}

TEST(MapSection, AsksForAllAccessToACreatedOne)
{
    unsigned char *view = nullptr;
    const Calls calls = CallsDuring([&view] { view = platform::MapCreatedSection(fake_section, 70000); });
    EXPECT_THAT(calls, ElementsAre("MapViewOfFile(section, 0xf001f, 0, 0, 70000)"));
    EXPECT_EQ(view, fake_view);
}

TEST(MapSection, ReadsAndWritesAnOpenedOne)
{
    unsigned char *view = nullptr;
    const Calls calls = CallsDuring([&view] { view = platform::MapOpenedSection(fake_section, 70000); });
    EXPECT_THAT(calls, ElementsAre("MapViewOfFile(section, 0x6, 0, 0, 70000)"));
    EXPECT_EQ(view, fake_view);
}

TEST(MapSection, ReportsAFailure)
{
    unsigned char *created = static_cast<unsigned char *>(fake_view);
    unsigned char *opened = created;
    std::uint32_t code = 0;
    CallsDuring(
        [&] {
            created = platform::MapCreatedSection(fake_section, 70000);
            opened = platform::MapOpenedSection(fake_section, 70000);
            code = platform::LastError();
        },
        {{"MapViewOfFile", 8}, {"MapViewOfFile 2", 5}});
    EXPECT_EQ(created, nullptr);
    EXPECT_EQ(opened, nullptr);
    EXPECT_EQ(code, 5u);
}

TEST(Closers, CloseAndKeepTheLastError)
{
    std::uint32_t code = 0;
    const Calls calls = CallsDuring([&code] {
        platform::SetLastError(1234);
        platform::UnmapSection(static_cast<unsigned char *>(fake_view), 70000);
        platform::CloseSection(fake_section);
        platform::ClosePipe(fake_pipe);
        platform::FreeModule(fake_module);
        platform::RemoveSectionName(u"name");
        code = platform::LastError();
    });
    EXPECT_THAT(calls, ElementsAre("UnmapViewOfFile(view)", "CloseHandle(section)", "CloseHandle(pipe)",
                                   "FreeLibrary(module)"));
    EXPECT_EQ(code, 1234u);
}

TEST(CriticalSection, SpinsAsOftenAsRequested)
{
    const Calls calls = CallsDuring([] {
        platform::CriticalSection section(1024);
        section.lock();
        section.unlock();
    });
    EXPECT_THAT(calls, ElementsAre("InitializeCriticalSectionAndSpinCount(some, 1024)", "EnterCriticalSection(some)",
                                   "LeaveCriticalSection(some)", "DeleteCriticalSection(some)"));
}

TEST(CriticalSection, StaysUnlockedWhereItCouldNotBeInitialised)
{
    const Calls calls = CallsDuring(
        [] {
            platform::CriticalSection section(1024);
            section.lock();
            section.unlock();
        },
        {{"InitializeCriticalSectionAndSpinCount", failure}});
    EXPECT_THAT(calls, ElementsAre("InitializeCriticalSectionAndSpinCount(some, 1024)"));
}

TEST(ReadSystemVersion, AsksForTheLongRecord)
{
    bool known = false;
    std::uint32_t major = 0;
    const Calls calls = CallsDuring([&] { known = platform::ReadSystemVersion(major); });
    EXPECT_THAT(calls, ElementsAre("GetVersionExW(284)"));
    EXPECT_TRUE(known);
    EXPECT_EQ(major, 77u);
}

TEST(ReadSystemVersion, LeavesTheNumberUnchangedOnFailure)
{
    bool known = true;
    std::uint32_t major = 5;
    CallsDuring([&] { known = platform::ReadSystemVersion(major); }, {{"GetVersionExW", failure}});
    EXPECT_FALSE(known);
    EXPECT_EQ(major, 5u);
}

TEST(Now, IsTheSystemsLocalTime)
{
    platform::LocalTime now = {};
    const Calls calls = CallsDuring([&now] { now = platform::Now(); });
    EXPECT_THAT(calls, ElementsAre("GetLocalTime()"));
    EXPECT_EQ(now.year, 2019);
    EXPECT_EQ(now.month, 6);
    EXPECT_EQ(now.day, 19);
    EXPECT_EQ(now.hour, 12);
    EXPECT_EQ(now.minute, 16);
    EXPECT_EQ(now.second, 44);
    EXPECT_EQ(now.millisecond, 120);
}

TEST(CreatePipeServer, ServesOneLocalClientOfThisUser)
{
    platform::PipeServer *server = nullptr;
    const Calls calls =
        WithoutHandles(CallsDuring([&server] { server = platform::CreatePipeServer(u"\\\\.\\pipe\\p"); }));
    // One entry, and its SID is neither group's.
    EXPECT_THAT(calls, ElementsAre("GetLengthSid(some)", "InitializeAcl(acl of 1016 bytes, 1016, 2)",
                                   "AddAccessAllowedAce(acl, 2, 0x10000000, some)",
                                   "InitializeSecurityDescriptor(descriptor, 1)",
                                   "SetSecurityDescriptorDacl(descriptor, 1, acl, 0)",
                                   "CreateNamedPipeW(\"\\\\.\\pipe\\p\", 0x40080003, 0x8, 1, 65536, 65536, 0, "
                                   "{24, descriptor, 0})"));
    EXPECT_NE(server, nullptr);
    CallsDuring([server] { platform::DestroyPipeServer(server); });
}

TEST(StartProcess, BindsTheChildToAJobBeforeItRuns)
{
    platform::Process *process = nullptr;
    const Calls calls =
        WithoutHandles(CallsDuring([&process] { process = platform::StartProcess(u"C:\\k.exe", {u"a b"}, {}); }));
    EXPECT_THAT(calls, ElementsAre("CreateJobObjectW(null, null)", "SetInformationJobObject(job, 9, 0x2400)",
                                   "SetErrorMode(0x8007)",
                                   "CreateProcessW(\"C:\\k.exe\", \"\"C:\\k.exe\" \"a b\"\", null, null, 1, 0x8080204, "
                                   "null, null, 0x100)",
                                   "SetErrorMode(0x4)", "AssignProcessToJobObject(job, process)",
                                   "ResumeThread(thread)", "CloseHandle(thread)"));
    ASSERT_NE(process, nullptr);
    EXPECT_EQ(platform::ProcessId(*process), 1001u);
    EXPECT_THAT(CallsDuring([process] { platform::ReleaseProcess(process); }),
                ElementsAre("CloseHandle(job)", "CloseHandle(process)"));
}

TEST(StartProcess, LeavesTheJobOfThisProcessWhereAChildCanBeInOnlyOne)
{
    platform::Process *process = nullptr;
    const Calls calls = CallsDuring([&process] { process = platform::StartProcess(u"k", {}, u"C:\\d"); },
                                    {{"AssignProcessToJobObject", 5}});
    EXPECT_THAT(
        WithoutHandles(calls),
        ElementsAre("CreateJobObjectW(null, null)", "SetInformationJobObject(job, 9, 0x2400)", "SetErrorMode(0x8007)",
                    "CreateProcessW(\"k\", \"\"k\"\", null, null, 1, 0x8080204, null, \"C:\\d\", 0x100)",
                    "SetErrorMode(0x4)", "AssignProcessToJobObject(job, process)", "TerminateProcess(process, 137)",
                    "CloseHandle(thread)", "CloseHandle(process)", "SetErrorMode(0x8007)",
                    "CreateProcessW(\"k\", \"\"k\"\", null, null, 1, 0x9080204, null, \"C:\\d\", 0x100)",
                    "SetErrorMode(0x4)", "AssignProcessToJobObject(job, process)", "ResumeThread(thread)",
                    "CloseHandle(thread)"));
    ASSERT_NE(process, nullptr);
    CallsDuring([process] { platform::ReleaseProcess(process); });
}

TEST(StartProcess, StartsNothingThatItCanNotBind)
{
    platform::Process *process = nullptr;
    std::uint32_t code = 0;
    const Calls calls = CallsDuring(
        [&] {
            process = platform::StartProcess(u"k", {}, {});
            code = platform::LastError();
        },
        {{"AssignProcessToJobObject", 5}, {"AssignProcessToJobObject 2", 5}});
    EXPECT_EQ(process, nullptr);
    EXPECT_EQ(code, 5u);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "TerminateProcess(process, 137)"), 2);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "ResumeThread(thread)"), 0);
}

TEST(StartProcess, ReportsWhyTheSystemRefused)
{
    platform::Process *process = nullptr;
    std::uint32_t code = 0;
    CallsDuring(
        [&] {
            process = platform::StartProcess(u"k", {}, {});
            code = platform::LastError();
        },
        {{"CreateProcessW", 193}});
    EXPECT_EQ(process, nullptr);
    EXPECT_EQ(code, 193u);
}

class ConsoleEvents : public testing::Test
{
protected:
    ConsoleEvents() : m_before(std::signal(SIGTERM, Count))
    {
        s_signals = 0;
        CallsDuring([] { platform::TakeConsoleEventsAsSignals(130); });
    }
    ~ConsoleEvents() override { std::signal(SIGTERM, m_before); }

    static int s_signals;

private:
    static void Count(int) { ++s_signals; }

    void (*m_before)(int);
};

int ConsoleEvents::s_signals = 0;

TEST_F(ConsoleEvents, EndAProcessThatHandlesNone)
{
    std::signal(SIGTERM, SIG_DFL);
    CallsDuring([] { platform::TakeConsoleEventsAsSignals(130); });
    EXPECT_EXIT(std::raise(SIGTERM), testing::ExitedWithCode(130), "");
}

TEST_F(ConsoleEvents, LeaveCtrlCToTheRuntime)
{
    EXPECT_THAT(CallsDuring([] { EXPECT_FALSE(SendConsoleEvent(0)); }), ElementsAre());
    EXPECT_EQ(s_signals, 0);
}

TEST_F(ConsoleEvents, RaiseSigtermOnCtrlBreak)
{
    EXPECT_THAT(CallsDuring([] { EXPECT_TRUE(SendConsoleEvent(1)); }), ElementsAre());
    EXPECT_EQ(s_signals, 1);
}

TEST_F(ConsoleEvents, RaiseSigtermAndDelayTheSystemWhenTheConsoleCloses)
{
    EXPECT_THAT(CallsDuring([] { SendConsoleEvent(2); }), ElementsAre("Sleep(0xffffffff)"));
    EXPECT_EQ(s_signals, 1);
}

/// The status of reading a hidden line when this is typed, and the line.
std::pair<platform::SecretStatus, WideString> ReadWhenTyped(const WideString &units)
{
    platform::SecretStatus status = platform::SecretStatus::NoTerminal;
    WideString line;
    TypeAtConsole(units);
    CallsDuring([&] { status = platform::ReadHiddenLine("?", line); });
    return {status, line};
}

TEST(ReadHiddenLine, HidesInputOnlyWhileItReads)
{
    TypeAtConsole(u"\r");
    WideString line;
    const Calls calls = CallsDuring([&line] { platform::ReadHiddenLine("Who? ", line); });
    EXPECT_THAT(calls, ElementsAre("CreateFileW(\"CONIN$\", 0xc0000000, 3, null, 3, 0x0, null)",
                                   "CreateFileW(\"CONOUT$\", 0xc0000000, 3, null, 3, 0x0, null)",
                                   "GetConsoleMode(pipe)", "SetConsoleCtrlHandler(some, 1)",
                                   "SetConsoleMode(pipe, 0x0)", "WriteConsoleW(pipe, \"Who? \", 5)",
                                   "WriteConsoleW(pipe, \"\r\n\", 2)", "SetConsoleMode(pipe, 0x1f7)",
                                   "SetConsoleCtrlHandler(some, 0)", "CloseHandle(pipe)", "CloseHandle(pipe)"));
}

TEST(ReadHiddenLine, HandlesWhatIsTyped)
{
    using Read = std::pair<platform::SecretStatus, WideString>;
    const auto read = platform::SecretStatus::Read;
    EXPECT_EQ(ReadWhenTyped(u"pw\r"), (Read{read, u"pw"}));
    EXPECT_EQ(ReadWhenTyped(u"\bpx\bw\n"), (Read{read, u"pw"}));
    EXPECT_EQ(ReadWhenTyped(u"a\xD83C\xDF3E\b\r"), (Read{read, u"a"}));
    EXPECT_EQ(ReadWhenTyped(WideString(1024, u'x') + u"\r"), (Read{read, WideString(1024, u'x')}));
    EXPECT_EQ(ReadWhenTyped(WideString(1025, u'x') + u"\r").first, platform::SecretStatus::TooLong);
    EXPECT_EQ(ReadWhenTyped(u"p\x03").first, platform::SecretStatus::Interrupted);
    EXPECT_EQ(ReadWhenTyped(u"p").first, platform::SecretStatus::Nothing);
}

TEST(ReadHiddenLine, RestoresTheConsoleWhenTheProcessEndsMeanwhile)
{
    TypeAtConsole(u"\r");
    WideString line;
    CallsDuring([&line] { platform::ReadHiddenLine("?", line); });
    EXPECT_THAT(CallsDuring([] { EXPECT_FALSE(SendConsoleEvent(1)); }), ElementsAre("SetConsoleMode(pipe, 0x1f7)"));
}

TEST(ReadHiddenLine, NeedsAConsole)
{
    for (const char *call : {"CreateFileW", "CreateFileW 2", "GetConsoleMode", "SetConsoleMode"}) {
        WideString line;
        platform::SecretStatus status = platform::SecretStatus::Read;
        CallsDuring([&] { status = platform::ReadHiddenLine("?", line); }, {{call, 2}});
        EXPECT_EQ(status, platform::SecretStatus::NoTerminal) << call;
    }
}

} // namespace kessil::test
