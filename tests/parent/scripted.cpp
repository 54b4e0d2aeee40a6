#include "parent/scripted.h"

#include "platform/pipe.h"
#include "platform/section.h"
#include "platform/text.h"

#include <fstream>
#include <iterator>
#include <random>
#include <sstream>

namespace kessil::parent {

namespace fs = std::filesystem;

TemporaryDirectory::TemporaryDirectory()
{
    std::random_device source;
    do {
        m_path = fs::temp_directory_path() / ("parent-test-" + std::to_string(source()));
    } while (!fs::create_directory(m_path));
}

TemporaryDirectory::~TemporaryDirectory()
{
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

void TemporaryDirectory::WriteFile(const std::string &name, const std::string &content) const
{
    std::ofstream(m_path / name, std::ios::binary) << content;
}

std::string TemporaryDirectory::ReadFile(const std::string &name) const
{
    std::ifstream file(m_path / name, std::ios::binary);
    std::string content{std::istreambuf_iterator<char>(file), {}};
    std::erase(content, '\r');
    return content;
}

namespace {

void CheckPipe(const std::string &name, std::string &left)
{
    const platform::PipeHandle pipe = platform::ConnectPipe(platform::FromUtf8(name), 1);
    if (pipe == platform::invalid_pipe)
        return;
    left += "pipe " + name + "; ";
    platform::ClosePipe(pipe);
}

void CheckSection(const std::string &name, std::string &left)
{
    const platform::SectionHandle section = platform::OpenSection(platform::FromUtf8(name), 1);
    if (section == nullptr)
        return;
    left += "section " + name + "; ";
    platform::CloseSection(section);
}

} // namespace

std::string Leftovers(const TemporaryDirectory &directory)
{
    std::istringstream names(directory.ReadFile("names"));
    std::string left;
    std::string name;
    if (!std::getline(names, name))
        return "no names were written down";
    CheckPipe(name, left);
    // A name with a `/` is a file, in a directory made for it.
    if (name.starts_with('/') && fs::exists(fs::path(name).parent_path()))
        left += "directory of " + name + "; ";
    while (std::getline(names, name)) {
        CheckSection(name, left);
        name.back() = name.back() == '0' ? '1' : '0';
        CheckSection(name, left);
    }
    return left;
}

ScriptedTest::ScriptedTest()
{
    options.program = SCRIPTED_HELPER;
    options.working_directory = directory.Path();
    options.log_file = directory.Path() / "log";
    options.attach_limit = std::chrono::seconds(30);
}

Helper &ScriptedTest::Prepare(const std::string &script)
{
    directory.WriteFile("script", script);
    helper = std::make_unique<Helper>(options);
    return *helper;
}

Helper &ScriptedTest::Start(const std::string &script)
{
    Prepare(script);
    const Result result = helper->Start();
    EXPECT_TRUE(result) << result.message;
    return *helper;
}

Helper &ScriptedTest::StartWithSection(const std::string &script)
{
    Start("attach\nsection\nlog_names\n" + script);
    helper->Begin();
    return *helper;
}

Result ScriptedTest::CallF(const TimeLimit &limit)
{
    return helper->Call(u"a", "f", "s", limit);
}

void ScriptedTest::ExpectGoodEnd()
{
    const Result result = helper->Stop();
    EXPECT_TRUE(result) << result.message << Log();
    EXPECT_EQ(result.exit_code, 0U);
}

} // namespace kessil::parent
