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

/// The process's only connection to its parent: the pipe for requests and replies, and the shared section for the
/// arguments and results of a call. It is a client of both. For the main thread only, without locks. Every operation
/// returns true for success, and otherwise leaves the reason in `error`.
class CIPCCommunication
{
public:
    CIPCCommunication() : m_buffer(1024) {}
    ~CIPCCommunication() { Close(); }
    CIPCCommunication(const CIPCCommunication &) = delete;
    CIPCCommunication &operator=(const CIPCCommunication &) = delete;

    /// Opens the pipe with that full name, waiting up to 30 seconds for it.
    bool Attach(const WideString &pipe_name, WideString &error);

    /// Releases the view, the section and the pipe, in that order. May be called at any time, also after a fault in a
    /// library.
    void Close();

    /// Reads exactly `size` bytes. A stream that ends before the first of them sets `eof`, which is never cleared here,
    /// and is a success. One that ends later closes the channel and is a success as well: the next read fails. The rest
    /// of the block is then all ones, which terminates no string and is no length of 0, so that an incomplete frame is
    /// never taken for a complete one.
    bool ReadDataFromPipe(void *buffer, std::uint32_t size, bool &eof, WideString &error);

    /// Writes the block in one piece. A failure leaves the channel open.
    bool WriteDataToPipe(const void *data, std::uint32_t size, WideString &error);

    /// Reads the next frame, whatever its type. A new section that the parent announces is attached and answered here,
    /// and the caller never sees its frame. `data` points into the channel's buffer and is valid until the next
    /// operation on the channel.
    bool GetNextRequest(char &type, unsigned char *&data, std::uint32_t &size, bool &eof, WideString &error);

    /// The same for the request loop. A type byte that is in `unframed_types` (a zero byte always is) is returned at
    /// once, with no payload and without reading further.
    bool GetNextRequestCond(const char *unframed_types, char &type, unsigned char *&data, std::uint32_t &size,
                            bool &eof, WideString &error);

    /// Overwrites the payload of the last request, which held a secret, wherever the channel keeps a copy. The `data`
    /// of that request is then all zeros.
    void WipeRequest();

    /// Begins a frame in the channel's buffer. The payload of an earlier request is lost.
    bool BeginMessage(char type, WideString &error);

    /// Append to the frame: numbers big-endian, a string with its zero unit. A buffer that can't grow for a number
    /// raises std::bad_alloc, with the reason in `error`: these functions have no other way to report it.
    bool AppendUInt32(std::uint32_t value, WideString &error);
    bool AppendUInt64(std::uint64_t value, WideString &error);
    bool AppendString(const WideString &text, WideString &error);

    /// Puts the payload's length into the frame and writes it.
    bool SendMessage(WideString &error);

    /// Sends an empty 'S' frame.
    bool SendSuccess(WideString &error);

    /// Replaces the section by a new one of `size` bytes with the old content, as far as it fits, and waits for the
    /// parent's answer. If the parent refuses, the new section stays in place; if the section can't be created, the
    /// channel is closed.
    bool ResizeSharedMem(std::uint32_t size, WideString &error);

    /// The section as it is mapped now: null and 0 when there is none. Both change whenever the section is replaced.
    unsigned char *SharedView() const { return m_sharedView; }
    std::uint32_t SharedSize() const { return m_sharedSize; }

    /// From now on, sections that this side creates also admit the local Users group.
    void AdmitUsers() { m_extraUsersAccess = true; }

private:
    bool IsAttached() const { return m_hNamedPipe != platform::invalid_pipe; }

    // How reading a frame's payload ended: the pipe failed; there was no memory or the parent's section could not be
    // attached; the caller has a frame or the end of the stream; the channel handled the frame itself.
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
    bool m_ownsSectionName = false; // this side created the section, and its name still exists in the system
    ReadAhead m_readAhead;
};

} // namespace kessil
