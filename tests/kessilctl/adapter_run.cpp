#include "tests/kessilctl/adapter_run.h"

#include "kessilctl/console/local_path.h"

namespace kessil::test {

AdapterTest::AdapterTest() : root(base / "root"), serving("adapter, level 2: serving " + kessilctl::ToText(root) + "\n")
{
    for (const char *kind : {"hosts", "datastores", "folders", "machines"})
        std::filesystem::create_directories(root / kind);
}

std::vector<std::string> AdapterTest::Arguments(const std::string &task, const std::vector<std::string> &arguments)
{
    SetInput("\n");
    std::vector<std::string> all = {"adapter",       task,
                                    "--helper",      KESSIL_TEST_HELPER,
                                    "--library",     KESSIL_TEST_ADAPTER,
                                    "--credentials", kessilctl::ToText(root),
                                    "--password-fd", "0"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
}

Outcome AdapterTest::RunAdapter(const std::string &task, const std::vector<std::string> &arguments)
{
    return RunKessilctlPlain(Arguments(task, arguments));
}

Outcome AdapterTest::RunAdapterInterrupted(const std::string &text, const std::string &task,
                                           const std::vector<std::string> &arguments)
{
    return RunKessilctlInterruptedPlain(text, Arguments(task, arguments));
}

Outcome AdapterTest::RunStrangeAdapter(const std::string &task, const std::vector<std::string> &arguments)
{
    std::vector<std::string> all = {"adapter",          task,        "--helper",
                                    KESSIL_TEST_HELPER, "--library", LibraryPath("strange_tarnlink_windows_x64.dll")};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return RunKessilctlPlain(all);
}

} // namespace kessil::test
