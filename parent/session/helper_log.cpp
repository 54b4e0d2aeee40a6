#include "parent/session/helper_log.h"

#include "parent/section/shared_section.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace kessil::parent {
namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t longest_tail = 4096;
constexpr int most_lines = 10;

std::string ReadFrom(const fs::path &path, std::uintmax_t start)
{
    std::ifstream file(path, std::ios::binary);
    file.seekg(static_cast<std::streamoff>(start));
    return {std::istreambuf_iterator<char>(file), {}};
}

// The start of the last lines of a text that ends without a line end.
std::size_t StartOfLastLines(const std::string &text)
{
    std::size_t start = text.size();
    for (int line = 0; line < most_lines && start != 0; ++line) {
        const std::size_t end = text.rfind('\n', start - 1);
        if (end == text.npos)
            return 0;
        start = end;
    }
    return start == 0 ? 0 : start + 1;
}

} // namespace

HelperLog::HelperLog(const fs::path &path) : m_owned(path.empty())
{
    std::error_code ignored;
    m_path = fs::absolute(m_owned ? fs::temp_directory_path(ignored) / ("kessil-" + RandomDigits() + ".log") : path,
                          ignored);
    const std::uintmax_t size = fs::file_size(m_path, ignored);
    m_start = ignored ? 0 : size;
}

HelperLog::~HelperLog()
{
    std::error_code ignored;
    if (m_owned)
        fs::remove(m_path, ignored);
}

std::string HelperLog::Tail() const
{
    std::error_code error;
    const std::uintmax_t size = fs::file_size(m_path, error);
    if (error || size <= m_start)
        return {};
    std::string text = ReadFrom(m_path, std::max(m_start, size - std::min(size, longest_tail)));
    std::erase(text, '\r');
    while (text.ends_with('\n'))
        text.pop_back();
    text.erase(0, StartOfLastLines(text));

    std::string tail;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        tail.append("\n  ").append(text, start, end - start);
        start = end + 1;
    }
    std::replace_if(
        tail.begin(), tail.end(), [](unsigned char c) { return (c < ' ' && c != '\n' && c != '\t') || c == 0x7F; },
        '?');
    return tail;
}

} // namespace kessil::parent
