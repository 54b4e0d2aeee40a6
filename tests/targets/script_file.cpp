#include "script.h"

#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <vector>

namespace {

using Script = std::map<std::string, std::vector<Behaviour>>;

Script ReadScript()
{
    Script script;
    const char *path = std::getenv("KESSIL_SCRIPT");
    std::ifstream file(path ? path : "", std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string function;
        std::string rest;
        if (words >> function) {
            std::getline(words, rest);
            script[function].push_back(ParseBehaviour(rest));
        }
    }
    return script;
}

} // namespace

Behaviour NextBehaviour(const std::string &function)
{
    static const Script script = ReadScript();
    static std::map<std::string, std::size_t> calls;
    const auto lines = script.find(function);
    if (lines == script.end())
        return {};
    const std::size_t call = calls[function]++;
    return lines->second[call < lines->second.size() ? call : lines->second.size() - 1];
}
