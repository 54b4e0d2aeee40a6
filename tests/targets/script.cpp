#include "script.h"

#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <vector>

namespace {

using Script = std::map<std::string, std::vector<Behaviour>>;

std::uint64_t Number(const std::string &text)
{
    return std::strtoull(text.c_str(), nullptr, 0);
}

std::string Bytes(const std::string &hexadecimal)
{
    std::string bytes;
    for (std::size_t at = 0; at + 1 < hexadecimal.size(); at += 2)
        bytes += static_cast<char>(std::strtoul(hexadecimal.substr(at, 2).c_str(), nullptr, 16));
    return bytes;
}

void Set(Behaviour &behaviour, const std::string &key, const std::string &value)
{
    if (key == "result")
        behaviour.result = Number(value);
    else if (key == "out")
        behaviour.out = Number(value);
    else if (key == "fill")
        behaviour.fill = Bytes(value);
    else if (key == "count_up")
        behaviour.count_up = Number(value);
    else if (key == "peek")
        behaviour.peek = Number(value);
}

Behaviour ParseWords(std::istringstream &words)
{
    Behaviour behaviour;
    std::string word;
    while (words >> word) {
        const std::size_t equals = word.find('=');
        const std::string key = word.substr(0, equals);
        const std::string value = equals == std::string::npos ? "" : word.substr(equals + 1);
        if (key != "text") {
            Set(behaviour, key, value);
            continue;
        }
        std::string rest;
        std::getline(words, rest);
        behaviour.text = value + rest;
    }
    return behaviour;
}

Script ReadScript()
{
    Script script;
    const char *path = std::getenv("KESSIL_SCRIPT");
    std::ifstream file(path ? path : "", std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string function;
        if (words >> function)
            script[function].push_back(ParseWords(words));
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
