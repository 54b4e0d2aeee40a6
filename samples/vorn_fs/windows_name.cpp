#include "windows_name.h"

#include "tree.h"

#include <algorithm>
#include <cwctype>

namespace vorn_fs {
namespace {

void AppendUtf8(std::string &text, std::uint32_t character)
{
    const auto put = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
    if (character < 0x80) {
        put(character);
        return;
    }
    const int more = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    const std::uint32_t lead = more == 1 ? 0xC0 : more == 2 ? 0xE0 : 0xF0;
    put(lead | (character >> (6 * more)));
    for (int at = more - 1; at >= 0; --at)
        put(0x80 | ((character >> (6 * at)) & 0x3F));
}

bool IsDeviceName(const std::wstring &name)
{
    std::wstring stem = name.substr(0, name.find(L'.'));
    while (!stem.empty() && stem.back() == L' ')
        stem.pop_back();
    for (wchar_t &unit : stem)
        unit = static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(unit)));
    for (const wchar_t *device : {L"CON", L"PRN", L"AUX", L"NUL", L"CONIN$", L"CONOUT$"})
        if (stem == device)
            return true;
    const std::wstring kind = stem.substr(0, 3);
    return stem.size() == 4 && (kind == L"COM" || kind == L"LPT") &&
           std::wstring(L"0123456789\u00B9\u00B2\u00B3").find(stem[3]) != std::wstring::npos;
}

} // namespace

std::string Narrow(const std::wstring &wide)
{
    std::string text;
    for (std::size_t at = 0; at < wide.size(); ++at) {
        std::uint32_t character = wide[at];
        const std::uint32_t next = at + 1 < wide.size() ? wide[at + 1] : 0u;
        if (character >= 0xD800 && character < 0xDC00 && next >= 0xDC00 && next < 0xE000) {
            character = 0x10000 + ((character - 0xD800) << 10) + (next - 0xDC00);
            ++at;
        }
        AppendUtf8(text, character);
    }
    return text;
}

std::wstring Widen(const std::string &text)
{
    std::wstring wide;
    for (std::size_t at = 0; at < text.size();) {
        const auto lead = static_cast<unsigned char>(text[at++]);
        const int more = lead < 0x80 ? 0 : lead < 0xC2 ? -1 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : lead < 0xF5 ? 3 : -1;
        if (more < 0)
            return {};
        std::uint32_t character = more == 0 ? lead : lead & (0x3Fu >> more);
        for (int left = more; left > 0; --left, ++at) {
            if (at == text.size() || (static_cast<unsigned char>(text[at]) & 0xC0) != 0x80)
                return {};
            character = (character << 6) | (static_cast<unsigned char>(text[at]) & 0x3F);
        }
        if ((more == 2 && character < 0x800) || (more == 3 && (character < 0x10000 || character > 0x10FFFF)))
            return {};
        if (character >= 0x10000) {
            wide += static_cast<wchar_t>(0xD800 + ((character - 0x10000) >> 10));
            character = 0xDC00 + ((character - 0x10000) & 0x3FF);
        }
        wide += static_cast<wchar_t>(character);
    }
    return wide;
}

bool IsPlainName(const std::string &name)
{
    const std::wstring wide = Widen(name);
    if (wide.empty() || wide.back() == L'.' || wide.back() == L' ' || IsDeviceName(wide))
        return false;
    return std::none_of(wide.begin(), wide.end(), [](wchar_t unit) {
        return unit < 0x20 || std::wstring(L"<>:\"/\\|?*").find(unit) != std::wstring::npos;
    });
}

} // namespace vorn_fs
