#include "tests/kessilctl/scripted_run.h"

#include <cstdio>

namespace kessil::test {
namespace {

void Reopen(const std::string &path)
{
    ASSERT_NE(std::freopen(path.c_str(), "r", stdin), nullptr) << path;
    // What is read through the descriptor must not be read ahead here.
    std::setvbuf(stdin, nullptr, _IONBF, 0);
}

#ifdef _WIN32
constexpr const char *no_input = "NUL";
#else
constexpr const char *no_input = "/dev/null";
#endif

} // namespace

ScriptedRun::ScriptedRun() : m_directory_before(std::filesystem::current_path())
{
    // A helper works in the directory of its parent.
    std::filesystem::current_path(base);
}

ScriptedRun::~ScriptedRun()
{
    std::filesystem::current_path(m_directory_before);
    Reopen(no_input);
}

Outcome ScriptedRun::RunScripted(const std::string &script, const std::string &task,
                                 const std::vector<std::string> &arguments)
{
    WriteFile(base / "script", "attach\n" + script);
    std::vector<std::string> all = {task};
    all.insert(all.end(), arguments.begin(), arguments.end());
    all.insert(all.end(), {"--helper", KESSIL_TEST_SCRIPTED_HELPER});
    return RunKessilctlPlain(all);
}

void ScriptedRun::SetInput(const std::string &text)
{
    WriteFile(base / "input", text);
    Reopen((base / "input").string());
}

std::string ScriptedRun::NextLine()
{
    std::string line;
    for (int byte = std::getchar(); byte != EOF && byte != '\n'; byte = std::getchar())
        line += static_cast<char>(byte);
    return line;
}

} // namespace kessil::test
