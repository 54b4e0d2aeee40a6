#include "tests/kessilctl/scripted_library.h"

#include "tests/support/set_variable.h"

#include <algorithm>
#include <array>
#include <sstream>

namespace kessil::test {

void ScriptedLibrary::Script(const std::string &lines)
{
    WriteFile(base / "script", lines);
    SetVariable("KESSIL_SCRIPT", (base / "script").string());
    SetVariable("KESSIL_RECORD", (base / "record").string());
}

std::string ScriptedLibrary::ItemLine(std::uint32_t kind, const std::string &name, std::uint32_t bytes)
{
    std::array<unsigned char, 800> item = {};
    item[0] = static_cast<unsigned char>(kind);
    item[4] = static_cast<unsigned char>(name.size());
    item[8] = static_cast<unsigned char>(bytes);
    std::copy(name.begin(), name.end(), item.begin() + 32);
    std::string digits;
    for (const unsigned char byte : item)
        digits.append(1, "0123456789abcdef"[byte / 16]).append(1, "0123456789abcdef"[byte % 16]);
    return "VornGetNextDirItem fill=" + digits + "\n";
}

std::string ScriptedLibrary::OneFile(const std::string &name)
{
    return "VornCreateSession out=0x51\nVornCreateDir out=0xD1\nVornCreateFile out=0xF1\n" + ItemLine(1, name, 3) +
           "VornGetNextDirItem result=1\n";
}

std::vector<std::string> ScriptedLibrary::Recorded(const std::string &function) const
{
    std::istringstream record(ReadFile(base / "record"));
    std::vector<std::string> lines;
    for (std::string line; std::getline(record, line);)
        if (line.rfind(function + " ", 0) == 0)
            lines.push_back(line);
    return lines;
}

} // namespace kessil::test
