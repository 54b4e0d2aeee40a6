#include "platform/logon.h"

#include "platform/last_error.h"
#include "platform/section.h"
#include "support/accounts.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
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

namespace {

/// Which of the next calls of setgroups fails for lack of memory; 0 for none.
int g_failing_setgroups = 0;

} // namespace

// The linker redirects every call of syscall to the first function, and gives the system's function the name of the
// second.
extern "C" {
long __real_syscall(long number, ...);
long __wrap_syscall(long number, ...)
{
    std::array<long, 3> arguments = {};
    va_list list;
    va_start(list, number);
    for (long &argument : arguments)
        argument = va_arg(list, long);
    va_end(list);
    if (number == SYS_setgroups && g_failing_setgroups > 0 && --g_failing_setgroups == 0) {
        errno = ENOMEM;
        return -1;
    }
    return __real_syscall(number, arguments[0], arguments[1], arguments[2]);
}
}

namespace kessil::test {

using platform::LogonKind;
using platform::UserToken;

namespace {

// A thread that takes another identity keeps it, so each test does that on a thread of its own.
void OnAThread(const std::function<void()> &work)
{
    std::thread(work).join();
}

std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> ReadCapabilities()
{
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> data = {};
    EXPECT_EQ(syscall(SYS_capget, &header, data.data()), 0);
    return data;
}

std::uint64_t EffectiveCapabilities()
{
    const auto data = ReadCapabilities();
    return data[0].effective | (std::uint64_t{data[1].effective} << 32);
}

// Not every root user has all of them.
bool IsPermitted(unsigned capability)
{
    const auto data = ReadCapabilities();
    return ((data[0].permitted | (std::uint64_t{data[1].permitted} << 32)) >> capability & 1) != 0;
}

bool Enable(const WideString &privilege)
{
    std::uint64_t id = 0;
    return platform::LookUpPrivilege(u"", privilege, id) &&
           platform::EnablePrivilege(platform::OpenToken(platform::CurrentProcess()), id);
}

/// A file of the user who runs the tests, which no other user may read or write.
class PrivateFile
{
public:
    PrivateFile() : m_path("/tmp/kessil-private-" + std::to_string(getpid()))
    {
        const int descriptor = open(m_path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
        EXPECT_GE(descriptor, 0);
        close(descriptor);
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

    // The same for the user who is to be admitted.
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

TEST_F(PosixLogon, RightPasswordIsAccepted)
{
    EXPECT_NE(LogOn(u"ada", u"open sesame", {}, LogonKind::Interactive), nullptr);
    EXPECT_NE(LogOn(u"ada", u"open sesame", {}, LogonKind::Network), nullptr);
    EXPECT_EQ(Now(), before) << "nobody is impersonated yet";
}

// The result must not reveal whether the user or the password is wrong.
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

TEST_F(PosixLogon, EverythingElseHasACodeOfItsOwn)
{
    EXPECT_EQ(LogOn(u"expired", u"expired"), nullptr);
    EXPECT_EQ(platform::LastError(), static_cast<std::uint32_t>(EKEYEXPIRED));
    EXPECT_EQ(LogOn(u"unlucky", u"unlucky"), nullptr);
    EXPECT_EQ(platform::LastError(), static_cast<std::uint32_t>(EIO));
    EXPECT_EQ(LogOn(u"crowded", u"crowded"), nullptr);
    EXPECT_EQ(platform::LastError(), static_cast<std::uint32_t>(ENOMEM));
}

// The service may authenticate a user under a name other than the one it was given.
TEST_F(PosixLogon, UserIsTheOneThatTheServiceAuthenticated)
{
    const UserToken user = LogOn(u"alias", u"open sesame");
    ASSERT_NE(user, nullptr);
    OnAThread([&] {
        EXPECT_EQ(platform::Impersonate(user), MayActAsOthers());
        EXPECT_EQ(Now(), MayActAsOthers() ? ada : before);
    });
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

TEST_F(PosixLogon, ImpersonationAffectsOnlyTheCallingThread)
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

TEST_F(PosixLogon, OneImpersonationReplacesAnother)
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

// What a PAM module or an account database reads may be accessible only to the process's own user.
TEST_F(PosixLogon, NextLogonUsesTheProcesssRights)
{
    // The passwords of these accounts are such a file.
    const UserToken user = LogOn(u"ada", u"open sesame");
    OnAThread([&] {
        platform::Impersonate(user);
        const ActingAs acting = Now();
        EXPECT_NE(LogOn(u"self", u"it's me"), nullptr);
        EXPECT_EQ(LogOn(u"self", u"it's not"), nullptr);
        EXPECT_EQ(platform::LastError(), static_cast<std::uint32_t>(EACCES));
        EXPECT_EQ(Now(), acting);
    });
}

TEST_F(PosixLogon, ImpersonationRemovesTheCapabilities)
{
    const UserToken user = LogOn(u"ada", u"open sesame");
    const std::uint64_t capabilities = EffectiveCapabilities();
    OnAThread([&] {
        EXPECT_EQ(platform::Impersonate(user), MayActAsOthers());
        EXPECT_EQ(EffectiveCapabilities(), MayActAsOthers() ? 0 : capabilities);
    });
    EXPECT_EQ(EffectiveCapabilities(), capabilities);
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

TEST_F(PosixLogon, ImpersonationThatFailsHalfwayIsUndone)
{
    const UserToken first = LogOn(u"ada", u"open sesame");
    const UserToken second = LogOn(u"ada", u"corporate", u"CORP");
    OnAThread([&] {
        platform::Impersonate(first);
        EXPECT_TRUE(Enable(u"SeBackupPrivilege"));
        const ActingAs acting = Now();
        const std::uint64_t capabilities = EffectiveCapabilities();
        // The first is that of the process's own groups.
        g_failing_setgroups = MayActAsOthers() ? 2 : 1;
        EXPECT_FALSE(platform::Impersonate(second));
        EXPECT_EQ(platform::LastError(), static_cast<std::uint32_t>(ENOMEM));
        EXPECT_EQ(Now(), acting);
        EXPECT_EQ(EffectiveCapabilities(), capabilities);
    });
}

// The process must not go on with another user's rights.
TEST_F(PosixLogon, FailedReturnToTheProcesssIdentityEndsTheProcess)
{
    const UserToken user = LogOn(u"ada", u"open sesame");
    const WideString name = platform::FromUtf8("kessil-logon-death-" + std::to_string(getpid()));
    const auto make_section = [&] {
        platform::Impersonate(user);
        g_failing_setgroups = 2;
        platform::CloseSection(platform::CreateSection(name, 4096, false));
        std::_Exit(platform::OpenSection(name, 4096) != nullptr ? 7 : 8);
    };
    if (MayActAsOthers())
        EXPECT_EXIT(make_section(), ::testing::KilledBySignal(SIGABRT), "");
    else
        EXPECT_EXIT(make_section(), ::testing::ExitedWithCode(7), "");
    platform::RemoveSectionName(name);
}

// The system clears the signal at a change of identity, and a helper would outlive its parent.
TEST_F(PosixLogon, DeathSignalOfTheParentOutlivesAnImpersonation)
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

TEST_F(PosixLogon, PrivilegesRestoreTheirCapabilities)
{
    const PrivateFile file;
    const UserToken user = Admit(u"ada", u"open sesame");
    OnAThread([&] {
        if (!platform::Impersonate(user)) {
            // Without the capabilities nothing changes, which is not a failure.
            const std::uint64_t capabilities = EffectiveCapabilities();
            EXPECT_TRUE(Enable(u"SeBackupPrivilege") && Enable(u"SeRestorePrivilege") &&
                        Enable(u"SeSecurityPrivilege"));
            EXPECT_EQ(EffectiveCapabilities(), capabilities);
            return;
        }
        EXPECT_FALSE(file.Opens(O_RDONLY));
        EXPECT_TRUE(Enable(u"SeBackupPrivilege"));
        EXPECT_EQ(file.Opens(O_RDONLY), IsPermitted(CAP_DAC_READ_SEARCH));
        EXPECT_FALSE(file.Opens(O_WRONLY));
        EXPECT_FALSE(file.ChangesOwner());
        EXPECT_TRUE(Enable(u"SeRestorePrivilege"));
        EXPECT_EQ(file.Opens(O_WRONLY), IsPermitted(CAP_DAC_OVERRIDE));
        EXPECT_EQ(file.ChangesOwner(), IsPermitted(CAP_CHOWN));
        EXPECT_TRUE(Enable(u"SeSecurityPrivilege"));
        EXPECT_EQ(Now(), ada);
    });
}

TEST_F(PosixLogon, SecurityPrivilegeEnablesThePermittedOnesOfItsCapabilities)
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

TEST_F(PosixLogon, SectionsBelongToTheUserThatTheProcessStartedAs)
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
