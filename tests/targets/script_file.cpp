#include "script.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <vector>

namespace {

struct Script
{
    std::string text; // of the file
    std::map<std::string, std::vector<Behaviour>> lines;
    std::map<std::string, std::size_t> calls;
};

std::string ReadText()
{
    const char *path = std::getenv("KESSIL_SCRIPT");
    std::ifstream file(path ? path : "", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

Script Parse(const std::string &text)
{
    Script script = {text, {}, {}};
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string function;
        std::string rest;
        if (words >> function) {
            std::getline(words, rest);
            script.lines[function].push_back(ParseBehaviour(rest));
        }
    }
    return script;
}

} // namespace

Behaviour NextBehaviour(const std::string &function)
{
    static Script script;
    if (std::string text = ReadText(); text != script.text)
        script = Parse(text);
    const auto lines = script.lines.find(function);
    if (lines == script.lines.end())
        return {};
    const std::size_t call = script.calls[function]++;
    return lines->second[call < lines->second.size() ? call : lines->second.size() - 1];
}
