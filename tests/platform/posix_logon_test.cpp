#include "platform/logon.h"

#include "platform/last_error.h"
#include "platform/section.h"
#include "support/accounts.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <linux/capability.h>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/utsname.h>
#include <thread>
#include <unistd.h>

namespace kessil::test {

using platform::LogonKind;
using platform::UserToken;

namespace {

// A thread that takes another's identity keeps it, and so each test does that on one of its own.
void OnAThread(const std::function<void()> &work)
{
    std::thread(work).join();
}

std::uint64_t EffectiveCapabilities()
{
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[_LINUX_CAPABILITY_U32S_3] = {};
    EXPECT_EQ(syscall(SYS_capget, &header, data), 0);
    return data[0].effective | (std::uint64_t{data[1].effective} << 32);
}

bool Enable(const WideString &privilege)
{
    std::uint64_t id = 0;
    return platform::LookUpPrivilege(u"", privilege, id) &&
           platform::EnablePrivilege(platform::OpenToken(platform::CurrentProcess()), id);
}

/// A file of whoever runs the tests, for nobody else to read or write.
class PrivateFile
{
public:
    PrivateFile() : m_path("/tmp/kessil-private-" + std::to_string(getpid()))
    {
        close(open(m_path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600));
    }
    ~PrivateFile() { unlink(m_path.c_str()); }
    PrivateFile(const PrivateFile &) = delete;
    PrivateFile &operator=(const PrivateFile &) = delete;

    bool Opens(int mode) const
    {
        const int descriptor = open(m_path.c_str(), mode | O_CLOEXEC);
        if (descriptor >= 0)
            close(descriptor);
        return descriptor >= 0;
    }
    bool ChangesOwner() const { return chown(m_path.c_str(), geteuid(), static_cast<gid_t>(-1)) == 0; }

private:
    std::string m_path;
};

class PosixLogon : public ::testing::Test
{
protected:
    static UserToken LogOn(const WideString &user, const WideString &password, const WideString &domain = {},
                           LogonKind kind = LogonKind::Network)
    {
        platform::SetLastError(0);
        return platform::LogOnUser(user, domain, password, kind);
    }

    // The same for whoever is to be admitted.
    static UserToken Admit(const WideString &user, const WideString &password, const WideString &domain = {})
    {
        const UserToken token = LogOn(user, password, domain);
        if (token == nullptr)
            throw std::runtime_error("not admitted, error " + std::to_string(platform::LastError()));
        return token;
    }

    static void ExpectRefused(const WideString &user, const WideString &password, const WideString &domain = {})
    {
        for (const LogonKind kind : {LogonKind::Interactive, LogonKind::Network}) {
            EXPECT_EQ(LogOn(user, password, domain, kind), nullptr) << platform::ToUtf8(user);
            EXPECT_EQ(platform::LastError(), static_cast<std::uint32_t>(EACCES));
        }
    }

