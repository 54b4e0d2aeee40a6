#include "new_backup.h"

#include "exit_code.h"
#include "local_path.h"
#include "platform/file_time.h"

#include <cerrno>
#include <system_error>

namespace kessil::driver {
namespace {

[[noreturn]] void Fail(const std::string &what, const std::filesystem::path &path, const std::error_code &reason)
{
    throw Failure(ExitCode::LocalFailed, what + " " + Printable(ToText(path)) + ": " + reason.message());
}

[[noreturn]] void FailWithErrno(const std::string &what, const std::filesystem::path &path)
{
    Fail(what, path, {errno, std::generic_category()});
}

} // namespace

NewBackup::NewBackup(const std::filesystem::path &directory) : m_directory(directory), m_partial(directory / "partial")
{
    std::error_code failure;
    std::filesystem::create_directories(m_directory, failure);
    if (failure)
        Fail("cannot make", m_directory, failure);
    const bool empty = std::filesystem::is_empty(m_directory, failure);
    if (failure)
        Fail("cannot look into", m_directory, failure);
    if (!empty)
        throw Failure(ExitCode::Usage, "the backup goes into an empty directory, and " +
                                           Printable(ToText(m_directory)) + " has something in it");
    std::filesystem::create_directory(m_directory / files_directory, failure);
    if (failure)
        Fail("cannot make", m_directory / files_directory, failure);
}

NewBackup::~NewBackup()
{
    DropFile();
}

void NewBackup::DropFile()
{
    m_file.close();
    m_file.clear();
    std::error_code ignored;
    std::filesystem::remove(m_partial, ignored);
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

void NewBackup::BeginFile()
{
    m_file.open(m_partial, std::ios::binary | std::ios::trunc);
    if (!m_file)
        FailWithErrno("cannot write", m_partial);
}

void NewBackup::Write(std::span<const std::byte> bytes)
{
    m_file.write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!m_file)
        FailWithErrno("cannot write", m_partial);
}

void NewBackup::Close()
{
    m_file.close();
    if (!m_file)
        FailWithErrno("cannot write", m_partial);
}

bool NewBackup::EndFile(const std::string &path, const std::string &digest)
{
    Close();
    const std::filesystem::path place = Place(path);
    std::error_code failure;
    if (std::filesystem::exists(std::filesystem::symlink_status(place, failure)))
        return false;
    std::filesystem::rename(m_partial, place, failure);
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
    Close();
    std::error_code failure;
    std::filesystem::rename(m_partial, m_directory / manifest_name, failure);
    if (failure)
        Fail("cannot write", m_directory / manifest_name, failure);
}

} // namespace kessil::driver
