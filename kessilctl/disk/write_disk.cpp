#include "kessilctl/console/local_path.h"
#include "kessilctl/disk/jobs.h"
#include "kessilctl/disk/open_disk.h"
#include "kessilctl/disk/sector_blocks.h"
#include "kessilctl/file/partial_file.h"
#include "kessilctl/file/sha256.h"

#include <cerrno>
#include <fstream>

namespace kessil::kessilctl {
namespace {

using std::filesystem::path;

/// The file that is written to the disk.
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
                                               " bytes, is not a multiple of " + std::to_string(parent::sector_size));
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
            throw Failure(ExitCode::LocalFailed, Printable(ToText(m_path)) + " became shorter while it was read");
        FailWithErrno("cannot read", m_path);
    }

private:
    path m_path;
    std::uint64_t m_size = 0;
    std::ifstream m_file;
};

void WriteFrom(Source &source, HostedAdapter &adapter, const WriteDiskOptions &options, Console &console,
               AdapterReport &report)
{
    Sha256 digest;
    OpenDisk disk(adapter, options, false);
    MoveInBlocks(console, "write-disk", options.start, source.Size(),
                 [&](std::uint64_t start, std::span<std::byte> block) {
                     source.Read(block);
                     digest.Add(block);
                     disk.Write(start, block);
                     report.bytes += block.size();
                 });
    disk.Close();
    report.digest = digest.Digest();
}

/// Reads back what was written, and compares the digests.
void Verify(HostedAdapter &adapter, const WriteDiskOptions &options, Console &console, AdapterReport &report)
{
    Sha256 digest;
    OpenDisk disk(adapter, options, true);
    MoveInBlocks(console, "verify", options.start, report.bytes, [&](std::uint64_t start, std::span<std::byte> block) {
        disk.Read(start, block);
        digest.Add(block);
    });
    disk.Close();
    report.verified = digest.Digest() == report.digest;
}

} // namespace

void WriteDisk(const WriteDiskOptions &options, const RunningHelper &running, Password &password, Console &console,
               AdapterReport &report)
{
    HostedAdapter adapter(options.adapter, running, password, console, report);
    Source source(ToPath(options.file));
    DiskLibrary library(adapter, options);
    WriteFrom(source, adapter, options, console, report);
    if (options.verify)
        Verify(adapter, options, console, report);
    library.End();
    if (report.verified == false)
        console.WriteMessage(Printable(options.disk) + ": what was read back differs from what was written");
}

} // namespace kessil::kessilctl
