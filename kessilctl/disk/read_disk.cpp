#include "kessilctl/console/local_path.h"
#include "kessilctl/disk/jobs.h"
#include "kessilctl/disk/open_disk.h"
#include "kessilctl/disk/sector_blocks.h"
#include "kessilctl/file/partial_file.h"
#include "kessilctl/file/sha256.h"

namespace kessil::kessilctl {
namespace {

using std::filesystem::path;

void RefuseExisting(const path &file)
{
    std::error_code ignored;
    if (std::filesystem::exists(std::filesystem::symlink_status(file, ignored)))
        throw Failure(ExitCode::Usage, "the sectors need a new file, but " + Printable(ToText(file)) + " exists");
}

path WithSuffix(path file, const char *suffix)
{
    return file += suffix;
}

} // namespace

void ReadDisk(const ReadDiskOptions &options, const RunningHelper &running, Password &password, Console &console,
              AdapterReport &report)
{
    HostedAdapter adapter(options.adapter, running, password, console, report);
    const path target = ToPath(options.file);
    const path partial = WithSuffix(target, ".partial");
    RefuseExisting(target);
    RefuseExisting(partial);
    PartialFile file(partial);
    file.Begin();
    Sha256 digest;
    DiskLibrary library(adapter, options);
    OpenDisk disk(adapter, options, true);
    MoveInBlocks(console, "read-disk", options.start, options.sectors * parent::sector_size,
                 [&](std::uint64_t start, std::span<std::byte> block) {
                     disk.Read(start, block);
                     file.Write(block);
                     digest.Add(block);
                     report.bytes += block.size();
                 });
    disk.Close();
    library.End();
    file.End();
    RefuseExisting(target);
    if (const std::error_code failure = file.MoveTo(target))
        FailLocally("cannot write", target, failure);
    report.digest = digest.Digest();
}

} // namespace kessil::kessilctl
