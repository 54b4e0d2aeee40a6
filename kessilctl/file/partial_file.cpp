#include "kessilctl/file/partial_file.h"

#include "kessilctl/console/exit_code.h"
#include "kessilctl/console/local_path.h"

#include <cerrno>

namespace kessil::kessilctl {

void PartialFile::Begin()
{
    m_file.open(m_path, std::ios::binary | std::ios::trunc);
    if (!m_file)
        FailWithErrno("cannot write", m_path);
    m_begun = true;
}

void PartialFile::Write(std::span<const std::byte> bytes)
{
    m_file.write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!m_file)
        FailWithErrno("cannot write", m_path);
}

void PartialFile::End()
{
    m_file.close();
    if (!m_file)
        FailWithErrno("cannot write", m_path);
}

std::error_code PartialFile::MoveTo(const std::filesystem::path &place)
{
    std::error_code failure;
    std::filesystem::rename(m_path, place, failure);
    m_begun = bool(failure);
    return failure;
}

void PartialFile::Drop()
{
    if (!m_begun)
        return;
    m_begun = false;
    m_file.close();
    m_file.clear();
    std::error_code ignored;
    std::filesystem::remove(m_path, ignored);
}

void FailLocally(const std::string &what, const std::filesystem::path &path, const std::error_code &reason)
{
    throw Failure(ExitCode::LocalFailed, what + " " + Printable(ToText(path)) + ": " + reason.message());
}

void FailWithErrno(const std::string &what, const std::filesystem::path &path)
{
    FailLocally(what, path, {errno, std::generic_category()});
}

} // namespace kessil::kessilctl
