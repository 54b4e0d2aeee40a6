#include "disk_image.h"

#include <cerrno>
#include <system_error>
#include <utility>

namespace image_adapter {
namespace {

using std::filesystem::path;

std::string LastReason()
{
    return errno == 0 ? "the file became shorter" : std::generic_category().message(errno);
}

bool IsProtected(const path &file)
{
    using std::filesystem::perms;
    std::error_code failure;
    const perms write = perms::owner_write | perms::group_write | perms::others_write;
    return (std::filesystem::status(file, failure).permissions() & write) == perms::none;
}

} // namespace

DiskImage::DiskImage(const path &file, std::string name, bool read_only)
    : m_name(std::move(name)), m_read_only(read_only || IsProtected(file))
{
    std::error_code failure;
    if (!std::filesystem::is_regular_file(file, failure))
        throw Failure("there is no disk " + m_name);
    const std::uint64_t size = std::filesystem::file_size(file, failure);
    if (failure)
        throw Failure("cannot read the size of the disk " + m_name + ": " + failure.message());
    if (size % sector_size != 0)
        throw Failure("the size of the disk " + m_name + ", " + std::to_string(size) + " bytes, is not a multiple of " +
                      std::to_string(sector_size));
    m_sectors = size / sector_size;
    m_file.open(file, std::ios::binary | std::ios::in | (m_read_only ? std::ios::openmode() : std::ios::out));
    if (!m_file)
        throw Failure("cannot open the disk " + m_name + ": " + LastReason());
}

void DiskImage::CheckRange(std::uint64_t start, std::uint64_t count) const
{
    if (start > m_sectors || count > m_sectors - start)
        throw Failure(std::to_string(count) + " sectors from " + std::to_string(start) +
                      " on reach beyond the end of " + m_name + ", which has " + std::to_string(m_sectors));
}

void DiskImage::Read(std::uint64_t start, std::uint64_t count, void *data)
{
    CheckRange(start, count);
    errno = 0;
    m_file.clear();
    m_file.seekg(static_cast<std::streamoff>(start * sector_size));
    m_file.read(static_cast<char *>(data), static_cast<std::streamsize>(count * sector_size));
    if (!m_file)
        throw Failure("cannot read the disk " + m_name + ": " + LastReason());
}

void DiskImage::Write(std::uint64_t start, std::uint64_t count, const void *data)
{
    if (m_read_only)
        throw Failure("the disk " + m_name + " is open for reading only");
    CheckRange(start, count);
    errno = 0;
    m_file.clear();
    m_file.seekp(static_cast<std::streamoff>(start * sector_size));
    m_file.write(static_cast<const char *>(data), static_cast<std::streamsize>(count * sector_size));
    if (!m_file.flush())
        throw Failure("cannot write the disk " + m_name + ": " + LastReason());
}

void DiskImage::Close()
{
    errno = 0;
    m_file.clear();
    m_file.close();
    if (!m_file)
        throw Failure("cannot close the disk " + m_name + ": " + LastReason());
}

} // namespace image_adapter