    const Accounts accounts;
    const ActingAs before = Now();
};

} // namespace

TEST_F(PosixLogon, RightPasswordIsTaken)
{
    EXPECT_NE(LogOn(u"ada", u"open sesame", {}, LogonKind::Interactive), nullptr);
    EXPECT_NE(LogOn(u"ada", u"open sesame", {}, LogonKind::Network), nullptr);
    EXPECT_EQ(Now(), before) << "nobody is impersonated yet";
}

// Whether it is the user or the password that is wrong is nobody's business.
TEST_F(PosixLogon, EveryRefusalIsTheSame)
{
    ExpectRefused(u"ada", u"open barley");
    ExpectRefused(u"ada", u"");
    ExpectRefused(u"eve", u"open sesame");
    ExpectRefused(u"", u"");
    ExpectRefused(u"barred", u"barred");
}

TEST_F(PosixLogon, DomainIsPartOfTheName)
{
    EXPECT_NE(LogOn(u"ada", u"corporate", u"CORP"), nullptr);
    ExpectRefused(u"ada", u"open sesame", u"CORP");
    ExpectRefused(u"ada", u"corporate");
}

TEST_F(PosixLogon, DotIsTheLocalDomain)
{
    EXPECT_NE(LogOn(u"ada", u"open sesame", u"."), nullptr);
}

TEST_F(PosixLogon, UserWithoutAnAccountOfTheSystemIsNotFound)
{
    EXPECT_EQ(LogOn(u"nobody2", u"none"), nullptr);
    EXPECT_EQ(platform::LastError(), static_cast<std::uint32_t>(ENOENT));
}

TEST_F(PosixLogon, CredentialsAloneAreNotChecked)
{
    EXPECT_NE(LogOn(u"eve", u"whatever", u"anywhere", LogonKind::CredentialsOnly), nullptr);
}

TEST_F(PosixLogon, CredentialsAloneKeepTheIdentity)
{
    const UserToken user = LogOn(u"ada", u"whatever", {}, LogonKind::CredentialsOnly);
    OnAThread([&] {
        EXPECT_TRUE(platform::Impersonate(user));
        EXPECT_EQ(Now(), before);
    });
}

TEST_F(PosixLogon, ImpersonationIsTheCallingThreadsAlone)
{
    const UserToken user = Admit(u"ada", u"open sesame");
    const uid_t real_user = getuid();
    OnAThread([&] {
        EXPECT_EQ(platform::Impersonate(user), MayActAsOthers());
        EXPECT_EQ(Now(), MayActAsOthers() ? ada : before);
        if (!MayActAsOthers()) {
            EXPECT_EQ(platform::LastError(), static_cast<std::uint32_t>(EPERM));
        }
        EXPECT_EQ(getuid(), real_user);
    });
    EXPECT_EQ(Now(), before);
}

TEST_F(PosixLogon, OwnUserCanAlwaysBeImpersonated)
{
    const UserToken user = Admit(u"self", u"it's me");
    OnAThread([&] {
        EXPECT_TRUE(platform::Impersonate(user));
        EXPECT_EQ(Now(), before);
    });
}

TEST_F(PosixLogon, OneImpersonationTakesThePlaceOfAnother)
{
    const UserToken first = Admit(u"ada", u"open sesame");
    const UserToken second = Admit(u"ada", u"corporate", u"CORP");
    const UserToken self = Admit(u"self", u"it's me");
    OnAThread([&] {
        EXPECT_EQ(platform::Impersonate(first), MayActAsOthers());
        EXPECT_EQ(platform::Impersonate(second), MayActAsOthers());
        EXPECT_EQ(Now(), MayActAsOthers() ? corporate_ada : before);
        EXPECT_TRUE(platform::Impersonate(self));
        EXPECT_EQ(Now(), before);
    });
}

TEST_F(PosixLogon, FailedImpersonationChangesNothing)
{
    const UserToken user = Admit(u"ada", u"open sesame");
    const UserToken broken = Admit(u"broken", u"broken");
    OnAThread([&] {
        EXPECT_EQ(platform::Impersonate(user), MayActAsOthers());
        EXPECT_TRUE(Enable(u"SeBackupPrivilege"));
        const ActingAs acting = Now();
        const std::uint64_t capabilities = EffectiveCapabilities();
        EXPECT_FALSE(platform::Impersonate(broken));
        EXPECT_NE(platform::LastError(), 0u);
        EXPECT_EQ(Now(), acting);
        EXPECT_EQ(EffectiveCapabilities(), capabilities);
    });
}

// The system forgets it at a change of identity, and a helper would outlive its parent.
TEST_F(PosixLogon, EndWithTheParentOutlivesAnImpersonation)
{
    const UserToken user = Admit(u"ada", u"open sesame");
    OnAThread([&] {
        ASSERT_EQ(prctl(PR_SET_PDEATHSIG, SIGWINCH), 0);
        EXPECT_EQ(platform::Impersonate(user), MayActAsOthers());
        int signal = 0;
        EXPECT_EQ(prctl(PR_GET_PDEATHSIG, &signal), 0);
        EXPECT_EQ(signal, SIGWINCH);
    });
}

TEST_F(PosixLogon, PrivilegesGiveTheirPowerBack)
{
    const PrivateFile file;
    const UserToken user = Admit(u"ada", u"open sesame");
    OnAThread([&] {
        if (!platform::Impersonate(user)) {
            // Without the capabilities nothing changes, and that is no failure.
            const std::uint64_t capabilities = EffectiveCapabilities();
            EXPECT_TRUE(Enable(u"SeBackupPrivilege") && Enable(u"SeRestorePrivilege") &&
                        Enable(u"SeSecurityPrivilege"));
            EXPECT_EQ(EffectiveCapabilities(), capabilities);
            return;
        }
        EXPECT_FALSE(file.Opens(O_RDONLY));
        EXPECT_TRUE(Enable(u"SeBackupPrivilege"));
        EXPECT_TRUE(file.Opens(O_RDONLY));
        EXPECT_FALSE(file.Opens(O_WRONLY));
        EXPECT_FALSE(file.ChangesOwner());
        EXPECT_TRUE(Enable(u"SeRestorePrivilege"));
        EXPECT_TRUE(file.Opens(O_WRONLY));
        EXPECT_TRUE(file.ChangesOwner());
        EXPECT_TRUE(Enable(u"SeSecurityPrivilege"));
        EXPECT_EQ(Now(), ada);
    });
}

TEST_F(PosixLogon, SecurityPrivilegeRaisesWhatIsPermittedOfItsCapabilities)
{
    const UserToken user = Admit(u"ada", u"open sesame");
    constexpr std::uint64_t audit = (std::uint64_t{1} << CAP_AUDIT_CONTROL) | (std::uint64_t{1} << CAP_AUDIT_READ);
    const std::uint64_t permitted = EffectiveCapabilities() & audit;
    OnAThread([&] {
        const std::uint64_t had = platform::Impersonate(user) ? 0 : permitted;
        EXPECT_EQ(EffectiveCapabilities() & audit, had);
        EXPECT_TRUE(Enable(u"SeSecurityPrivilege"));
        EXPECT_EQ(EffectiveCapabilities() & audit, permitted);
    });
}

TEST_F(PosixLogon, PrivilegesEndWithTheNextImpersonation)
{
    const PrivateFile file;
    const UserToken first = Admit(u"ada", u"open sesame");
    const UserToken second = Admit(u"ada", u"corporate", u"CORP");
    OnAThread([&] {
        platform::Impersonate(first);
        EXPECT_TRUE(Enable(u"SeBackupPrivilege"));
        platform::Impersonate(second);
        EXPECT_EQ(file.Opens(O_RDONLY), !MayActAsOthers());
    });
}

TEST_F(PosixLogon, PrivilegesAreLookedUpOnThisSystemOnly)
{
    utsname system = {};
    ASSERT_EQ(uname(&system), 0);
    std::uint64_t id = 0;
    EXPECT_TRUE(platform::LookUpPrivilege(platform::FromUtf8(system.nodename), u"SeBackupPrivilege", id));
    EXPECT_NE(id, 0u);
    EXPECT_FALSE(platform::LookUpPrivilege(u"another", u"SeBackupPrivilege", id));
    EXPECT_EQ(platform::LastError(), static_cast<std::uint32_t>(EHOSTUNREACH));
    EXPECT_FALSE(platform::LookUpPrivilege(u"", u"SeNoSuchPrivilege", id));
    EXPECT_EQ(platform::LastError(), static_cast<std::uint32_t>(EINVAL));
}

TEST_F(PosixLogon, SectionsBelongToWhoeverTheProcessStartedAs)
{
    const std::string name = "kessil-logon-" + std::to_string(getpid());
    const UserToken user = Admit(u"ada", u"open sesame");
    OnAThread([&] {
        platform::Impersonate(user);
        EXPECT_TRUE(Enable(u"SeBackupPrivilege"));
        const ActingAs acting = Now();
        const std::uint64_t capabilities = EffectiveCapabilities();

        const platform::SectionHandle created = platform::CreateSection(platform::FromUtf8(name), 4096, false);
        ASSERT_NE(created, nullptr);
        struct stat status = {};
        EXPECT_EQ(stat(("/dev/shm/" + name).c_str(), &status), 0);
        EXPECT_EQ(status.st_uid, before.user);
        EXPECT_EQ(status.st_gid, before.group);
        EXPECT_EQ(Now(), acting);
        EXPECT_EQ(EffectiveCapabilities(), capabilities);

        const platform::SectionHandle opened = platform::OpenSection(platform::FromUtf8(name), 4096);
        EXPECT_NE(opened, nullptr);
        EXPECT_EQ(Now(), acting);

        platform::SetLastError(1234);
        platform::RemoveSectionName(platform::FromUtf8(name));
        EXPECT_EQ(platform::LastError(), 1234u);
        EXPECT_NE(stat(("/dev/shm/" + name).c_str(), &status), 0);
        EXPECT_EQ(Now(), acting);
        platform::CloseSection(created);
        platform::CloseSection(opened);
    });
}

} // namespace kessil::test
