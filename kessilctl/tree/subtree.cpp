#include "kessilctl/tree/subtree.h"

#include "kessilctl/console/local_path.h"
#include "kessilctl/tree/item_path.h"

#include <utility>

namespace kessil::kessilctl {

Totals TotalsOf(const std::vector<Found> &tree)
{
    Totals totals;
    for (const Found &found : tree) {
        if (found.entry.kind != Kind::File)
            continue;
        ++totals.files;
        totals.bytes += found.entry.bytes;
    }
    return totals;
}

std::vector<Found> Subtree::Walk(bool recursive)
{
    std::vector<Found> tree;
    std::vector<std::string> directories = {""};
    while (!directories.empty()) {
        const std::string directory = std::move(directories.back());
        directories.pop_back();
        std::vector<Entry> entries;
        try {
            entries = List(directory);
        } catch (const LibraryError &error) {
            if (directory.empty())
                throw LibraryError(Shown(directory) + ": " + error.what());
            Note(m_report.failures, directory, error.what());
        }
        for (Entry &entry : entries) {
            const std::string path = Join(directory, entry.name);
            if (!entry.failure.empty()) {
                Note(m_report.failures, path, entry.failure);
                continue;
            }
            if (recursive && entry.kind == Kind::Directory)
                directories.push_back(path);
            tree.push_back({path, std::move(entry)});
        }
    }
    return tree;
}

void Subtree::Note(std::vector<Remark> &list, const std::string &path, const std::string &text)
{
    list.push_back({path, text});
    m_console.WriteMessage(Shown(path) + ": " + Printable(text));
}

std::string Subtree::InLibrary(const std::string &path) const
{
    return path.empty() ? m_top : Join(m_top, path);
}

std::string Subtree::Shown(const std::string &path) const
{
    const std::string whole = path.empty() ? m_top : path;
    return whole.empty() ? "the topmost directory" : Printable(whole);
}

} // namespace kessil::kessilctl
