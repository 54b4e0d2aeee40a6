#pragma once

#include "kessilctl/console/exit_code.h"
#include "kessilctl/console/interruption.h"
#include <kessil/parent.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace kessil::kessilctl {

/// A failure that the library itself reported, with its own text. The conversation goes on.
class LibraryError : public std::runtime_error
{
public:
    LibraryError(std::uint32_t code, const std::string &text) : std::runtime_error(text), m_code(code) {}

    std::uint32_t Code() const { return m_code; }

private:
    std::uint32_t m_code;
};

enum class Kind : std::uint32_t
{
    File = 1,
    Directory = 2,
    Link = 3,
    Other = 4
};

/// Time of the last change of content: seconds from 1970-01-01 UTC, and nanoseconds added to them.
struct Modified
{
    std::int64_t seconds = 0;
    std::uint32_t nanoseconds = 0;
    bool operator==(const Modified &) const = default;
};

/// One item of a listing. Where `failure` isn't empty the library could tell no more than the name.
struct Entry
{
    std::string name;
    Kind kind = Kind::Other;
    std::uint64_t bytes = 0;
    Modified modified;
    std::string failure;
};

/// A data-source library hosted by a helper, with one session open. Any call throws LibraryError for the library's own
/// failure and Failure for everything after which the helper is of no more use. An interruption is a Failure, too, but
/// what is open is then closed in order: it keeps every call from being made but those that close.
class VornLibrary
{
public:
    /// Loads the library, checks that it speaks version 2, and opens the session. `helper` has been started; both it
    /// and `interruption` outlive the object.
    VornLibrary(parent::Helper &helper, const Interruption &interruption, WideString library, parent::TimeLimit limit);

    /// Ends the session if it is still open.
    ~VornLibrary();
    VornLibrary(const VornLibrary &) = delete;
    VornLibrary &operator=(const VornLibrary &) = delete;

    std::vector<Entry> List(const std::string &path);

    /// Ends the session.
    void Close();

    /// How many bytes one read or write moves.
    static constexpr std::uint32_t block_size = 1024 * 1024;

private:
    friend class VornFile;
    friend class VornObject;

    parent::OutList &Call(const char *function);
    parent::OutList &CallUninterrupted(const char *function);
    void Check(std::uint32_t result, std::uint64_t object);
    std::string ErrorText(std::uint64_t object, std::uint32_t code);
    std::uint64_t Create(const char *function);
    bool NextItem(std::uint64_t dir, Entry &entry);

    parent::Helper &m_helper;
    const Interruption &m_interruption;
    WideString m_library;
    parent::TimeLimit m_limit;
    std::uint64_t m_session = 0;
    bool m_open = false;
};

/// A directory or file object of the library; closed with this one, whatever else has happened.
class VornObject
{
public:
    VornObject(VornLibrary &library, const char *creator, const char *closer)
        : m_library(library), m_closer(closer), m_object(library.Create(creator))
    {}
    ~VornObject();
    VornObject(const VornObject &) = delete;
    VornObject &operator=(const VornObject &) = delete;

    std::uint64_t Handle() const { return m_object; }

private:
    VornLibrary &m_library;
    const char *m_closer;
    std::uint64_t m_object;
};

/// A file, or a directory to be made, open in the library. Closed with the object; what was written and not committed
/// is then dropped by the library.
class VornFile
{
public:
    enum class Mode
    {
        Read,
        Write,
        Directory
    };

    VornFile(VornLibrary &library, const std::string &path, Mode mode);

    /// The next bytes, in the section itself: valid until the library is asked for anything else. Empty at the end.
    std::span<const std::byte> Read();

    /// For the modes that write, first of all: the time that the object is to get.
    void WriteTime(const Modified &modified);

    /// Room for the next `size` bytes (at most VornLibrary::block_size), in the section itself, to be filled before
    /// Write sends them.
    std::span<std::byte> Room(std::uint32_t size);
    void Write(std::uint32_t size);

    void Commit();

private:
    VornLibrary &m_library;
    VornObject m_file;
    parent::InList *m_arguments = nullptr; ///< of the write that Room began
};

} // namespace kessil::kessilctl
