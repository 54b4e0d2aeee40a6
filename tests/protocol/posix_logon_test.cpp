#include "protocol/conversation.h"
#include "support/accounts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <optional>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace kessil::test {
namespace {

Bytes Logon(const WideString &user, const WideString &password, std::uint32_t flag = 1)
{
    return LogonFrame(user, u"", password, flag);
}

/// What becomes of ada's logon: an ordinary user can't act as another.
Bytes Outcome()
{
    return MayActAsOthers() ? SuccessFrame() : FailureFrame(u"Operation not permitted (ImpersonateLoggedOnUser)");
}

std::string Numbers(const ActingAs &who)
{
    std::string numbers = std::to_string(who.user) + " " + std::to_string(who.group);
    for (const gid_t group : who.groups)
        numbers.append(" ").append(std::to_string(group));
    return numbers;
}

/// As whom a function of a library runs, as Numbers writes it.
std::string RunsAs(Conversation &talk, Section &section)
{
    std::istringstream numbers(platform::ToUtf8(Report(talk, section, 1)));
    ActingAs who = {};
    numbers >> who.user >> who.group;
    for (gid_t group = 0; numbers >> group;) {
        if (group != who.group)
            who.groups.push_back(group);
    }
    std::sort(who.groups.begin(), who.groups.end());
    return Numbers(who);
}

/// Whether a process holds these bytes anywhere in the memory that it can write to, its stack left out: the dynamic
/// linker saves registers there, with whatever was copied last, when a function is called for the first time.
bool Holds(const platform::Process &process, const Bytes &bytes)
{
    constexpr std::uint64_t largest = 256U << 20; // a sanitizer's tables are larger
    const std::string directory = "/proc/" + std::to_string(platform::ProcessId(process));
    std::ifstream maps(directory + "/maps");
    std::ifstream memory(directory + "/mem", std::ios::binary);
    EXPECT_TRUE(maps && memory);
    // A sanitizer's process has a lot of memory, and a string's search takes far less time than that of a vector.
    const std::string wanted(bytes.begin(), bytes.end());
    bool held = false;
    for (std::string line; std::getline(maps, line);) {
        std::uint64_t begin = 0;
        std::uint64_t end = 0;
        char dash = 0;
        std::string access;
        std::istringstream(line) >> std::hex >> begin >> dash >> end >> access;
        if (access.substr(0, 2) != "rw" || end - begin > largest || line.ends_with("[stack]"))
            continue;
        std::string block(end - begin, '\0');
        memory.clear();
        memory.seekg(static_cast<std::streamoff>(begin));
        memory.read(block.data(), static_cast<std::streamsize>(block.size()));
        held |= block.find(wanted) != std::string::npos;
    }
    return held;
}

// For every test of this program, those of logon_test.cpp too.
class AccountsOfTheProgram : public ::testing::Environment
{
    void SetUp() override { m_accounts.emplace(); }
    void TearDown() override { m_accounts.reset(); }

    std::optional<Accounts> m_accounts;
};

[[maybe_unused]] const auto *const accounts = ::testing::AddGlobalTestEnvironment(new AccountsOfTheProgram);

class HelperLogon : public ::testing::Test
{
protected:
    const std::string before = Numbers(Now());
};

} // namespace

TEST_F(HelperLogon, MakesLibrariesRunAsTheUser)
{
    Conversation talk(0);
    Section section = Announce(talk, report_size);
    talk.Load(TargetLibrary("reports_process"));
    EXPECT_EQ(RunsAs(talk, section), before);
    talk.Send(Logon(u"ada", u"open sesame"));
    talk.Expect(Outcome());
    EXPECT_EQ(RunsAs(talk, section), MayActAsOthers() ? Numbers(ada) : before);
    talk.Send(Logon(u"self", u"it's me"));
    talk.Expect(SuccessFrame());
    EXPECT_EQ(RunsAs(talk, section), before);
    talk.Send(OrderlyStop());
    talk.End();

    const std::string closing = "LibraryCaller debug: Closing handle hToken #\n";
    const std::string three = "kessil debug: Working with Auth\n" + closing + closing + closing;
    const std::string log = talk.Helper().PlainLog();
    EXPECT_NE(log.find(three), std::string::npos) << log;
    EXPECT_EQ(log.find("sesame"), std::string::npos);
}

