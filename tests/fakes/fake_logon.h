#pragma once

#include "platform/logon.h"

#include <cstdint>
#include <functional>
#include <map>

namespace kessil::test {

/// Replaces platform/logon.h: a system where everybody may do everything, unless a code says otherwise. Using a token
/// that was closed or never issued aborts. `fake_logon = FakeLogon()` resets it.
struct FakeLogon
{
    std::uint32_t logon_code = 0; ///< when not 0, every LogOnUser fails with it; the others likewise
    std::uint32_t impersonate_code = 0;
    std::uint32_t open_code = 0;
    std::uint32_t enable_code = 0;
    std::uint32_t unknown_code = 1313;                  ///< the error for looking up a privilege that isn't listed here
    WideString other_system = u"kessil-no-such-system"; ///< a system that can't be reached
    std::map<WideString, std::uint64_t> privileges = {
        {u"SeBackupPrivilege", 17}, {u"SeRestorePrivilege", 18}, {u"SeSecurityPrivilege", 8}};

    std::function<void()> on_log_on; ///< runs in LogOnUser
    int open_tokens = 0;             ///< of processes
    void *impersonated = nullptr;    ///< the user that the thread acts as
};

/// The tokens and handles that the fake returns.
inline void *const fake_user = reinterpret_cast<void *>(std::uintptr_t{0xA1});
inline void *const fake_own_process = reinterpret_cast<void *>(std::uintptr_t{0xA2});
inline void *const fake_process_token = reinterpret_cast<void *>(std::uintptr_t{0xA3});

extern FakeLogon fake_logon;

} // namespace kessil::test
