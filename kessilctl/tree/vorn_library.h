#pragma once

#include "kessilctl/console/entry.h"
#include "kessilctl/console/exit_code.h"
#include "kessilctl/helper/running_helper.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace kessil::kessilctl {

/// A failure that the library itself reported, with its own text. The library can still be called.
class LibraryError : public Failure
{
public:
    explicit LibraryError(const std::string &text) : Failure(ExitCode::LibraryFailed, text) {}
};

/// A data source hosted by a helper, with one session open. Every call throws LibraryError for the library's own
/// failure, and another Failure when the helper can't be used any more. An interruption is such a Failure, too: then
/// only the calls that close what is open are still made.
class VornLibrary
{
public:
    /// Loads the library, checks that it has version 2 of the interface, and opens the session. What `running` refers
    /// to outlives the object.
    VornLibrary(const RunningHelper &running, WideString library);

    /// Ends the session if it is still open.
    ~VornLibrary();
    VornLibrary(const VornLibrary &) = delete;
    VornLibrary &operator=(const VornLibrary &) = delete;

    std::vector<Entry> List(const std::string &path);

    /// Ends the session.
    void Close();

    /// The most bytes that one read or write moves.
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

    RunningHelper m_running;
    WideString m_library;
    std::uint64_t m_session = 0;
    bool m_open = false;
};

/// A directory or file object of the library. The destructor closes it, whatever else has happened.
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

/// A file, or a directory to be made, open in the library. The destructor closes it; the library then drops what was
/// written and not committed.
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

    /// The next bytes, in the section itself: valid until the next call of the library. Empty at the end.
    std::span<const std::byte> Read();

    /// Sets the time that Commit gives the object. In the modes that write, the first call.
    void WriteTime(const Modified &modified);

    /// Room for the next `size` bytes (at most VornLibrary::block_size), in the section itself. Write sends them from
    /// there.
    std::span<std::byte> Room(std::uint32_t size);
    void Write(std::uint32_t size);

    /// Has the library give the object its content and time.
    void Commit();

private:
    VornLibrary &m_library;
    VornObject m_file;
    parent::InList *m_arguments = nullptr; ///< of the write that Room began
};

} // namespace kessil::kessilctl
