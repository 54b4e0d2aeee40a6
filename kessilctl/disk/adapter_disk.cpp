#include "kessilctl/console/local_path.h"
#include "kessilctl/disk/adapter_job.h"
#include "kessilctl/file/partial_file.h"
#include "kessilctl/file/sha256.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <ostream>
#include <utility>
#include <vector>

namespace kessil::kessilctl {
namespace {

using std::filesystem::path;

constexpr std::uint64_t block_size = 1024 * 1024;

/// Shows the progress of one pass over the disk as long as it lives.
class Pass
{
public:
    Pass(AdapterJob &job, const char *verb, std::uint64_t bytes)
        : m_job(job), m_progress(job.screen.err, job.screen.columns, verb, 1, bytes, Progress::Clock::now())
    {
        m_job.progress = &m_progress;
    }
    ~Pass() { m_job.progress = nullptr; }
    Pass(const Pass &) = delete;
    Pass &operator=(const Pass &) = delete;

    void Add(std::uint64_t bytes)
    {
        m_bytes += bytes;
        m_progress.Advance(0, m_bytes, Progress::Clock::now());
    }
    void Finish() { m_progress.Finish(1, m_bytes, Progress::Clock::now()); }

private:
    AdapterJob &m_job;
    Progress m_progress;
    std::uint64_t m_bytes = 0;
};

/// Calls `move` with the first sector and the memory of one block after another, to the last of `bytes`.
template <typename Move>
void MoveInBlocks(AdapterJob &job, const char *verb, std::uint64_t bytes, const Move &move)
{
    std::vector<std::byte> block(std::min(bytes, block_size));
    Pass pass(job, verb, bytes);
    for (std::uint64_t at = 0; at < bytes;) {
        const auto part = std::span(block).first(std::min(bytes - at, block_size));
        move(job.command.adapter.start + at / parent::sector_size, part);
        at += part.size();
        pass.Add(part.size());
    }
    pass.Finish();
}

void RefuseExisting(const path &target)
{
    std::error_code ignored;
    if (std::filesystem::exists(std::filesystem::symlink_status(target, ignored)))
        throw Failure(ExitCode::Usage, "the sectors go into a new file, and " + Printable(ToText(target)) + " exists");
}

path WithSuffix(path file, const char *suffix)
{
    return file += suffix;
}

/// The file that goes onto the disk.
class Source
{
public:
    explicit Source(path file) : m_path(std::move(file))
    {
        std::error_code failure;
        m_size = std::filesystem::file_size(m_path, failure);
        if (failure)
            FailLocally("cannot read", m_path, failure);
        if (m_size % parent::sector_size != 0)
            throw Failure(ExitCode::Usage, "the size of " + Printable(ToText(m_path)) + ", " + std::to_string(m_size) +
                                               " bytes, is no multiple of " + std::to_string(parent::sector_size));
        m_file.open(m_path, std::ios::binary);
        if (!m_file)
            FailWithErrno("cannot read", m_path);
    }

    std::uint64_t Size() const { return m_size; }

    void Read(std::span<std::byte> block)
    {
        errno = 0;
        if (m_file.read(reinterpret_cast<char *>(block.data()), static_cast<std::streamsize>(block.size())))
            return;
        if (m_file.eof())
            throw Failure(ExitCode::LocalFailed, Printable(ToText(m_path)) + " is shorter than it was");
        FailWithErrno("cannot read", m_path);
    }

private:
    path m_path;
    std::uint64_t m_size = 0;
    std::ifstream m_file;
};

void WriteFrom(AdapterJob &job, Source &source)
{
    Sha256 digest;
    OpenDisk disk(job, false);
    MoveInBlocks(job, "write-disk", source.Size(), [&](std::uint64_t start, std::span<std::byte> block) {
        source.Read(block);
        digest.Add(block);
        disk.Write(start, block);
        job.report.bytes += block.size();
    });
    disk.Close();
    job.result.digest = digest.Digest();
}

/// Reads the disk once more, and compares.
void Verify(AdapterJob &job)
{
    Sha256 digest;
    OpenDisk disk(job, true);
    MoveInBlocks(job, "verify", job.report.bytes, [&](std::uint64_t start, std::span<std::byte> block) {
        disk.Read(start, block);
        digest.Add(block);
    });
    disk.Close();
    job.result.verified = digest.Digest() == job.result.digest;
    if (!*job.result.verified)
        job.report.differences.push_back({job.command.adapter.disk, "what is read back isn't what was written"});
}

} // namespace

void ReadDisk(AdapterJob &job)
{
    const path target = ToPath(job.command.file);
    const path partial = WithSuffix(target, ".partial");
    RefuseExisting(target);
    RefuseExisting(partial);
    PartialFile file(partial);
    file.Begin();
    Sha256 digest;
    DiskAccess access(job);
    OpenDisk disk(job, true);
    MoveInBlocks(job, "read-disk", job.command.adapter.sectors * parent::sector_size,
                 [&](std::uint64_t start, std::span<std::byte> block) {
                     disk.Read(start, block);
                     file.Write(block);
                     digest.Add(block);
                     job.report.bytes += block.size();
                 });
    disk.Close();
    access.End();
    file.End();
    RefuseExisting(target);
    if (const std::error_code failure = file.MoveTo(target))
        FailLocally("cannot write", target, failure);
    job.result.digest = digest.Digest();
}

void WriteDisk(AdapterJob &job)
{
    Source source(ToPath(job.command.file));
    DiskAccess access(job);
    WriteFrom(job, source);
    if (job.command.adapter.verify)
        Verify(job);
    access.End();
    for (const Remark &difference : job.report.differences)
        job.screen.err << "kessilctl: " << Printable(difference.file) << ": " << difference.text << '\n';
}

} // namespace kessil::kessilctl
