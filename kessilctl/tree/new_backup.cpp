#include "kessilctl/tree/new_backup.h"

#include "kessilctl/console/exit_code.h"
#include "kessilctl/console/local_path.h"
#include "platform/file_time.h"

#include <system_error>

namespace kessil::kessilctl {

NewBackup::NewBackup(const std::filesystem::path &directory) : m_directory(directory), m_partial(directory / "partial")
{
    std::error_code failure;
    std::filesystem::create_directories(m_directory, failure);
    if (failure)
        FailLocally("cannot make", m_directory, failure);
    const bool empty = std::filesystem::is_empty(m_directory, failure);
    if (failure)
        FailLocally("cannot read", m_directory, failure);
    if (!empty)
        throw Failure(ExitCode::Usage, "a new backup needs an empty directory, but " + Printable(ToText(m_directory)) +
                                           " has something in it");
    std::filesystem::create_directory(m_directory / files_directory, failure);
    if (failure)
        FailLocally("cannot make", m_directory / files_directory, failure);
}

std::filesystem::path NewBackup::Place(const std::string &path) const
{
    return m_directory / files_directory / ToPath(path);
}

bool NewBackup::AddDirectory(const std::string &path)
{
    std::error_code failure;
    return std::filesystem::create_directory(Place(path), failure) && !failure;
}

bool NewBackup::EndFile(const std::string &path, const std::string &digest)
{
    m_partial.End();
    const std::filesystem::path place = Place(path);
    std::error_code failure;
    if (std::filesystem::exists(std::filesystem::symlink_status(place, failure)))
        return false;
    failure = m_partial.MoveTo(place);
    if (!failure)
        m_manifest.emplace(std::string(files_directory).append("/").append(path), digest);
    return !failure;
}

bool NewBackup::SetTime(const std::string &path, const Modified &modified)
{
    return platform::WriteFileTime(Place(path), {modified.seconds, modified.nanoseconds});
}

void NewBackup::WriteManifest()
{
    const std::string text = Format(m_manifest);
    BeginFile();
    Write(std::as_bytes(std::span(text)));
    m_partial.End();
    if (const std::error_code failure = m_partial.MoveTo(m_directory / manifest_name))
        FailLocally("cannot write", m_directory / manifest_name, failure);
}

} // namespace kessil::kessilctl
