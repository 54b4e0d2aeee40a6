#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <security/pam_appl.h>

// To be preloaded: PAM as the tests need it. Its services are in the directory that KESSIL_PAM_SERVICES names; `alias`
// is another name of ada; some accounts are broken; and every password of `careful` is refused and not kept.

namespace {

template <class Function>
Function *Real(const char *name)
{
    void *const pam = dlopen("libpam.so.0", RTLD_NOW | RTLD_NOLOAD);
    return pam != nullptr ? reinterpret_cast<Function *>(dlsym(pam, name)) : nullptr;
}

bool Is(const char *text, const char *other)
{
    return std::strcmp(text, other) == 0;
}

const char *UserOf(const pam_handle_t *handle)
{
    const void *user = nullptr;
    Real<decltype(pam_get_item)>("pam_get_item")(handle, PAM_USER, &user);
    return static_cast<const char *>(user);
}

int RefuseCarefully(const pam_handle_t *handle)
{
    const void *item = nullptr;
    Real<decltype(pam_get_item)>("pam_get_item")(handle, PAM_CONV, &item);
    const auto *const conversation = static_cast<const pam_conv *>(item);
    const pam_message question = {PAM_PROMPT_ECHO_OFF, "Password: "};
    const pam_message *questions = &question;
    pam_response *answer = nullptr;
    if (conversation->conv(1, &questions, &answer, conversation->appdata_ptr) != PAM_SUCCESS)
        return PAM_CONV_ERR;
    explicit_bzero(answer->resp, std::strlen(answer->resp));
    std::free(answer->resp);
    std::free(answer);
    return PAM_AUTH_ERR;
}

} // namespace

extern "C" int pam_start(const char *service, const char *user, const pam_conv *conversation, pam_handle_t **handle)
{
    auto *const start = Real<decltype(pam_start_confdir)>("pam_start_confdir");
    if (start == nullptr)
        return PAM_ABORT;
    return start(service, Is(user, "alias") ? "ada" : user, conversation, std::getenv("KESSIL_PAM_SERVICES"), handle);
}

extern "C" int pam_authenticate(pam_handle_t *handle, int flags)
{
    if (Is(UserOf(handle), "careful"))
        return RefuseCarefully(handle);
    return Real<decltype(pam_authenticate)>("pam_authenticate")(handle, flags);
}

extern "C" int pam_acct_mgmt(pam_handle_t *handle, int flags)
{
    const char *const name = UserOf(handle);
    if (Is(name, "expired"))
        return PAM_ACCT_EXPIRED;
    if (Is(name, "unlucky"))
        return PAM_SYSTEM_ERR;
    if (Is(name, "crowded"))
        return PAM_BUF_ERR;
    return Real<decltype(pam_acct_mgmt)>("pam_acct_mgmt")(handle, flags);
}
