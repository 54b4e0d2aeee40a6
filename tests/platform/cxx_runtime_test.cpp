#include "platform/posix/cxx_runtime.h"

#include "platform/last_error.h"
#include "platform/module.h"
#include "platform/posix/elf_needs.h"
#include "platform/posix/library_search.h"
#include "support/set_variable.h"
#include "surroundings.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <dlfcn.h>
#include <elf.h>
#include <fstream>
#include <gnu/libc-version.h>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>

namespace kessil::test {
namespace {

namespace fs = std::filesystem;
using platform::posix::ElfNeeds;
using platform::posix::FindInDirectories;
using platform::posix::FindInLoaderCache;
using platform::posix::LoadCxxRuntimeFor;
using platform::posix::ReadElfNeeds;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr const char *runtime = "libstdc++.so.6";

std::string Library(const std::string &name)
{
    return platform::ToUtf8(TargetLibrary(name));
}

std::string ReadBytes(const fs::path &file)
{
    std::ifstream stream(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

void WriteBytes(const fs::path &file, const std::string &bytes)
{
    std::ofstream(file, std::ios::binary) << bytes;
}

bool IsMapped(const std::string &file)
{
    return ReadBytes("/proc/self/maps").find(file) != std::string::npos;
}

bool HasRuntime()
{
    return IsMapped(std::string("/") + runtime);
}

// With a sanitizer, or where the program isn't linked with a run-time library of its own, it is there from the start.
bool HadRuntime()
{
    static const bool had = HasRuntime();
    return had;
}

std::string SystemsRuntime()
{
    for (const std::string &file : FindInLoaderCache(runtime)) {
        if (!ReadElfNeeds(file).libraries.empty())
            return file;
    }
    return {};
}

// Runs it in a process of its own, since a run-time library stays once it is loaded.
template <class Body>
void ExpectInChild(Body body)
{
    EXPECT_EXIT(_exit(body() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST(ElfNeeds, ReadsWhatALibraryNeeds)
{
    EXPECT_THAT(ReadElfNeeds(Library("inline_code_old")).libraries, Contains(runtime));
    const ElfNeeds by_runpath = ReadElfNeeds(Library("leans_on_inline_code_runpath"));
    EXPECT_THAT(by_runpath.libraries, ElementsAre("inline_code_old.so"));
    EXPECT_EQ(by_runpath.runpath, "$ORIGIN");
    EXPECT_EQ(by_runpath.rpath, "");
    const ElfNeeds by_rpath = ReadElfNeeds(Library("leans_on_inline_code_rpath"));
    EXPECT_EQ(by_rpath.runpath, "");
    EXPECT_EQ(by_rpath.rpath, "$ORIGIN");
}

TEST(ElfNeeds, AreNoneOfWhatIsNoLibrary)
{
    const TemporaryDirectory directory;
    const fs::path pipe = directory.Path() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const fs::path text = directory.Path() / "text";
    WriteBytes(text, "no library");
    for (const std::string &file : {std::string(), std::string("/"), std::string("/dev/zero"), pipe.string(),
                                    text.string(), (directory.Path() / "absent").string()})
        EXPECT_THAT(ReadElfNeeds(file).libraries, IsEmpty()) << file;
}

TEST(ElfNeeds, AreThoseThatCanBeReadOfAFileThatEndsEarly)
{
    const TemporaryDirectory directory;
    const fs::path file = directory.Path() / "cut.so";
    const fs::path library = Library("leans_on_inline_code_runpath");
    fs::copy_file(library, file);
    std::size_t whole = 0;
    for (std::uintmax_t size = fs::file_size(library); size-- > 0;) {
        fs::resize_file(file, size);
        const std::vector<std::string> needed = ReadElfNeeds(file).libraries;
        whole += needed == std::vector<std::string>{"inline_code_old.so"};
        EXPECT_LE(needed.size(), 1u);
    }
    EXPECT_GT(whole, 0u);
}

TEST(ElfNeeds, AreReadWithoutHarmFromAFileWithABitFlipped)
{
    const TemporaryDirectory directory;
    const fs::path file = directory.Path() / "flipped.so";
    const std::string library = ReadBytes(Library("leans_on_inline_code_runpath"));
    WriteBytes(file, library);
    std::fstream stream(file, std::ios::binary | std::ios::in | std::ios::out);
    const auto put = [&stream](std::size_t at, char byte) {
        stream.seekp(static_cast<std::streamoff>(at));
        stream.put(byte);
        stream.flush();
    };
    Elf64_Phdr dynamic = {};
    for (std::size_t at = sizeof(Elf64_Ehdr); dynamic.p_type != PT_DYNAMIC; at += sizeof dynamic)
        std::memcpy(&dynamic, library.data() + at, sizeof dynamic);
    const std::size_t texts = library.find("inline_code_old.so");
    // Headers, dynamic section, texts: nothing else is read.
    std::size_t unlike = 0;
    for (const auto &[start, size] :
         {std::pair<std::size_t, std::size_t>{0, 1024}, {dynamic.p_offset, dynamic.p_filesz}, {texts, 24}}) {
        for (std::size_t at = start; at < start + size; ++at) {
            for (int bit = 0; bit < 8; ++bit) {
                put(at, static_cast<char>(library[at] ^ (1 << bit)));
                unlike += ReadElfNeeds(file).libraries != std::vector<std::string>{"inline_code_old.so"};
            }
            put(at, library[at]);
        }
    }
    EXPECT_GT(unlike, 0u);
    EXPECT_THAT(ReadElfNeeds(file).libraries, ElementsAre("inline_code_old.so"));
}

TEST(LibrarySearch, TakesTheFirstFileOfThatName)
{
    const TemporaryDirectory one;
    const TemporaryDirectory two;
    fs::create_directory(one.Path() / "name");
    WriteBytes(two.Path() / "name", "");
    WriteBytes(two.Path() / "other", "");
    const std::string list = ":" + one.Path().string() + "::" + two.Path().string() + ":";
    EXPECT_EQ(FindInDirectories(list, "name"), (two.Path() / "name").string());
    WriteBytes(one.Path() / "other", "");
    EXPECT_EQ(FindInDirectories(list, "other"), (one.Path() / "other").string());
    EXPECT_EQ(FindInDirectories(list, "absent"), "");
    EXPECT_EQ(FindInDirectories("", "name"), "");
}

TEST(LibrarySearch, FindsInTheLoadersCacheWhatTheLoaderFinds)
{
    Dl_info loaded = {};
    ASSERT_NE(dladdr(reinterpret_cast<void *>(&gnu_get_libc_version), &loaded), 0);
    EXPECT_THAT(FindInLoaderCache("libc.so.6"), Contains(testing::Truly([&](const std::string &file) {
                    return fs::exists(file) && fs::equivalent(file, loaded.dli_fname);
                })));
    EXPECT_THAT(FindInLoaderCache("libc.so"), Not(Contains(testing::HasSubstr("libc.so.6"))));
    EXPECT_THAT(FindInLoaderCache(""), IsEmpty());
}

TEST(CxxRuntime, IsLoadedWhenTheLibraryNeedsIt)
{
    const bool had = HadRuntime();
    ExpectInChild([had] {
        LoadCxxRuntimeFor(Library("plain"));
        LoadCxxRuntimeFor(Library("aborts"));
        return HasRuntime() == had;
    });
    for (const char *name : {"inline_code_old", "leans_on_inline_code_runpath", "leans_on_inline_code_rpath"}) {
        ExpectInChild([name] {
            LoadCxxRuntimeFor(Library(name));
            return HasRuntime() && !IsMapped("inline_code");
        });
    }
}

TEST(CxxRuntime, IsLoadedForABareNameThatTheDynamicLinkerFinds)
{
    const bool had = HadRuntime();
    ExpectInChild([had] {
        LoadCxxRuntimeFor("leans_on_inline_code_runpath.so");
        if (HasRuntime() != had)
            return false;
        SetVariable("LD_LIBRARY_PATH", fs::path(Library("plain")).parent_path().string());
        LoadCxxRuntimeFor("leans_on_inline_code_runpath.so");
        return HasRuntime();
    });
}

TEST(CxxRuntime, IsTheOneThatTheLibraryBringsAlong)
{
    const TemporaryDirectory directory;
    const fs::path own = directory.Path() / runtime;
    const fs::path library = directory.Path() / "library.so";
    fs::copy_file(SystemsRuntime(), own);
    fs::copy_file(Library("leans_on_inline_code_runpath"), library);
    fs::copy_file(Library("inline_code_rpath"), directory.Path() / "inline_code_old.so");
    const bool had = HadRuntime();
    ExpectInChild([&, had] {
        LoadCxxRuntimeFor(library);
        return IsMapped(own) == !had;
    });
}

TEST(CxxRuntime, ThatCannotBeLoadedLeavesNoTrace)
{
    const TemporaryDirectory directory;
    const fs::path library = directory.Path() / "library.so";
    fs::copy_file(Library("inline_code_rpath"), library);
    WriteBytes(directory.Path() / runtime, "no library");
    errno = 77;
    LoadCxxRuntimeFor(library);
    EXPECT_EQ(errno, 77);
    EXPECT_EQ(dlerror(), nullptr);
    // The load itself then ends, and reports, as it would without this.
    EXPECT_EQ(platform::LoadModule(platform::FromUtf8(library.string())) == nullptr, !HadRuntime());
    if (!HadRuntime()) {
        EXPECT_EQ(platform::LastError(), static_cast<std::uint32_t>(ENOEXEC));
        EXPECT_EQ(platform::ToUtf8(platform::LoadErrorText(platform::LastError())),
                  (directory.Path() / runtime).string() + ": file too short");
    }
}

TEST(CxxRuntime, IsNotLookedForInAFileThatIsNotThere)
{
    const bool had = HadRuntime();
    EXPECT_EQ(platform::LoadModule(u"/no/such/library.so"), nullptr);
    EXPECT_EQ(platform::LastError(), static_cast<std::uint32_t>(ENOENT));
    EXPECT_EQ(platform::ToUtf8(platform::LoadErrorText(ENOENT)),
              "/no/such/library.so: cannot open shared object file: No such file or directory");
    EXPECT_EQ(HasRuntime(), had);
}

} // namespace
} // namespace kessil::test
