#include "kessilctl/tree/stored_backup.h"

#include "kessilctl/console/local_path.h"
#include "kessilctl/tree/item_path.h"
#include "kessilctl/tree/new_backup.h"
#include "platform/file_time.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace kessil::kessilctl {
namespace {

Manifest ReadManifest(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    if (!file.is_open() || file.bad())
        throw Failure(ExitCode::LocalFailed,
                      "cannot read " + Printable(ToText(path)) + "; a backup without a manifest is not complete");
    const std::string prefix = std::string(files_directory) + "/";
    Manifest manifest;
    for (const auto &[name, digest] : ParseManifest(text)) {
        if (!name.starts_with(prefix))
            throw Failure(ExitCode::LocalFailed, "the manifest names a file that is not in files/: " + Printable(name));
        manifest.emplace(name.substr(prefix.size()), digest);
    }
    return manifest;
}

Kind KindOf(const std::filesystem::file_status &status)
{
    if (std::filesystem::is_regular_file(status))
        return Kind::File;
    if (std::filesystem::is_directory(status))
        return Kind::Directory;
    return std::filesystem::is_symlink(status) ? Kind::Link : Kind::Other;
}

Entry ReadEntry(const std::filesystem::directory_entry &found)
{
    Entry entry;
    entry.name = ToText(found.path().filename());
    entry.kind = KindOf(found.symlink_status());
    if (entry.kind == Kind::File)
        entry.bytes = found.file_size();
    platform::FileTime time;
    if (!platform::ReadFileTime(found.path(), time))
        throw Failure(ExitCode::LocalFailed, Printable(ToText(found.path())) + ": its time can't be read");
    entry.modified = {time.seconds, time.nanoseconds};
    return entry;
}

std::vector<Entry> EntriesOf(const std::filesystem::path &directory)
{
    std::vector<Entry> entries;
    for (const auto &found : std::filesystem::directory_iterator(directory))
        entries.push_back(ReadEntry(found));
    std::ranges::sort(entries, {}, &Entry::name);
    return entries;
}

} // namespace

std::filesystem::path StoredBackup::Place(const std::string &path) const
{
    return files / ToPath(path);
}

StoredBackup ReadBackup(const std::filesystem::path &directory)
{
    StoredBackup backup;
    backup.files = directory / files_directory;
    backup.manifest = ReadManifest(directory / manifest_name);
    std::vector<std::string> directories = {""};
    while (!directories.empty()) {
        const std::string path = std::move(directories.back());
        directories.pop_back();
        for (Entry &entry : EntriesOf(path.empty() ? backup.files : backup.Place(path))) {
            std::string below = Join(path, entry.name);
            if (entry.kind == Kind::Directory)
                directories.push_back(below);
            backup.tree.push_back({std::move(below), std::move(entry)});
        }
    }
    return backup;
}

} // namespace kessil::kessilctl
