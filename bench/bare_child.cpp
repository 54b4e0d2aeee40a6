// The limit that the helper is measured against: a child process that does the work of one kind of call and nothing
// else. It knows the size of its request in advance, takes it with one read, never looks into it, and answers with one
// write. Its block lies in the same kind of section, opened at start-up.
//
//   bare_child PIPE WORK SECTION BLOCK_SIZE REQUEST_SIZE [LIBRARY]
//
// WORK is the letter of a kessil::bench::Work. A LIBRARY is loaded at start-up and not used.
#include "bench/work.h"
#include "channel/big_endian.h"
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

struct Job
{
    Work work;
    std::uint32_t block_size;
    unsigned char *view;
    const unsigned char *source;
    unsigned char *private_copy;
};

void StoreResults(unsigned char *place, std::uint32_t count)
{
    StoreBigEndian(place, count);
    StoreBigEndian(place + 4, std::uint32_t{0});
}

void DoWork(const Job &job)
{
    switch (job.work) {
    case Work::Answer:
        StoreBigEndian(job.view, backup_type);
        break;
    case Work::Read:
        std::memcpy(job.view + block_offset, job.source, job.block_size);
        StoreResults(job.view + block_offset + job.block_size + 4, job.block_size);
        break;
    case Work::Write:
        std::memcpy(job.private_copy, job.view + block_offset, job.block_size);
        StoreResults(job.view, job.block_size);
        break;
    }
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

std::uint32_t Number(const WideString &text)
{
    return static_cast<std::uint32_t>(std::stoul(platform::ToUtf8(text)));
}

int Run(const std::vector<WideString> &arguments)
{
    PipeHandle const pipe = platform::ConnectPipe(arguments[1], 30000);
    if (pipe == platform::invalid_pipe)
        return 1;
    if (arguments.size() > 6 && platform::LoadModule(arguments[6]) == nullptr)
        return 1;
    const auto work = static_cast<Work>(arguments[2].at(0));
    const std::uint32_t block_size = Number(arguments[4]);
    const std::uint32_t section_size = SectionSize(block_size);
    platform::SectionHandle const section = platform::OpenSection(arguments[3], section_size);
    unsigned char *const view = section == nullptr ? nullptr : platform::MapOpenedSection(section, section_size);
    if (view == nullptr)
        return 1;

    const unsigned char *const source = work == Work::Read ? MakeSource(block_size) : nullptr;
    const std::unique_ptr<unsigned char[]> private_copy(work == Work::Write ? new unsigned char[block_size] : nullptr);
    Serve(pipe, {work, block_size, view, source, private_copy.get()}, Number(arguments[5]));
    return 0;
}

} // namespace
} // namespace kessil::bench

int kessil::platform::Main(const std::vector<WideString> &arguments)
{
    return arguments.size() < 6 ? 2 : bench::Run(arguments);
}
