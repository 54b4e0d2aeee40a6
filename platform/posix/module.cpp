#include "platform/module.h"

#include "platform/last_error.h"
#include "platform/posix/cxx_runtime.h"
#include "platform/posix/handles.h"
#include "platform/posix/library_search.h"

#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <link.h>
#include <string>

namespace kessil::platform {
namespace {

// The first file of that name along PATH, or the name itself. An empty directory in the list stands for nothing:
// taken as the current one, it would let whoever controls that choose the code that runs.
std::string FindAlongPath(const std::string &name)
{
    const char *const path = std::getenv("PATH");
    const std::string file = posix::FindInDirectories(path == nullptr ? "" : path, name);
    return file.empty() ? name : file;
}

// The loader gives a text for a failed load and no code. A file that can be read but not loaded is no
// library here; a bare name counts as not found.
int WhyNotLoaded(const std::string &path)
{
    if (path.find('/') == std::string::npos)
        return ENOENT;
    return access(path.c_str(), R_OK) == 0 ? ENOEXEC : errno;
}

} // namespace

ModuleHandle LoadModule(const WideString &name)
{
    const std::string file = ToUtf8(name);
    // An empty name would open the program itself.
    if (file.empty()) {
        dlerror();
        errno = ENOENT;
        return nullptr;
    }
    const std::string path = file.find('/') == std::string::npos ? FindAlongPath(file) : file;
    posix::LoadCxxRuntimeFor(path);
    void *const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr)
        errno = WhyNotLoaded(path);
    return module;
}

WideString LoadErrorText(std::uint32_t code)
{
    const char *const text = dlerror();
    return text == nullptr ? ErrorText(code) : FromUtf8(text);
}

// The loader also looks through the libraries that this one needs; what they export is not this one's.
void *FindExport(ModuleHandle module, const char *name)
{
    void *const address = dlsym(module, name);
    link_map *wanted = nullptr;
    link_map *owner = nullptr;
    Dl_info info = {};
    const bool own = address != nullptr && dlinfo(module, RTLD_DI_LINKMAP, &wanted) == 0 &&
                     dladdr1(address, &info, reinterpret_cast<void **>(&owner), RTLD_DL_LINKMAP) != 0 &&
                     owner == wanted;
    return own ? address : nullptr;
}

void FreeModule(ModuleHandle module)
{
    const posix::KeepErrno keep;
    dlclose(module);
}

} // namespace kessil::platform
