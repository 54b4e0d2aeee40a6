#include "kessilctl/console/local_path.h"
#include "kessilctl/console/progress.h"
#include "kessilctl/file/sha256.h"
#include "kessilctl/tree/comparison.h"
#include "kessilctl/tree/item_path.h"
#include "kessilctl/tree/jobs.h"
#include "kessilctl/tree/stored_backup.h"
#include "kessilctl/tree/subtree.h"

#include <algorithm>
#include <fstream>
#include <set>

namespace kessil::kessilctl {
namespace {

/// Writes a backup's tree into the library, file by file, and reads each file back.
class WriteBack
{
public:
    WriteBack(Subtree &subtree, const StoredBackup &backup, Console &console, TreeReport &report)
        : m_subtree(subtree), m_backup(backup), m_report(report),
          m_progress(console, "restore", TotalsOf(backup.tree).files, TotalsOf(backup.tree).bytes,
                     Progress::Clock::now())
    {}

    void Perform()
    {
        for (const Found &found : m_backup.tree)
            WriteItem(found);
        // A directory's time changes with what is put into it.
        std::for_each(m_backup.tree.rbegin(), m_backup.tree.rend(), [this](const Found &found) {
            if (found.entry.kind == Kind::Directory && m_written.contains(found.path))
                WriteTime(found);
        });
        CompareManifest(m_backup, m_subtree, m_report);
        CompareListings(m_backup.tree, m_written, m_subtree, m_report);
        m_progress.Finish(m_report.files, m_report.bytes, Progress::Clock::now());
    }

private:
    void NoteDifference(const Found &found, const std::string &text)
    {
        m_subtree.Note(m_report.differences, found.path, text);
    }

    void WriteItem(const Found &found)
    {
        const std::uint64_t bytes_before = m_report.bytes;
        const std::uint64_t files_before = m_report.files;
        try {
            if (found.entry.kind == Kind::Directory)
                MakeDirectory(found);
            else if (found.entry.kind == Kind::File)
                WriteFile(found);
            else
                NoteDifference(found, "neither a file nor a directory; not restored");
        } catch (const LibraryError &error) {
            m_subtree.Note(m_report.failures, found.path, error.what());
        }
        if (m_report.files == files_before)
            m_report.bytes = bytes_before;
    }

    void MakeDirectory(const Found &found)
    {
        const VornFile directory = m_subtree.Open(found.path, VornFile::Mode::Directory);
        m_written.insert(found.path);
        ++m_report.directories;
    }

    void WriteTime(const Found &found)
    {
        try {
            VornFile directory = m_subtree.Open(found.path, VornFile::Mode::Directory);
            directory.WriteTime(found.entry.modified);
            directory.Commit();
        } catch (const LibraryError &error) {
            m_subtree.Note(m_report.failures, found.path, error.what());
        }
    }

    void WriteFile(const Found &found)
    {
        const auto expected = m_backup.manifest.find(found.path);
        if (expected == m_backup.manifest.end())
            return NoteDifference(found, "not in the manifest; not restored");
        if (!WriteContent(found, expected->second))
            return NoteDifference(found, "the file in the backup doesn't match the manifest; not restored");
        m_written.insert(found.path);
        ++m_report.files;
        if (DigestInLibrary(found.path) != expected->second)
            NoteDifference(found, "what was read back differs from what was written");
        Advance();
    }

    /// False, with nothing committed, when the file in the backup doesn't have this digest.
    bool WriteContent(const Found &found, const std::string &expected)
    {
        std::ifstream source(m_backup.Place(found.path), std::ios::binary);
        VornFile file = m_subtree.Open(found.path, VornFile::Mode::Write);
        file.WriteTime(found.entry.modified);
        Sha256 digest;
        for (std::uint64_t left = found.entry.bytes; left > 0;) {
            const auto size = static_cast<std::uint32_t>(std::min<std::uint64_t>(left, VornLibrary::block_size));
            const std::span<std::byte> room = file.Room(size);
            if (!source.read(reinterpret_cast<char *>(room.data()), static_cast<std::streamsize>(room.size())))
                return false;
            digest.Add(room);
            file.Write(size);
            left -= size;
            m_report.bytes += size;
            Advance();
        }
        if (!source.is_open() || digest.Digest() != expected)
            return false;
        file.Commit();
        return true;
    }

    std::string DigestInLibrary(const std::string &path)
    {
        VornFile file = m_subtree.Open(path, VornFile::Mode::Read);
        Sha256 digest;
        for (auto bytes = file.Read(); !bytes.empty(); bytes = file.Read())
            digest.Add(bytes);
        return digest.Digest();
    }

    void Advance() { m_progress.Advance(m_report.files, m_report.bytes, Progress::Clock::now()); }

    Subtree &m_subtree;
    const StoredBackup &m_backup;
    TreeReport &m_report;
    std::set<std::string> m_written; ///< paths of what the library took
    Progress m_progress;
};

} // namespace

void Restore(const RestoreOptions &options, const RunningHelper &running, Console &console, TreeReport &report)
{
    VornLibrary library(running, LibraryName(options.library));
    Subtree subtree(library, options.subtree, console, report);
    const StoredBackup backup = ReadBackup(ToPath(options.directory));
    WriteBack(subtree, backup, console, report).Perform();
    library.Close();
}

} // namespace kessil::kessilctl
