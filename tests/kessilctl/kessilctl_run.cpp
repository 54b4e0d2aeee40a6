#include "tests/kessilctl/kessilctl_run.h"

#include "kessilctl/console/local_path.h"
#include "kessilctl/run.h"
#include "tests/support/set_variable.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>

namespace kessil::test {
namespace {

/// Collects what is written, and raises a signal once, as soon as it contains a certain text.
class InterruptingBuffer : public std::stringbuf
{
public:
    InterruptingBuffer(std::string text, int signal) : m_text(std::move(text)), m_signal(signal) {}

protected:
    std::streamsize xsputn(const char *bytes, std::streamsize count) override
    {
        const std::streamsize put = std::stringbuf::xsputn(bytes, count);
        if (!m_raised && str().find(m_text) != std::string::npos) {
            m_raised = true;
            EXPECT_EQ(std::raise(m_signal), 0);
        }
        return put;
    }

private:
    std::string m_text;
    int m_signal;
    bool m_raised = false;
};

std::vector<WideString> Widen(const std::vector<std::string> &arguments)
{
    std::vector<WideString> wide = {u"kessilctl"};
    for (const std::string &argument : arguments)
        wide.push_back(platform::FromUtf8(argument));
    return wide;
}

std::vector<std::string> WithCommonArguments(const std::string &task, const std::string &library,
                                             const std::vector<std::string> &arguments)
{
    std::vector<std::string> all = {task, "--helper", KESSIL_TEST_HELPER, "--library", LibraryPath(library)};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
}

std::filesystem::path FreshDirectory()
{
    std::random_device random;
    auto path = std::filesystem::temp_directory_path();
    path /= std::string("kessilctl_test_").append(std::to_string(random())).append(std::to_string(random()));
    std::filesystem::create_directory(path);
    return path;
}

} // namespace

std::string LibraryPath(const std::string &name)
{
    return std::string(KESSIL_TEST_LIBRARIES "/").append(name).append(KESSIL_TEST_LIBRARY_SUFFIX);
}

Outcome RunKessilctl(const std::string &task, const std::string &library, const std::vector<std::string> &arguments,
                     unsigned columns)
{
    std::ostringstream out;
    std::ostringstream err;
    kessilctl::Console console(out, err, columns);
    const int exit_code = kessilctl::Run(Widen(WithCommonArguments(task, library, arguments)), console);
    return {exit_code, out.str(), err.str()};
}

Outcome RunKessilctlPlain(const std::vector<std::string> &arguments)
{
    std::ostringstream out;
    std::ostringstream err;
    kessilctl::Console console(out, err, 0);
    const int exit_code = kessilctl::Run(Widen(arguments), console);
    return {exit_code, out.str(), err.str()};
}

Outcome RunKessilctlInterrupted(const std::string &text, const std::string &task, const std::string &library,
                                const std::vector<std::string> &arguments, int signal)
{
    return RunKessilctlInterruptedPlain(text, WithCommonArguments(task, library, arguments), signal);
}

Outcome RunKessilctlInterruptedPlain(const std::string &text, const std::vector<std::string> &arguments, int signal)
{
    std::ostringstream out;
    InterruptingBuffer buffer(text, signal);
    std::ostream err(&buffer);
    kessilctl::Console console(out, err, 0);
    const int exit_code = kessilctl::Run(Widen(arguments), console);
    return {exit_code, out.str(), buffer.str()};
}

std::map<std::string, std::string> ReadTree(const std::filesystem::path &directory)
{
    std::map<std::string, std::string> tree;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(directory)) {
        std::string name = kessilctl::ToText(entry.path().lexically_relative(directory));
        std::replace(name.begin(), name.end(), static_cast<char>(std::filesystem::path::preferred_separator), '/');
        tree[name] = entry.is_directory() ? "/" : ReadFile(entry.path());
    }
    return tree;
}

void WriteFile(const std::filesystem::path &path, const std::string &content)
{
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file << content;
    ASSERT_TRUE(file.flush()) << path;
}

std::string ReadFile(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

KessilctlTest::KessilctlTest()
    : base(FreshDirectory()), source(base / "source"), target(base / "target"), backup(base / "backup")
{
    std::filesystem::create_directory(target);
    Serve(source);
}

KessilctlTest::~KessilctlTest()
{
    std::error_code ignored;
    std::filesystem::remove_all(base, ignored);
}

void KessilctlTest::BackUp()
{
    Serve(source);
    const Outcome outcome = RunKessilctl("backup", "vorn_fs", {"--to", backup.string()});
    ASSERT_EQ(outcome.exit_code, 0) << outcome.err;
}

void KessilctlTest::Serve(const std::filesystem::path &directory)
{
    std::filesystem::create_directories(directory);
    SetVariable("VORN_FS_ROOT", directory.string());
}

} // namespace kessil::test
