#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

namespace {

std::string ReadFile(const std::string &path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The indented part of the header's comment, from its first include to its last line.
std::string ExampleInHeader(const std::string &header)
{
    std::string example;
    for (std::size_t at = header.find("///     #include");
         header.compare(at, 4, "/// ") != 0 || header.compare(at, 8, "///     ") == 0;) {
        const std::size_t end = header.find('\n', at);
        const std::string line = header.substr(at, end - at);
        example += (line.size() > 8 ? line.substr(8) : std::string()) + '\n';
        at = end + 1;
    }
    return example;
}

void ExpectExampleInHeader(const std::string &name, const std::string &header)
{
    const std::string example = ReadFile(PARENT "/example/" + name);
    ASSERT_NE(example, "");
    EXPECT_EQ(ExampleInHeader(ReadFile(HEADERS "/kessil/" + header)), example + '\n');
}

TEST(ExampleTest, TheHeadersExamplesAreThoseThatAreBuilt)
{
    ExpectExampleInHeader("first_call.cpp", "parent.h");
    ExpectExampleInHeader("list_machines.cpp", "adapter.h");
}

} // namespace
