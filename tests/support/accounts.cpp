#include "support/accounts.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <unistd.h>

namespace kessil::test {

namespace {

const bool started_as_root = geteuid() == 0;

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
    return started_as_root;
}

Accounts::Accounts()
    : m_directory(std::filesystem::temp_directory_path() / ("kessil-accounts-" + std::to_string(getpid())))
{
    std::filesystem::create_directory(m_directory);
    const ActingAs self = Now();
    // Everybody may read them: who has become another user looks accounts up too.
    std::filesystem::permissions(m_directory, std::filesystem::perms(0755));

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
                                                "broken:broken:kessil\n"
                                                "self:it's me:kessil\n";

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
