#pragma once

#include "kessilctl/console/console.h"
#include "kessilctl/console/report.h"
#include "kessilctl/tree/vorn_library.h"

#include <string>
#include <vector>

namespace kessil::kessilctl {

/// One item of a tree, and its path from the topmost directory of the subtree or backup.
struct Found
{
    std::string path;
    Entry entry;
};

/// How many files a tree has, and how many bytes are in them.
struct Totals
{
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;
};

Totals TotalsOf(const std::vector<Found> &tree);

/// The part of a data source's tree that a job works on.
class Subtree
{
public:
    /// `top` is its directory in the library, empty for the topmost. The references outlive the object.
    Subtree(VornLibrary &library, std::string top, Console &console, TreeReport &report)
        : m_library(library), m_top(std::move(top)), m_console(console), m_report(report)
    {}

    /// All items, every directory ahead of what is in it; without `recursive` those of the topmost directory alone.
    /// What can't be listed is noted as a failure and left out; throws LibraryError when that is the topmost directory.
    std::vector<Found> Walk(bool recursive);

    /// The items of one directory.
    std::vector<Entry> List(const std::string &directory) { return m_library.List(InLibrary(directory)); }

    VornFile Open(const std::string &path, VornFile::Mode mode) { return {m_library, InLibrary(path), mode}; }

    /// Adds a remark about an item to one of the report's lists, and writes it to the console.
    void Note(std::vector<Remark> &list, const std::string &path, const std::string &text);

private:
    std::string InLibrary(const std::string &path) const;
    std::string Shown(const std::string &path) const;

    VornLibrary &m_library;
    std::string m_top;
    Console &m_console;
    TreeReport &m_report;
};

} // namespace kessil::kessilctl