TEST_F(HelperLogon, RefusedLeavesEverythingAsItWas)
{
    Conversation talk(0);
    Section section = Announce(talk, report_size);
    talk.Load(TargetLibrary("reports_process"));
    for (const char16_t *const user : {u"ada", u"barred", u"eve"}) {
        talk.Send(Logon(user, u"wrong"));
        talk.Expect(FailureFrame(u"Permission denied (LogonUser)"));
        EXPECT_EQ(RunsAs(talk, section), before);
    }
    talk.Send(Logon(u"self", u"it's me"));
    talk.Expect(SuccessFrame());
    talk.Send(OrderlyStop());
}

TEST_F(HelperLogon, SucceedsWherePrivilegesCanNotBeLookedUp)
{
    Conversation talk(0);
    talk.Send(Frame('A', Wide(u"self") + Wide(u"") + Wide(u"it's me") + Wide(u"no-such-system") + Be32(1)));
    talk.Expect(SuccessFrame());
    talk.Send(OrderlyStop());
    talk.End();
    const std::string closing = "LibraryCaller error: Closing handle hToken #\n";
    EXPECT_NE(talk.Helper().PlainLog().find("kessil debug: Working with Auth\n" + closing + closing + closing),
              std::string::npos);
}

TEST_F(HelperLogon, CredentialsAloneKeepTheIdentity)
{
    Conversation talk(0);
    Section section = Announce(talk, report_size);
    talk.Load(TargetLibrary("reports_process"));
    talk.Send(Logon(u"ada", u"whatever", 0));
    talk.Expect(SuccessFrame());
    EXPECT_EQ(RunsAs(talk, section), before);
    talk.Send(OrderlyStop());
}

// The parent doesn't act as ada, and ada may not open what is only the parent's.
TEST_F(HelperLogon, LeavesSectionsToTheParentsUser)
{
    Conversation talk(0);
    talk.Send(Logon(u"ada", u"open sesame"));
    talk.Expect(Outcome());
    const Section small = Announce(talk, 4);
    talk.Load(TargetLibrary("vorn_recorder"));
    talk.Send(CallFrame(u"", "VornCreateSession", "SIGNATURE_VornCreateSession"));
    const WideString name = talk.SectionName(u'0');
    talk.Expect(ResizeFrame(name, 8));
    struct stat status = {};
    EXPECT_EQ(stat(("/dev/shm/" + platform::ToUtf8(name)).c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, geteuid());
    const Section grown = Section::Open(name, 8);
    talk.Send(SuccessFrame());
    talk.Expect(SuccessFrame());
    grown.Expect(0, Be64(0));
    // A search for leaks at the end of the run needs the rights that it began with.
    talk.Send(Logon(u"self", u"it's me"));
    talk.Expect(SuccessFrame());
    talk.Send(OrderlyStop());
}

TEST_F(HelperLogon, LeavesNoPasswordInMemory)
{
    // Outside ASCII too, where the text grows on its way to PAM.
    const WideString password = u"korrektes Pf\u00E4rd \u00FCber der Batterie-Gr\u00F6\u00DFe \u20AC";
    const std::string narrow = platform::ToUtf8(password);
    for (const std::uint32_t flag : {0u, 1u}) {
        Conversation talk(0);
        talk.Send(Logon(u"careful", password, flag));
        talk.Expect(flag == 0 ? SuccessFrame() : FailureFrame(u"Permission denied (LogonUser)"));
        talk.Send(PathFrame(u"/a/directory/that/is/found/again"));
        talk.Expect(SuccessFrame());
        EXPECT_TRUE(Holds(talk.Helper().Process(), Plain("/a/directory/that/is/found/again:")));
        for (std::size_t at = 0; at + 8 <= password.size(); at += 8)
            EXPECT_FALSE(Holds(talk.Helper().Process(), First(16, Wide(password.substr(at, 8))))) << at;
        for (std::size_t at = 0; at + 8 <= narrow.size(); at += 8)
            EXPECT_FALSE(Holds(talk.Helper().Process(), Plain(narrow.substr(at, 8)))) << at;
        talk.Send(OrderlyStop());
    }
}

} // namespace kessil::test
