#pragma once

#include <kessil/parent.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace kessil::parent {

/// A directory of its own for each test case, gone with it.
class TemporaryDirectory
{
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory &) = delete;
    TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;

    const std::filesystem::path &Path() const { return m_path; }

    void WriteFile(const std::string &name, const std::string &content) const;

    /// A text, its line ends as '\n'; empty when there is no such file.
    std::string ReadFile(const std::string &name) const;

private:
    std::filesystem::path m_path;
};

/// What a helper that is gone has left in the system: its pipe and its sections, by the names that the scripted helper
/// wrote with `log_names`. Empty when nothing is left.
std::string Leftovers(const TemporaryDirectory &directory);

/// Runs the scripted helper. The helper is started only by Start, so that a test writes the script first.
class ScriptedTest : public testing::Test
{
protected:
    ScriptedTest();

    /// The helper that runs this script, constructed and not yet started.
    Helper &Prepare(const std::string &script);

    /// The same, started.
    Helper &Start(const std::string &script);

    /// Starts it with the lines that connect and take the first section in front, and has the first argument list
    /// begun.
    Helper &StartWithSection(const std::string &script);

    /// Calls function f with signature s of library a with the arguments laid out so far.
    Result CallF(const TimeLimit &limit = {});

    /// Ends the run in order and fails the test when the script did not end with code 0.
    void ExpectGoodEnd();

    std::string Log() const { return directory.ReadFile("log"); }

    TemporaryDirectory directory;
    Options options;
    std::unique_ptr<Helper> helper;
};

/// The request that CallF sends: library a, function f, signature s.
inline const std::string call_f = "expect 46 00000008 6100 0000 6600 7300\n";

/// The request of the orderly stop.
inline const std::string stop = "expect 66 01\n";

inline const std::string success = "send 53 00000000\n";

} // namespace kessil::parent
