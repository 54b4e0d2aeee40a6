#include "platform/posix/pam.h"

#include "platform/wipe.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <security/pam_appl.h>

namespace kessil::platform::posix {
namespace {

constexpr const char *service = "kessil";

// PAM's functions, loaded on first use: most runs have no logon, and the libraries behind these functions would take a
// quarter of the start-up time.
struct Pam
{
    Pam() : library(dlopen("libpam.so.0", RTLD_NOW | RTLD_LOCAL))
    {
        Find(start, "pam_start");
        Find(authenticate, "pam_authenticate");
        Find(account_management, "pam_acct_mgmt");
        Find(get_item, "pam_get_item");
        Find(end, "pam_end");
    }

    bool IsComplete() const { return start && authenticate && account_management && get_item && end; }

    // A preloaded library comes first, as it would for a program that is linked with PAM.
    template <class Function>
    void Find(Function *&function, const char *name) const
    {
        void *found = dlsym(RTLD_DEFAULT, name);
        if (found == nullptr && library != nullptr)
            found = dlsym(library, name);
        function = reinterpret_cast<Function *>(found);
    }

    void *library;
    decltype(pam_start) *start = nullptr;
    decltype(pam_authenticate) *authenticate = nullptr;
    decltype(pam_acct_mgmt) *account_management = nullptr;
    decltype(pam_get_item) *get_item = nullptr;
    decltype(pam_end) *end = nullptr;
};

// A password in the form that PAM expects. Wiped on destruction.
class Secret
{
public:
    explicit Secret(const WideString &text) : m_text(ToUtf8(text)) {}
    ~Secret() { Wipe(m_text.data(), m_text.size()); }
    Secret(const Secret &) = delete;
    Secret &operator=(const Secret &) = delete;

    const char *Text() const { return m_text.c_str(); }

private:
    std::string m_text;
};

void FreeAnswers(pam_response *answers, int count)
{
    for (int i = 0; i < count; ++i) {
        if (answers[i].resp != nullptr)
            Wipe(answers[i].resp, std::strlen(answers[i].resp));
        std::free(answers[i].resp);
    }
    std::free(answers);
}

// Answers PAM's prompts: the password for each prompt without echo. PAM wipes and frees the answers.
int Converse(int count, const pam_message **messages, pam_response **responses, void *secret)
{
    if (count <= 0 || count > PAM_MAX_NUM_MSG)
        return PAM_CONV_ERR;
    auto *const answers =
        static_cast<pam_response *>(std::calloc(static_cast<std::size_t>(count), sizeof(pam_response)));
    if (answers == nullptr)
        return PAM_BUF_ERR;
    for (int i = 0; i < count; ++i) {
        const int style = messages[i]->msg_style;
        if (style == PAM_PROMPT_ECHO_OFF)
            answers[i].resp = strdup(static_cast<const Secret *>(secret)->Text());
        // There is nobody to answer any other prompt.
        if (style == PAM_PROMPT_ECHO_ON || (style == PAM_PROMPT_ECHO_OFF && answers[i].resp == nullptr)) {
            FreeAnswers(answers, count);
            return PAM_CONV_ERR;
        }
    }
    // A module that only shows a message may expect no answers at all.
    if (responses == nullptr)
        FreeAnswers(answers, count);
    else
        *responses = answers;
    return PAM_SUCCESS;
}

int ErrnoOf(int pam_result)
{
    switch (pam_result) {
    case PAM_BUF_ERR:
        return ENOMEM;
    case PAM_ACCT_EXPIRED:
    case PAM_NEW_AUTHTOK_REQD:
    case PAM_CRED_EXPIRED:
    case PAM_AUTHTOK_EXPIRED:
        return EKEYEXPIRED;
    case PAM_ABORT:
    case PAM_AUTHINFO_UNAVAIL:
    case PAM_OPEN_ERR:
    case PAM_SERVICE_ERR:
    case PAM_SYMBOL_ERR:
    case PAM_SYSTEM_ERR:
        return EIO;
    default:
        return EACCES;
    }
}

// The account that the service authenticated, which may differ from the one that it was given.
int ReadAccount(const Pam &pam, const pam_handle_t *handle, std::string &account)
{
    const void *name = nullptr;
    const int result = pam.get_item(handle, PAM_USER, &name);
    if (result == PAM_SUCCESS && name != nullptr)
        account = static_cast<const char *>(name);
    return result;
}

} // namespace

bool Authenticate(std::string &account, const WideString &password)
{
    static const Pam pam;
    if (!pam.IsComplete()) {
        errno = ENOSYS;
        return false;
    }
    Secret secret(password);
    const pam_conv conversation = {Converse, &secret};
    pam_handle_t *handle = nullptr;
    int result = pam.start(service, account.c_str(), &conversation, &handle);
    if (result == PAM_SUCCESS)
        result = pam.authenticate(handle, PAM_SILENT);
    if (result == PAM_SUCCESS)
        result = pam.account_management(handle, PAM_SILENT);
    if (result == PAM_SUCCESS)
        result = ReadAccount(pam, handle, account);
    if (handle != nullptr)
        pam.end(handle, result);
    if (result == PAM_SUCCESS)
        return true;
    errno = ErrnoOf(result);
    return false;
}

} // namespace kessil::platform::posix
