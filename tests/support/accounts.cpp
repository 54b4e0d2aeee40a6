#include "support/accounts.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace kessil::test {

namespace {

// Tries it, on a thread that nobody needs afterwards.
bool TryToActAsAda()
{
    constexpr auto unchanged = static_cast<unsigned>(-1);
    bool done = false;
    std::thread([&done] {
        done = syscall(SYS_setgroups, ada.groups.size(), ada.groups.data()) == 0 &&
               syscall(SYS_setresgid, unchanged, ada.group, unchanged) == 0 &&
               syscall(SYS_setresuid, unchanged, ada.user, unchanged) == 0;
    }).join();
    return done;
}

} // namespace

ActingAs Now()
{
    ActingAs now = {geteuid(), getegid(), {}};
    now.groups.resize(static_cast<std::size_t>(getgroups(0, nullptr)));
    now.groups.resize(static_cast<std::size_t>(getgroups(static_cast<int>(now.groups.size()), now.groups.data())));
    std::erase(now.groups, now.group);
    std::sort(now.groups.begin(), now.groups.end());
    return now;
}

bool MayActAsOthers()
{
    static const bool may = TryToActAsAda();
    return may;
}

Accounts::Accounts()
    : m_directory(std::filesystem::temp_directory_path() / ("kessil-accounts-" + std::to_string(getpid())))
{
    std::filesystem::create_directory(m_directory);
    const ActingAs self = Now();
    MayActAsOthers();

    std::ofstream users(m_directory / "passwd");
    users << "ada:x:31001:31001::/:/bin/false\n"
             "CORP\\ada:x:31011:31011::/:/bin/false\n"
             "barred:x:31021:31021::/:/bin/false\n"
             "broken:x:4294967295:31031::/:/bin/false\n"
          << "self:x:" << self.user << ":" << self.group << "::/:/bin/false\n";

    std::ofstream groups(m_directory / "group");
    groups << "ada:x:31001:\nbackup:x:31002:ada\nusers:x:31003:ada\n";
    for (const gid_t group : self.groups)
        groups << "group" << group << ":x:" << group << ":self\n";

    std::ofstream(m_directory / "passwords") << "ada:open sesame:kessil\n"
                                                "CORP\\ada:corporate:kessil\n"
                                                "nobody2:none:kessil\n"
                                                "barred:barred:another\n"
                                                "expired:expired:kessil\n"
                                                "unlucky:unlucky:kessil\n"
                                                "crowded:crowded:kessil\n"
                                                "broken:broken:kessil\n"
                                                "self:it's me:kessil\n";

    // For whoever made them alone, as such files are.
    std::filesystem::permissions(m_directory / "passwords", std::filesystem::perms(0600));

    setenv("NSS_WRAPPER_PASSWD", (m_directory / "passwd").c_str(), 1);
    setenv("NSS_WRAPPER_GROUP", (m_directory / "group").c_str(), 1);
    setenv("PAM_MATRIX_PASSWD", (m_directory / "passwords").c_str(), 1);
}

Accounts::~Accounts()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_directory, ignored);
}

} // namespace kessil::test
