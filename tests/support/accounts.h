#pragma once

#include <filesystem>
#include <grp.h>
#include <string>
#include <sys/types.h>
#include <vector>

/// User accounts for the tests of logons on Linux, in the place of the machine's own. A program that uses them runs
/// with KESSIL_ACCOUNTS (CMakeLists.txt) as its environment; it and its children know these accounts and no others.
namespace kessil::test {

/// Whom a thread acts as.
struct ActingAs
{
    uid_t user;
    gid_t group;
    std::vector<gid_t> groups; ///< supplementary ones, in ascending order, without `group`

    bool operator==(const ActingAs &) const = default;
};

/// The calling thread, as the system sees it.
ActingAs Now();

/// Whether this process may act as ada: an ordinary user's may not, nor may that of a root without the capabilities or
/// without her numbers in its user namespace. To be asked for the first time before anybody is impersonated.
bool MayActAsOthers();

/// Writes the accounts down, and removes them at the end of its life. Made before anything looks an account up.
///   ada      password "open sesame", in two supplementary groups
///   CORP\ada password "corporate"
///   nobody2  password "none", no account of the system
///   alias    is ada to PAM
///   barred   password "barred", not admitted by the service
///   expired, unlucky, crowded
///            password as the name, let down by PAM in three ways
///   careful  refused, with nothing of the password kept by PAM
///   broken   password "broken", with a user id that stands for none
///   self     password "it's me": whoever runs the tests
class Accounts
{
public:
    Accounts();
    ~Accounts();
    Accounts(const Accounts &) = delete;
    Accounts &operator=(const Accounts &) = delete;

private:
    std::filesystem::path m_directory;
};

inline const ActingAs ada = {31001, 31001, {31002, 31003}};
inline const ActingAs corporate_ada = {31011, 31011, {}};

} // namespace kessil::test
