#pragma once

#include "channel/byte_buffer.h"
#include "channel/read_ahead.h"
#include "platform/pipe.h"
#include "platform/section.h"
#include "platform/text.h"

#include <cstdint>

// A frame, in both directions:
//   offset 0  1 byte   type, an ASCII letter
//   offset 1  4 bytes  length of the payload, big-endian
//   offset 5           payload (records.h)
// The byte 'f' stands alone and is followed by one command byte instead.

namespace kessil {

/// The component's name in the log.
inline constexpr const char *channel_component = "commfunc";

/// The process's one link to its parent: the pipe that carries requests and replies, and the shared section that
/// carries the arguments and results of a call. A client of both. For the main thread only, without locks. Every
/// operation returns true for success and otherwise leaves the reason in `error`.
class CIPCCommunication
{
public:
    CIPCCommunication() : m_buffer(1024) {}
    ~CIPCCommunication() { Close(); }
    CIPCCommunication(const CIPCCommunication &) = delete;
    CIPCCommunication &operator=(const CIPCCommunication &) = delete;

    /// Opens the pipe of that full name, waiting up to 30 seconds for it.
    bool Attach(const WideString &pipe_name, WideString &error);

    /// Gives up view, section and pipe, in that order. May be called at any time, also after a fault in a library.
    void Close();

    /// Reads exactly `size` bytes. A stream that ends before the first of them sets `eof`, which is never cleared
    /// here, and is a success. One that ends later closes the channel and is a success as well: the next read fails.
    /// The rest of the block is then all ones, which ends no string and makes no length 0, so that no
    /// frame that breaks off is taken for a whole one.
    bool ReadDataFromPipe(void *buffer, std::uint32_t size, bool &eof, WideString &error);

    /// Writes the block in one piece. A failure leaves the channel open.
    bool WriteDataToPipe(const void *data, std::uint32_t size, WideString &error);

    /// Reads the next frame, whatever its type. A new section that the parent announces is taken in and answered
    /// on the way, and never reaches the caller. `data` points into the channel's buffer and holds until the next
    /// operation on the channel.
    bool GetNextRequest(char &type, unsigned char *&data, std::uint32_t &size, bool &eof, WideString &error);

    /// The same for the request loop. A type byte that stands in `unframed_types` (a zero byte always does) is
    /// returned at once, with no payload and nothing read behind it.
    bool GetNextRequestCond(const char *unframed_types, char &type, unsigned char *&data, std::uint32_t &size,
                            bool &eof, WideString &error);

    /// Overwrites the payload of the last request, which held a secret, wherever the channel keeps a copy. `data` of
    /// that request is all zeros then.
    void WipeRequest();

    /// Begins a frame in the channel's buffer. The payload of an earlier request is lost.
    bool BeginMessage(char type, WideString &error);

    /// Append to the frame, numbers big-endian, the string with its zero unit. A buffer that can't grow for a number
    /// raises std::bad_alloc with the reason in `error`: there is no place for the number and no report of it.
    bool AppendUInt32(std::uint32_t value, WideString &error);
    bool AppendUInt64(std::uint64_t value, WideString &error);
    bool AppendString(const WideString &text, WideString &error);

    /// Puts the payload's length into the frame and writes it.
    bool SendMessage(WideString &error);

    /// Sends an empty 'S' frame.
    bool SendSuccess(WideString &error);

    /// Replaces the section by a new one of `size` bytes with the old content, as far as it fits, and has the parent
    /// agree. The parent's refusal leaves the new section in place; a section that can't be made closes the channel.
    bool ResizeSharedMem(std::uint32_t size, WideString &error);

    /// The section as it is mapped now: null and 0 when there is none. Both change whenever the section is replaced.
    unsigned char *SharedView() const { return m_sharedView; }
    std::uint32_t SharedSize() const { return m_sharedSize; }

    /// From now on the sections that this side makes also admit the local Users group.
    void AdmitUsers() { m_extraUsersAccess = true; }

private:
    bool IsAttached() const { return m_hNamedPipe != platform::invalid_pipe; }

    // How the reading of a frame's payload ended: the pipe failed; there is no memory or the parent's section was
    // refused; the caller has a frame or the end of the stream; the frame was the channel's own affair.
    enum class FrameState
    {
        Failed,
        Refused,
        Complete,
        Absorbed
    };
    bool BeginFrame(WideString &error);
    bool ReadHeader(std::uint32_t from, bool &eof, WideString &error);
    FrameState ReadPayload(char &type, unsigned char *&data, std::uint32_t &size, bool &eof, WideString &error);
    bool TakeParentsSection(const unsigned char *payload, std::uint32_t size, WideString &error);
    void AppendNumber(const unsigned char *bytes, std::uint32_t count, WideString &error);

    bool ReAttachSharedMemory(const WideString &name, std::uint32_t size, WideString &error);
    bool CreateSharedMemory(const WideString &name, std::uint32_t size, WideString &error);
    bool AgreeWithParent(WideString &error);
    WideString NextSectionName() const;
    void ReleaseView();
    void ReleaseSection();
    void ReleaseSectionName();

    platform::SectionHandle m_hSharedMemory = nullptr;
    platform::PipeHandle m_hNamedPipe = platform::invalid_pipe;
    std::uint32_t m_sharedSize = 0;
    WideString m_sharedName;
    CByteBuffer m_buffer;
    unsigned char *m_sharedView = nullptr;
    bool m_extraUsersAccess = false;
    bool m_ownsSectionName = false; // this side made the section, and its name still stands in the system
    ReadAhead m_readAhead;
};

} // namespace kessil
