#include "posix_calls.h"

#include "child.h"
#include "platform/last_error.h"
#include "platform/module.h"
#include "platform/pipe.h"
#include "platform/section.h"
#include "support/set_variable.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <poll.h>

namespace kessil::test {

using testing::ElementsAre;

namespace {

void *FakeHandle()
{
    return reinterpret_cast<void *>(std::intptr_t{fake_descriptor});
}

Calls CallsOfCreation(bool admit_users, const Failures &failures = {})
{
    return CallsDuring([admit_users] { platform::CreateSection(u"name", 70000, admit_users); }, failures);
}

/// The calls of a failed creation of a section. The error must survive the calls after it.
Calls CallsOfFailedCreation(const std::string &function, int error)
{
    platform::SectionHandle section = FakeHandle();
    std::uint32_t code = 0;
    Calls calls = CallsDuring(
        [&] {
            section = platform::CreateSection(u"name", 70000, false);
            code = platform::LastError();
        },
        {{function, static_cast<std::uint32_t>(error)}});
    EXPECT_EQ(section, nullptr);
    EXPECT_EQ(code, static_cast<std::uint32_t>(error));
    return calls;
}

platform::PipeHandle Connect(std::uint32_t wait, const Failures &failures, Calls &calls, std::uint32_t &code)
{
    platform::PipeHandle pipe = nullptr;
    calls = CallsDuring(
        [&] {
            pipe = platform::ConnectPipe(u"/run/p", wait);
            code = platform::LastError();
        },
        failures);
    return pipe;
}

} // namespace

TEST(CreateSection, IsForItsOwnerAndReserved)
{
    platform::SectionHandle section = nullptr;
    const Calls calls = CallsDuring([&section] { section = platform::CreateSection(u"name", 70000, false); });
    // Read and write, create, exclusively, close on exec.
    EXPECT_THAT(calls, ElementsAre("shm_open(\"/name\", 0x800c2, 0x180)", "fchmod(77, 0x180)",
                                   "posix_fallocate(77, 0, 70000)"));
    EXPECT_EQ(section, FakeHandle());
}

TEST(CreateSection, AdmitsTheGroupOfUsers)
{
    EXPECT_THAT(CallsOfCreation(true),
                ElementsAre("shm_open(\"/name\", 0x800c2, 0x180)", "fchmod(77, 0x180)", "getgrnam(\"users\")",
                            "fchown(77, -1, 100)", "fchmod(77, 0x1b0)", "posix_fallocate(77, 0, 70000)"));
}

TEST(CreateSection, ContinuesWithoutTheGroupWhereThereIsNone)
{
    has_users_group = false;
    EXPECT_THAT(CallsOfCreation(true), ElementsAre("shm_open(\"/name\", 0x800c2, 0x180)", "fchmod(77, 0x180)",
                                                   "getgrnam(\"users\")", "posix_fallocate(77, 0, 70000)"));
    has_users_group = true;
}

TEST(CreateSection, ContinuesWithoutTheGroupWhereItMayNotBeSet)
{
    EXPECT_THAT(CallsOfCreation(true, {{"fchown", EPERM}}),
                ElementsAre("shm_open(\"/name\", 0x800c2, 0x180)", "fchmod(77, 0x180)", "getgrnam(\"users\")",
                            "fchown(77, -1, 100)", "posix_fallocate(77, 0, 70000)"));
}

TEST(CreateSection, ReplacesSeparatorsInItsName)
{
    const Calls calls = CallsDuring([] { platform::CreateSection(u"Local\\a/b", 1, false); });
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(calls[0], "shm_open(\"/Local_a_b\", 0x800c2, 0x180)");
}

TEST(CreateSection, LeavesANameInUseAlone)
{
    EXPECT_THAT(CallsOfFailedCreation("shm_open", EEXIST), ElementsAre("shm_open(\"/name\", 0x800c2, 0x180)"));
}

TEST(CreateSection, RemovesTheObjectWhereItsModeCanNotBeSet)
{
    EXPECT_THAT(
        CallsOfFailedCreation("fchmod", EPERM),
        ElementsAre("shm_open(\"/name\", 0x800c2, 0x180)", "fchmod(77, 0x180)", "shm_unlink(\"/name\")", "close(77)"));
}

TEST(CreateSection, RemovesTheObjectWhereThereIsNoMemory)
{
    EXPECT_THAT(CallsOfFailedCreation("posix_fallocate", ENOSPC),
                ElementsAre("shm_open(\"/name\", 0x800c2, 0x180)", "fchmod(77, 0x180)", "posix_fallocate(77, 0, 70000)",
                            "shm_unlink(\"/name\")", "close(77)"));
}

TEST(CreateSection, ReservesAgainAfterASignal)
{
    EXPECT_THAT(CallsOfCreation(false, {{"posix_fallocate", EINTR}}),
                ElementsAre("shm_open(\"/name\", 0x800c2, 0x180)", "fchmod(77, 0x180)", "posix_fallocate(77, 0, 70000)",
                            "posix_fallocate(77, 0, 70000)"));
}

TEST(OpenSection, ReadsAndWrites)
{
    fake_section_size = 70000;
    platform::SectionHandle section = nullptr;
    const Calls calls = CallsDuring([&section] { section = platform::OpenSection(u"name", 70000); });
    EXPECT_THAT(calls, ElementsAre("shm_open(\"/name\", 0x80002, 0x0)", "fstat(77)"));
    EXPECT_EQ(section, FakeHandle());
}

TEST(OpenSection, RefusesAnObjectThatIsSmallerThanAnnounced)
{
    fake_section_size = 69999;
    platform::SectionHandle section = FakeHandle();
    std::uint32_t code = 0;
    const Calls calls = CallsDuring([&] {
        section = platform::OpenSection(u"name", 70000);
        code = platform::LastError();
    });
    EXPECT_THAT(calls, ElementsAre("shm_open(\"/name\", 0x80002, 0x0)", "fstat(77)", "close(77)"));
    EXPECT_EQ(section, nullptr);
    EXPECT_EQ(code, std::uint32_t{EINVAL});
}

TEST(MapSection, SharesWhatItReadsAndWrites)
{
    unsigned char *created = nullptr;
    unsigned char *opened = nullptr;
    const Calls calls = CallsDuring([&] {
        created = platform::MapCreatedSection(FakeHandle(), 70000);
        opened = platform::MapOpenedSection(FakeHandle(), 70000);
    });
    EXPECT_THAT(calls, ElementsAre("mmap(null, 70000, 0x3, 0x1, 77, 0)", "mmap(null, 70000, 0x3, 0x1, 77, 0)"));
    EXPECT_EQ(created, fake_view);
    EXPECT_EQ(opened, fake_view);
}

TEST(MapSection, ReportsAFailure)
{
    unsigned char *view = fake_view;
    std::uint32_t code = 0;
    CallsDuring(
        [&] {
            view = platform::MapOpenedSection(FakeHandle(), 70000);
            code = platform::LastError();
        },
        {{"mmap", ENOMEM}});
    EXPECT_EQ(view, nullptr);
    EXPECT_EQ(code, std::uint32_t{ENOMEM});
}

TEST(Closers, CloseAndKeepTheLastError)
{
    std::uint32_t code = 0;
    const Calls calls = CallsDuring([&code] {
        platform::SetLastError(1234);
        platform::UnmapSection(fake_view, 70000);
        platform::CloseSection(FakeHandle());
        platform::ClosePipe(FakeHandle());
        platform::RemoveSectionName(u"na/me");
        code = platform::LastError();
    });
    EXPECT_THAT(calls, ElementsAre("munmap(70000)", "close(77)", "close(77)", "shm_unlink(\"/na_me\")"));
    EXPECT_EQ(code, 1234u);
}

TEST(ConnectPipe, ConnectsAStreamThatBlocksAfterwards)
{
    Calls calls;
    std::uint32_t code = 0;
    EXPECT_EQ(Connect(30000, {}, calls, code), FakeHandle());
    // The type is a stream, not blocking, close on exec; the last call clears the second of these.
    EXPECT_THAT(calls, ElementsAre("socket(1, 0x80801, 0)", "connect(77, \"/run/p\")", "fcntl(77, \"F_GETFL\")",
                                   "fcntl(77, 4, 2)"));
}

TEST(ConnectPipe, RetriesWhereThePipeMayStillAppear)
{
    for (const int error : {ENOENT, ECONNREFUSED, EAGAIN}) {
        Calls calls;
        std::uint32_t code = 0;
        EXPECT_EQ(Connect(30000, {{"connect", static_cast<std::uint32_t>(error)}}, calls, code), FakeHandle());
        EXPECT_EQ(std::count(calls.begin(), calls.end(), "connect(77, \"/run/p\")"), 2) << error;
        EXPECT_EQ(std::count(calls.begin(), calls.end(), "close(77)"), 1) << error;
    }
}

TEST(ConnectPipe, FailsAtOnceOnAnythingElse)
{
    for (const int error : {EACCES, EPERM, ENOTDIR, EPROTOTYPE}) {
        Calls calls;
        std::uint32_t code = 0;
        EXPECT_EQ(Connect(30000, {{"connect", static_cast<std::uint32_t>(error)}}, calls, code),
                  platform::invalid_pipe);
        EXPECT_THAT(calls, ElementsAre("socket(1, 0x80801, 0)", "connect(77, \"/run/p\")", "close(77)"));
        EXPECT_EQ(code, static_cast<std::uint32_t>(error));
    }
}

TEST(ConnectPipe, TriesOnceWhereItMayNotWait)
{
    Calls calls;
    std::uint32_t code = 0;
    EXPECT_EQ(Connect(0, {{"connect", ENOENT}}, calls, code), platform::invalid_pipe);
    EXPECT_THAT(calls, ElementsAre("socket(1, 0x80801, 0)", "connect(77, \"/run/p\")", "close(77)"));
    EXPECT_EQ(code, std::uint32_t{ENOENT});
}

TEST(ConnectPipe, AcceptsPathsOf107Bytes)
{
    const WideString longest = u"/" + WideString(106, u'x');
    const Calls calls = CallsDuring([&longest] { platform::ConnectPipe(longest, 0); });
    EXPECT_THAT(calls, testing::Contains("connect(77, \"" + platform::ToUtf8(longest) + "\")"));
}

TEST(ConnectPipe, NeverTruncatesALongerPath)
{
    platform::PipeHandle pipe = nullptr;
    std::uint32_t code = 0;
    const Calls calls = CallsDuring([&] {
        pipe = platform::ConnectPipe(u"/" + WideString(107, u'x'), 0);
        code = platform::LastError();
    });
    EXPECT_THAT(calls, ElementsAre());
    EXPECT_EQ(pipe, platform::invalid_pipe);
    EXPECT_EQ(code, std::uint32_t{ENAMETOOLONG});
}

TEST(ReadPipe, IsOneCall)
{
    char buffer[16];
    bool done = false;
    std::uint32_t count = 0;
    const Calls calls = CallsDuring([&] { done = platform::ReadPipe(FakeHandle(), buffer, 16, count); });
    EXPECT_THAT(calls, ElementsAre("read(77, 16)"));
    EXPECT_TRUE(done);
    EXPECT_EQ(count, 3u);
}

TEST(ReadPipe, ReadsAgainAfterASignal)
{
    char buffer[16];
    bool done = false;
    std::uint32_t count = 0;
    const Calls calls =
        CallsDuring([&] { done = platform::ReadPipe(FakeHandle(), buffer, 16, count); }, {{"read", EINTR}});
    EXPECT_THAT(calls, ElementsAre("read(77, 16)", "read(77, 16)"));
    EXPECT_TRUE(done);
}

TEST(ReadPipe, DistinguishesAnEndedStreamFromAnEndThatIsGone)
{
    char buffer[16];
    bool held = false;
    bool gone = true;
    std::uint32_t count = 99;
    std::uint32_t code = 0;
    bytes_per_call = 0;
    const Calls calls = CallsDuring([&] {
        fake_poll_events = POLLIN | POLLRDHUP;
        held = platform::ReadPipe(FakeHandle(), buffer, 16, count);
        fake_poll_events = POLLIN | POLLHUP;
        gone = platform::ReadPipe(FakeHandle(), buffer, 16, count);
        code = platform::LastError();
    });
    bytes_per_call = 3;
    EXPECT_THAT(calls, ElementsAre("read(77, 16)", "poll(77, 1, 0)", "read(77, 16)", "poll(77, 1, 0)"));
    EXPECT_TRUE(held);
    EXPECT_FALSE(gone);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(code, std::uint32_t{EPIPE});
}

TEST(ReadPipe, ReportsAnyOtherFailure)
{
    char buffer[16];
    bool done = true;
    std::uint32_t count = 0;
    std::uint32_t code = 0;
    CallsDuring(
        [&] {
            done = platform::ReadPipe(FakeHandle(), buffer, 16, count);
            code = platform::LastError();
        },
        {{"read", ECONNRESET}});
    EXPECT_FALSE(done);
    EXPECT_EQ(code, std::uint32_t{ECONNRESET});
}

TEST(WritePipe, RaisesNoSignal)
{
    bool done = false;
    std::uint32_t count = 0;
    const Calls calls = CallsDuring([&] { done = platform::WritePipe(FakeHandle(), "abc", 3, count); });
    EXPECT_THAT(calls, ElementsAre("send(77, 3, 0x4000)"));
    EXPECT_TRUE(done);
    EXPECT_EQ(count, 3u);
}

TEST(WritePipe, WritesAgainAfterASignal)
{
    bool done = false;
    std::uint32_t count = 0;
    const Calls calls =
        CallsDuring([&] { done = platform::WritePipe(FakeHandle(), "abc", 3, count); }, {{"send", EINTR}});
    EXPECT_THAT(calls, ElementsAre("send(77, 3, 0x4000)", "send(77, 3, 0x4000)"));
    EXPECT_TRUE(done);
}

TEST(LoadModule, SearchesThePathForABareName)
{
    const TemporaryDirectory directory;
    std::filesystem::create_symlink(platform::ToUtf8(TargetLibrary("plain")), directory.Path() / "kessil_bare.so");
    const std::string path = std::getenv("PATH");

    EXPECT_EQ(platform::LoadModule(u"kessil_bare.so"), nullptr);
    SetVariable("PATH", path + ":" + directory.Path().string());
    const platform::ModuleHandle module = platform::LoadModule(u"kessil_bare.so");
    SetVariable("PATH", path);

    ASSERT_NE(module, nullptr);
    EXPECT_NE(platform::FindExport(module, "Answer"), nullptr);
    platform::FreeModule(module);
}

TEST(LoadModule, IgnoresAnEmptyPartOfThePath)
{
    const TemporaryDirectory directory;
    std::filesystem::create_symlink(platform::ToUtf8(TargetLibrary("plain")), directory.Path() / "kessil_bare.so");
    const std::string path = std::getenv("PATH");
    const std::filesystem::path before = std::filesystem::current_path();

    std::filesystem::current_path(directory.Path());
    SetVariable("PATH", ":" + path + "::");
    const platform::ModuleHandle module = platform::LoadModule(u"kessil_bare.so");
    SetVariable("PATH", path);
    std::filesystem::current_path(before);

    EXPECT_EQ(module, nullptr);
}

} // namespace kessil::test
