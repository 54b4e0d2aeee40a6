#include "script.h"

#include <cstdlib>
#include <sstream>

namespace {

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

// `\xHH` as the byte that it stands for.
std::string Unescaped(const std::string &text)
{
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool escaped = text.compare(at, 2, "\\x") == 0 && at + 3 < text.size();
        plain += escaped ? Bytes(text.substr(at + 2, 2)) : text.substr(at, 1);
        at += escaped ? 3 : 0;
    }
    return plain;
}

} // namespace

std::optional<std::uint64_t> Behaviour::NumberOf(const std::string &key) const
{
    const auto word = words.find(key);
    return word == words.end() ? std::nullopt : std::optional(Number(word->second));
}

std::optional<std::string> Behaviour::BytesOf(const std::string &key) const
{
    const auto word = words.find(key);
    return word == words.end() ? std::nullopt : std::optional(Bytes(word->second));
}

std::optional<std::string> Behaviour::TextOf(const std::string &key) const
{
    const auto word = words.find(key);
    return word == words.end() ? std::nullopt : std::optional(Unescaped(word->second));
}

Behaviour ParseBehaviour(const std::string &line)
{
    std::istringstream words(line);
    Behaviour behaviour;
    std::string word;
    while (words >> word) {
        const std::size_t equals = word.find('=');
        const std::string key = word.substr(0, equals);
        const std::string value = equals == std::string::npos ? "" : word.substr(equals + 1);
        if (key != "text") {
            Set(behaviour, key, value);
            behaviour.words[key] = value;
            continue;
        }
        std::string rest;
        std::getline(words, rest);
        behaviour.text = value + rest;
    }
    return behaviour;
}
