// The limit that the helper is measured against: a child process that does the work of one kind of call and nothing
// else. It knows the size of its request in advance, reads it with one read, never parses it, and answers with one
// write. Its block is in the same kind of section, opened at start-up.
//
//   bare_child PIPE FUNCTION BLOCK_SIZE SECTION REQUEST_SIZE [LIBRARY]
//   bare_child PIPE FUNCTION BLOCK_SIZE
//
// FUNCTION selects the call. The call is looked up, and its results are laid out, before the first request. A LIBRARY
// is loaded at start-up and not used.
//
// Without a section it is a bare stream: it receives as many bytes as the call's command takes into one buffer, sends
// as many as the command answers from another, and does nothing else with them.
#include "bench/call.h"
#include "bench/placed_bytes.h"
#include "bench/work.h"
#include "platform/entry_point.h"
#include "platform/module.h"
#include "platform/pipe.h"
#include "platform/section.h"

#include <cstring>
#include <memory>
#include <string>

namespace kessil::bench {
namespace {

using platform::PipeHandle;

struct Piece
{
    unsigned char *place;
    std::uint32_t size;
    unsigned char bytes[sizeof(Values)];
};

struct Job
{
    void *to; // null where there is no block
    const void *from;
    std::uint32_t block_size;
    Piece begin;
    Piece results;
};

Piece LaidOut(const Values &values, unsigned char *place, std::uint32_t length)
{
    Piece piece = {place, SizeOf(values), {}};
    Store(piece.bytes, values, length);
    return piece;
}

void Put(const Piece &piece)
{
    std::memcpy(piece.place, piece.bytes, piece.size);
}

void DoWork(const Job &job)
{
    if (job.to != nullptr)
        std::memcpy(job.to, job.from, job.block_size);
    Put(job.begin);
    Put(job.results);
}

void Serve(PipeHandle pipe, const Job &job, std::uint32_t request_size)
{
    unsigned char request[512];
    constexpr unsigned char answer[answer_size] = {'S', 0, 0, 0, 0};
    std::uint32_t count = 0;
    while (platform::ReadPipe(pipe, request, request_size, count) && count == request_size) {
        DoWork(job);
        if (!platform::WritePipe(pipe, answer, answer_size, count))
            return;
    }
}

// Uses as few reads as the pipe allows.
bool ReadWhole(PipeHandle pipe, unsigned char *buffer, std::uint32_t size)
{
    std::uint32_t count = 0;
    for (; size > 0; buffer += count, size -= count) {
        if (!platform::ReadPipe(pipe, buffer, size, count) || count == 0)
            return false;
    }
    return true;
}

void ServeStream(PipeHandle pipe, const Call &call, std::uint32_t block_size)
{
    PlacedBytes request(request_head, RequestSize(call, block_size));
    PlacedBytes reply(reply_head, ReplySize(call, block_size));
    std::memset(reply.Data(), source_byte, reply.Size());
    StoreReplyHead(reply.Data(), call, block_size);
    std::uint32_t count = 0;
    while (ReadWhole(pipe, request.Data(), request.Size())) {
        if (!platform::WritePipe(pipe, reply.Data(), reply.Size(), count))
            return;
    }
}

std::uint32_t Number(const WideString &text)
{
    return static_cast<std::uint32_t>(std::stoul(platform::ToUtf8(text)));
}

bool ServeSection(PipeHandle pipe, const Call &call, std::uint32_t block_size, const WideString &section_name,
                  std::uint32_t request_size)
{
    const std::uint32_t section_size = SectionSize(block_size);
    platform::SectionHandle const section = platform::OpenSection(section_name, section_size);
    unsigned char *const view = section == nullptr ? nullptr : platform::MapOpenedSection(section, section_size);
    if (view == nullptr)
        return false;

    const std::unique_ptr<unsigned char[]> private_copy(call.work == Work::Write ? new unsigned char[block_size]
                                                                                 : nullptr);
    Job job = {};
    job.block_size = block_size;
    job.to = call.work == Work::Read ? view + BlockOffset(call) : private_copy.get();
    job.from = call.work == Work::Read ? MakeSource(block_size) : view + BlockOffset(call);
    job.begin = LaidOut(call.begin, view, BufferSize(call, block_size));
    job.results = LaidOut(call.results, view + ResultsOffset(call, block_size), block_size);
    Serve(pipe, job, request_size);
    return true;
}

int Run(const std::vector<WideString> &arguments)
{
    PipeHandle const pipe = platform::ConnectPipe(arguments[1], 30000);
    if (pipe == platform::invalid_pipe)
        return 1;
    if (arguments.size() > 6 && platform::LoadModule(arguments[6]) == nullptr)
        return 1;
    const Call &call = CallOf(platform::ToUtf8(arguments[2]));
    const std::uint32_t block_size = Number(arguments[3]);
    if (arguments.size() > 5)
        return ServeSection(pipe, call, block_size, arguments[4], Number(arguments[5])) ? 0 : 1;
    ServeStream(pipe, call, block_size);
    return 0;
}

} // namespace
} // namespace kessil::bench

int kessil::platform::Main(const std::vector<WideString> &arguments)
{
    const bool complete = arguments.size() == 4 || arguments.size() > 5;
    return complete ? bench::Run(arguments) : 2;
}
