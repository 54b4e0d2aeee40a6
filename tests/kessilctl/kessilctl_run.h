#pragma once

#include <csignal>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace kessil::test {

/// The result of a run of kessilctl.
struct Outcome
{
    int exit_code;
    std::string out;
    std::string err;
};

/// Runs kessilctl in this process, with a real helper. `library` is the name of one of the hosted libraries; the
/// arguments that name it and the helper are added. `columns` is the width of the terminal, 0 for none.
Outcome RunKessilctl(const std::string &task, const std::string &library, const std::vector<std::string> &arguments,
                     unsigned columns = 0);

/// Runs kessilctl with exactly these arguments.
Outcome RunKessilctlPlain(const std::vector<std::string> &arguments);

/// As RunKessilctl, and raises `signal` as soon as the run's error stream contains `text`.
Outcome RunKessilctlInterrupted(const std::string &text, const std::string &task, const std::string &library,
                                const std::vector<std::string> &arguments, int signal = SIGINT);

/// As RunKessilctlInterrupted, with exactly these arguments.
Outcome RunKessilctlInterruptedPlain(const std::string &text, const std::vector<std::string> &arguments,
                                     int signal = SIGINT);

std::string LibraryPath(const std::string &name);

/// Everything below a directory: the content of each file, and "/" for each directory.
std::map<std::string, std::string> ReadTree(const std::filesystem::path &directory);

void WriteFile(const std::filesystem::path &path, const std::string &content);
std::string ReadFile(const std::filesystem::path &path);

/// A temporary directory with a tree `source`, which vorn_fs serves, and the names of its neighbours.
class KessilctlTest : public testing::Test
{
protected:
    KessilctlTest();
    ~KessilctlTest() override;

    /// Backs `source` up into `backup`. The test fails when that does.
    void BackUp();

    /// Makes vorn_fs serve `directory`, which is made if it doesn't exist.
    void Serve(const std::filesystem::path &directory);

    std::filesystem::path base;
    std::filesystem::path source;
    std::filesystem::path target;
    std::filesystem::path backup;
};

} // namespace kessil::test
