#include "kessilctl/console/local_path.h"
#include "kessilctl/file/sha256.h"
#include "kessilctl/run.h"
#include "kessilctl/tree/new_backup.h"

#include <algorithm>
#include <set>

namespace kessil::kessilctl {
namespace {

/// Leaves what this side's file system can hold; the rest is noted. A directory that goes takes its content along.
std::vector<Found> Usable(Job &job, std::vector<Found> tree)
{
    std::set<std::string> refused;
    std::vector<Found> usable;
    for (Found &found : tree) {
        const std::size_t name_and_slash = found.entry.name.size() + 1;
        const bool lost = found.path.size() > name_and_slash &&
                          refused.contains(found.path.substr(0, found.path.size() - name_and_slash));
        if (!lost && IsPlainName(found.entry.name)) {
            usable.push_back(std::move(found));
            continue;
        }
        refused.insert(found.path);
        job.Note(job.report.unusable, found.path,
                 lost ? "its directory isn't in the backup" : "the name can't be kept here");
    }
    return usable;
}

class BackupTask
{
public:
    BackupTask(Job &job, std::vector<Found> tree)
        : m_job(job), m_tree(std::move(tree)), m_backup(ToPath(job.command.directory))
    {}

    void Perform()
    {
        std::uint64_t total_files = 0;
        std::uint64_t total_bytes = 0;
        for (const Found &found : m_tree) {
            total_files += found.entry.kind == Kind::File ? 1 : 0;
            total_bytes += found.entry.kind == Kind::File ? found.entry.bytes : 0;
        }
        Progress progress(m_job.screen.err, m_job.screen.columns, "backup", total_files, total_bytes,
                          Progress::Clock::now());
        m_job.progress = &progress;
        for (const Found &found : m_tree)
            Keep(found);
        std::for_each(m_tree.rbegin(), m_tree.rend(), [this](const Found &found) {
            if (found.entry.kind == Kind::Directory)
                KeepTime(found);
        });
        m_backup.WriteManifest();
        progress.Finish(m_job.report.files, m_job.report.bytes, Progress::Clock::now());
        m_job.progress = nullptr;
    }

private:
    void Keep(const Found &found)
    {
        Report &report = m_job.report;
        switch (found.entry.kind) {
        case Kind::Directory:
            if (m_backup.AddDirectory(found.path))
                ++report.directories;
            else
                m_job.Note(report.unusable, found.path, "the directory can't be made here");
            return;
        case Kind::File:
            return KeepFile(found);
        case Kind::Link:
        case Kind::Other:
            report.skipped.push_back({found.path, found.entry.kind == Kind::Link ? "a link" : "not a regular file"});
            return;
        }
    }

    void KeepFile(const Found &found)
    {
        Report &report = m_job.report;
        const std::uint64_t bytes_before = report.bytes;
        try {
            Sha256 digest;
            m_backup.BeginFile();
            Copy(found, digest);
            if (!m_backup.EndFile(found.path, digest.Digest())) {
                m_job.Note(report.unusable, found.path, "the file can't be kept here under its name");
                return;
            }
            ++report.files;
            KeepTime(found);
        } catch (const LibraryError &error) {
            report.bytes = bytes_before;
            m_backup.DropFile();
            m_job.Note(report.failures, found.path, error.what());
        }
    }

    void Copy(const Found &found, Sha256 &digest)
    {
        VornFile file(m_job.library, m_job.InLibrary(found.path), VornFile::Mode::Read);
        for (auto bytes = file.Read(); !bytes.empty(); bytes = file.Read()) {
            m_backup.Write(bytes);
            digest.Add(bytes);
            m_job.report.bytes += bytes.size();
            m_job.progress->Advance(m_job.report.files, m_job.report.bytes, Progress::Clock::now());
        }
        m_job.progress->Advance(m_job.report.files, m_job.report.bytes, Progress::Clock::now());
    }

    void KeepTime(const Found &found)
    {
        if (!m_backup.SetTime(found.path, found.entry.modified))
            m_job.Note(m_job.report.unusable, found.path, "its time can't be kept here");
    }

    Job &m_job;
    std::vector<Found> m_tree;
    NewBackup m_backup;
};

} // namespace

void Backup(Job &job)
{
    BackupTask(job, Usable(job, job.Walk(true))).Perform();
}

} // namespace kessil::kessilctl
