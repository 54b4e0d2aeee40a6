#include <cstdlib>
#include <dlfcn.h>
#include <security/pam_appl.h>

/// To be preloaded: makes PAM look for its services in the directory that KESSIL_PAM_SERVICES names.
extern "C" int pam_start(const char *service, const char *user, const pam_conv *conversation, pam_handle_t **handle)
{
    const auto start = reinterpret_cast<decltype(pam_start_confdir) *>(dlsym(RTLD_DEFAULT, "pam_start_confdir"));
    return start != nullptr ? start(service, user, conversation, std::getenv("KESSIL_PAM_SERVICES"), handle)
                            : PAM_ABORT;
}
