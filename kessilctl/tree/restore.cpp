#include "kessilctl/console/local_path.h"
#include "kessilctl/file/sha256.h"
#include "kessilctl/run.h"
#include "kessilctl/tree/stored_backup.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <set>

namespace kessil::kessilctl {
namespace {

class RestoreTask
{
public:
    RestoreTask(Job &job, StoredBackup backup) : m_job(job), m_backup(std::move(backup)) {}

    void Perform()
    {
        std::uint64_t total_files = 0;
        std::uint64_t total_bytes = 0;
        for (const Found &found : m_backup.tree) {
            total_files += found.entry.kind == Kind::File ? 1 : 0;
            total_bytes += found.entry.bytes;
        }
        Progress progress(m_job.screen.err, m_job.screen.columns, "restore", total_files, total_bytes,
                          Progress::Clock::now());
        m_job.progress = &progress;
        for (const Found &found : m_backup.tree)
            WriteBack(found);
        std::for_each(m_backup.tree.rbegin(), m_backup.tree.rend(), [this](const Found &found) {
            if (m_written.contains(found.path) && found.entry.kind == Kind::Directory)
                WriteTime(found);
        });
        CompareManifest();
        CompareListings();
        progress.Finish(m_job.report.files, m_job.report.bytes, Progress::Clock::now());
        m_job.progress = nullptr;
    }

private:
    void Differs(const std::string &path, const std::string &text) { m_job.Note(m_job.report.differences, path, text); }

    void WriteBack(const Found &found)
    {
        const std::uint64_t bytes_before = m_job.report.bytes;
        const std::uint64_t files_before = m_job.report.files;
        try {
            if (found.entry.kind == Kind::Directory)
                MakeDirectory(found);
            else if (found.entry.kind == Kind::File)
                WriteFile(found);
            else
                Differs(found.path, "neither file nor directory: no backup has that");
        } catch (const LibraryError &error) {
            m_job.Note(m_job.report.failures, found.path, error.what());
        }
        if (m_job.report.files == files_before)
            m_job.report.bytes = bytes_before;
    }

    void MakeDirectory(const Found &found)
    {
        const VornFile directory(m_job.library, m_job.InLibrary(found.path), VornFile::Mode::Directory);
        m_written.insert(found.path);
        ++m_job.report.directories;
    }

    void WriteTime(const Found &found)
    {
        try {
            VornFile directory(m_job.library, m_job.InLibrary(found.path), VornFile::Mode::Directory);
            directory.WriteTime(found.entry.modified);
            directory.Commit();
        } catch (const LibraryError &error) {
            m_job.Note(m_job.report.failures, found.path, error.what());
        }
    }

    void WriteFile(const Found &found)
    {
        const auto expected = m_backup.manifest.find(found.path);
        if (expected == m_backup.manifest.end())
            return Differs(found.path, "the manifest doesn't have it; not restored");
        if (!WriteContent(found, expected->second))
            return Differs(found.path, "the backup's file isn't what the manifest says; not restored");
        m_written.insert(found.path);
        ++m_job.report.files;
        if (DigestInLibrary(found.path) != expected->second)
            Differs(found.path, "what is read back isn't what was written");
        m_job.progress->Advance(m_job.report.files, m_job.report.bytes, Progress::Clock::now());
    }

    /// False, with nothing committed, when the backup's file isn't whole.
    bool WriteContent(const Found &found, const std::string &expected)
    {
        std::ifstream source(m_backup.Place(found.path), std::ios::binary);
        VornFile file(m_job.library, m_job.InLibrary(found.path), VornFile::Mode::Write);
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
            m_job.report.bytes += size;
            m_job.progress->Advance(m_job.report.files, m_job.report.bytes, Progress::Clock::now());
        }
        if (!source.is_open() || digest.Digest() != expected)
            return false;
        file.Commit();
        return true;
    }

    std::string DigestInLibrary(const std::string &path)
    {
        VornFile file(m_job.library, m_job.InLibrary(path), VornFile::Mode::Read);
        Sha256 digest;
        for (auto bytes = file.Read(); !bytes.empty(); bytes = file.Read())
            digest.Add(bytes);
        return digest.Digest();
    }

    void CompareManifest()
    {
        std::set<std::string> there;
        for (const Found &found : m_backup.tree)
            there.insert(found.path);
        for (const auto &[path, digest] : m_backup.manifest)
            if (!there.contains(path))
                Differs(path, "the backup has lost it");
    }

    /// Kind, size and time of everything that was written, as the library lists it now.
    void CompareListings()
    {
        std::map<std::string, Entry> listed;
        std::set<std::string> directories = {""};
        for (const Found &found : m_backup.tree)
            if (m_written.contains(found.path) && found.entry.kind == Kind::Directory)
                directories.insert(found.path);
        for (const std::string &directory : directories)
            ListInto(listed, directory);
        for (const Found &found : m_backup.tree)
            if (m_written.contains(found.path))
                Compare(found, listed);
    }

    void ListInto(std::map<std::string, Entry> &listed, const std::string &directory)
    {
        try {
            for (Entry &entry : m_job.library.List(m_job.InLibrary(directory)))
                listed.emplace(Join(directory, entry.name), std::move(entry));
        } catch (const LibraryError &error) {
            m_job.Note(m_job.report.failures, directory, error.what());
        }
    }

    void Compare(const Found &found, const std::map<std::string, Entry> &listed)
    {
        const auto there = listed.find(found.path);
        if (there == listed.end())
            return Differs(found.path, "was written, and the library doesn't list it");
        if (there->second.kind != found.entry.kind)
            Differs(found.path, "is now something else");
        else if (there->second.bytes != found.entry.bytes)
            Differs(found.path, "its size is " + std::to_string(there->second.bytes) + " and not " +
                                    std::to_string(found.entry.bytes));
        else if (there->second.modified != found.entry.modified)
            Differs(found.path, "its time is not the one that was written");
    }

    Job &m_job;
    StoredBackup m_backup;
    std::set<std::string> m_written; ///< what the library took
};

} // namespace

void Restore(Job &job)
{
    RestoreTask(job, ReadBackup(ToPath(job.command.directory))).Perform();
}

} // namespace kessil::kessilctl
