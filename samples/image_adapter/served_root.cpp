#include "served_root.h"

#include "is_link.h"

#include <algorithm>

namespace image_adapter {
namespace {

using std::filesystem::path;

path ToPath(const std::string &text)
{
    return std::u8string(text.begin(), text.end());
}

std::string ToText(const path &some)
{
    const std::u8string text = some.u8string();
    return {text.begin(), text.end()};
}

/// Whether the system takes the name for that of something in its directory.
bool IsPlainName(const std::string &name)
{
    if (name.empty() || name == "." || name == "..")
        return false;
    const bool any_other_name = path::preferred_separator == '/';
    return any_other_name ||
           (name.find_first_of("\\:") == std::string::npos && name.back() != '.' && name.back() != ' ');
}

std::filesystem::directory_iterator Open(const path &directory, const std::string &shown)
{
    std::error_code failure;
    std::filesystem::directory_iterator content(directory, failure);
    if (failure)
        throw Failure("cannot list " + shown + ": " + failure.message());
    return content;
}

tag_item_data ItemOfFile(const std::filesystem::directory_entry &file)
{
    return {ToText(file.path().filename()), 1, file.file_size(), -1};
}

tag_item_data ItemOfDirectory(const std::filesystem::directory_entry &directory)
{
    tag_item_data item{ToText(directory.path().filename()), 0, 0, 0};
    for (const auto &found : Open(directory.path(), item.item_name)) {
        if (IsLink(found.path()))
            continue;
        if (found.is_directory())
            ++item.item_extra;
        if (!found.is_regular_file())
            continue;
        ++item.item_number;
        item.item_value += found.file_size();
    }
    return item;
}

AdapterListing List(const path &directory, const std::string &shown, bool with_files)
{
    AdapterListing listing;
    for (const auto &found : Open(directory, shown)) {
        if (IsLink(found.path()))
            continue;
        if (found.is_directory())
            listing.push_back(ItemOfDirectory(found));
        else if (with_files && found.is_regular_file())
            listing.push_back(ItemOfFile(found));
    }
    listing.sort(
        [](const tag_item_data &left, const tag_item_data &right) { return left.item_name < right.item_name; });
    return listing;
}

} // namespace

std::string Below(const std::string &path, const std::string &name)
{
    return path.empty() || name.empty() ? path + name : path + '/' + name;
}

ServedRoot::ServedRoot(const std::string &directory) : m_name(directory), m_directory(ToPath(directory))
{
    std::error_code failure;
    if (!std::filesystem::is_directory(m_directory, failure))
        throw Failure("the root " + directory + " is not a directory");
}

path ServedRoot::Place(const std::string &text) const
{
    path place = m_directory;
    for (std::size_t start = 0; start <= text.size() && !text.empty();) {
        const std::size_t end = std::min(text.find('/', start), text.size());
        const std::string name = text.substr(start, end - start);
        if (!IsPlainName(name))
            throw Failure("the path " + text + " does not keep to the root");
        place /= ToPath(name);
        if (IsLink(place))
            throw Failure("the path " + text + " leads through a link");
        start = end + 1;
    }
    return place;
}

AdapterListing ServedRoot::Directories(const std::string &path) const
{
    return List(Place(path), path, false);
}

AdapterListing ServedRoot::Everything(const std::string &path) const
{
    return List(Place(path), path.empty() ? m_name : path, true);
}

} // namespace image_adapter
