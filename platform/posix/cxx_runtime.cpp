#include "platform/posix/cxx_runtime.h"

#include "platform/posix/elf_needs.h"
#include "platform/posix/handles.h"
#include "platform/posix/library_search.h"

#include <algorithm>
#include <cstdlib>
#include <dlfcn.h>
#include <string_view>
#include <vector>

namespace kessil::platform::posix {
namespace {

// The largest number of files that are read for one library.
constexpr std::size_t most_files = 64;

struct Library
{
    std::string file;
    std::string inherited_rpath; // of those that need it; directories between colons
};

bool IsCxxRuntime(std::string_view name)
{
    return name.starts_with("libstdc++.so.") || name.starts_with("libc++.so.");
}

bool IsLoaded(const std::string &name)
{
    void *const module = dlopen(name.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (module != nullptr)
        dlclose(module);
    return module != nullptr;
}

std::string WithOrigin(std::string directories, const std::string &file)
{
    const std::string origin = file.substr(0, file.rfind('/'));
    for (const std::string_view token : {"$ORIGIN", "${ORIGIN}"}) {
        for (std::size_t at = 0; (at = directories.find(token, at)) != std::string::npos; at += origin.size())
            directories.replace(at, token.size(), origin);
    }
    return directories;
}

std::string EnvironmentDirectories()
{
    const char *const directories = std::getenv("LD_LIBRARY_PATH");
    return directories == nullptr ? std::string() : directories;
}

// Reads one library after the other, in the order in which the dynamic linker will load them.
class Walk
{
public:
    explicit Walk(const std::string &library) { Add(library, EnvironmentDirectories(), {}); }

    void Run()
    {
        for (std::size_t i = 0; i < m_libraries.size() && i < most_files; ++i)
            LookInto(Library(m_libraries[i]));
    }

private:
    void LookInto(const Library &library)
    {
        const ElfNeeds needs = ReadElfNeeds(library.file);
        std::string rpath = library.inherited_rpath;
        std::string directories = EnvironmentDirectories();
        if (needs.runpath.empty()) {
            rpath = WithOrigin(needs.rpath, library.file) + ':' + rpath;
            directories = rpath + ':' + directories;
        } else {
            directories = directories + ':' + WithOrigin(needs.runpath, library.file);
        }
        for (const std::string &name : needs.libraries) {
            if (IsLoaded(name))
                continue;
            if (IsCxxRuntime(name))
                LoadRuntime(name, directories);
            else
                Add(name, directories, rpath);
        }
    }

    static void LoadRuntime(const std::string &name, const std::string &directories)
    {
        const std::string file = FindInDirectories(directories, name);
        dlopen(file.empty() ? name.c_str() : file.c_str(), RTLD_NOW | RTLD_LOCAL);
    }

    void Add(const std::string &name, const std::string &directories, const std::string &rpath)
    {
        std::vector<std::string> files = {name};
        if (name.find('/') == std::string::npos)
            files = {FindInDirectories(directories, name)};
        if (files.front().empty())
            files = FindInLoaderCache(name);
        for (const std::string &file : files) {
            if (std::ranges::find(m_libraries, file, &Library::file) == m_libraries.end())
                m_libraries.push_back({file, rpath});
        }
    }

    std::vector<Library> m_libraries;
};

} // namespace

void LoadCxxRuntimeFor(const std::string &library)
{
    const KeepErrno keep;
    Walk(library).Run();
    dlerror();
}

} // namespace kessil::platform::posix
