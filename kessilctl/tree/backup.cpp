#include "kessilctl/console/local_path.h"
#include "kessilctl/console/progress.h"
#include "kessilctl/file/sha256.h"
#include "kessilctl/tree/item_path.h"
#include "kessilctl/tree/jobs.h"
#include "kessilctl/tree/new_backup.h"
#include "kessilctl/tree/subtree.h"

#include <algorithm>
#include <set>

namespace kessil::kessilctl {
namespace {

/// Drops items whose names this side's file system can't hold, and with a directory all that is in it.
std::vector<Found> Usable(Subtree &subtree, std::vector<Found> tree, TreeReport &report)
{
    std::set<std::string> dropped;
    std::vector<Found> usable;
    for (Found &found : tree) {
        const std::size_t name_and_slash = found.entry.name.size() + 1;
        const bool orphan = found.path.size() > name_and_slash &&
                            dropped.contains(found.path.substr(0, found.path.size() - name_and_slash));
        if (!orphan && IsPlainName(found.entry.name)) {
            usable.push_back(std::move(found));
            continue;
        }
        dropped.insert(found.path);
        subtree.Note(report.unusable, found.path,
                     orphan ? "its directory isn't in the backup" : "this file system can't hold the name");
    }
    return usable;
}

/// Copies a tree into a new backup.
class Copy
{
public:
    Copy(Subtree &subtree, std::vector<Found> tree, const std::filesystem::path &directory, Console &console,
         TreeReport &report)
        : m_subtree(subtree), m_tree(std::move(tree)), m_report(report), m_backup(directory),
          m_progress(console, "backup", TotalsOf(m_tree).files, TotalsOf(m_tree).bytes, Progress::Clock::now())
    {}

    void Perform()
    {
        for (const Found &found : m_tree)
            CopyItem(found);
        // A directory's time changes with what is put into it.
        std::for_each(m_tree.rbegin(), m_tree.rend(), [this](const Found &found) {
            if (found.entry.kind == Kind::Directory)
                SetTime(found);
        });
        m_backup.WriteManifest();
        m_progress.Finish(m_report.files, m_report.bytes, Progress::Clock::now());
    }

private:
    void CopyItem(const Found &found)
    {
        switch (found.entry.kind) {
        case Kind::Directory:
            if (m_backup.AddDirectory(found.path))
                ++m_report.directories;
            else
                m_subtree.Note(m_report.unusable, found.path, "the directory can't be made here");
            return;
        case Kind::File:
            return CopyFile(found);
        case Kind::Link:
        case Kind::Other:
            m_report.skipped.push_back({found.path, found.entry.kind == Kind::Link ? "a link" : "not a regular file"});
            return;
        }
    }

    void CopyFile(const Found &found)
    {
        const std::uint64_t bytes_before = m_report.bytes;
        try {
            m_backup.BeginFile();
            const std::string digest = CopyContent(found.path);
            if (!m_backup.EndFile(found.path, digest)) {
                m_subtree.Note(m_report.unusable, found.path, "the file can't be given its name here");
                return;
            }
            ++m_report.files;
            SetTime(found);
        } catch (const LibraryError &error) {
            m_report.bytes = bytes_before;
            m_backup.DropFile();
            m_subtree.Note(m_report.failures, found.path, error.what());
        }
    }

    /// Returns the content's digest.
    std::string CopyContent(const std::string &path)
    {
        VornFile file = m_subtree.Open(path, VornFile::Mode::Read);
        Sha256 digest;
        for (auto bytes = file.Read(); !bytes.empty(); bytes = file.Read()) {
            m_backup.Write(bytes);
            digest.Add(bytes);
            m_report.bytes += bytes.size();
            Advance();
        }
        Advance();
        return digest.Digest();
    }

    void Advance() { m_progress.Advance(m_report.files, m_report.bytes, Progress::Clock::now()); }

    void SetTime(const Found &found)
    {
        if (!m_backup.SetTime(found.path, found.entry.modified))
            m_subtree.Note(m_report.unusable, found.path, "its time can't be set here");
    }

    Subtree &m_subtree;
    std::vector<Found> m_tree;
    TreeReport &m_report;
    NewBackup m_backup;
    Progress m_progress;
};

} // namespace

void Backup(const BackupOptions &options, const RunningHelper &running, Console &console, TreeReport &report)
{
    VornLibrary library(running, LibraryName(options.library));
    Subtree subtree(library, options.subtree, console, report);
    std::vector<Found> tree = Usable(subtree, subtree.Walk(true), report);
    Copy(subtree, std::move(tree), ToPath(options.directory), console, report).Perform();
    library.Close();
}

} // namespace kessil::kessilctl
