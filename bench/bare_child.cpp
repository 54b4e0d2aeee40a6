// The limit that the helper is measured against: a child process that does the work of one kind of call and nothing
// else. It knows the size of its request in advance, takes it with one read, never looks into it, and answers with one
// write. Its block lies in the same kind of section, opened at start-up.
//
//   bare_child PIPE FUNCTION SECTION BLOCK_SIZE REQUEST_SIZE [LIBRARY]
//
// FUNCTION says which call; it is looked up, and its results are laid out, before the first request. A LIBRARY is
// loaded at start-up and not used.
#include "bench/call.h"
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

struct Job
{
    void *to; // null where there is no block
    const void *from;
    std::uint32_t block_size;
    unsigned char *results_place;
    std::uint32_t results_size;
    unsigned char results[sizeof(Values)];
};

void DoWork(const Job &job)
{
    if (job.to != nullptr)
        std::memcpy(job.to, job.from, job.block_size);
    std::memcpy(job.results_place, job.results, job.results_size);
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
    const Call &call = CallOf(platform::ToUtf8(arguments[2]));
    const std::uint32_t block_size = Number(arguments[4]);
    const std::uint32_t section_size = SectionSize(block_size);
    platform::SectionHandle const section = platform::OpenSection(arguments[3], section_size);
    unsigned char *const view = section == nullptr ? nullptr : platform::MapOpenedSection(section, section_size);
    if (view == nullptr)
        return 1;

    const std::unique_ptr<unsigned char[]> private_copy(call.work == Work::Write ? new unsigned char[block_size]
                                                                                 : nullptr);
    Job job = {};
    job.block_size = block_size;
    job.to = call.work == Work::Read ? view + BlockOffset(call) : private_copy.get();
    job.from = call.work == Work::Read ? MakeSource(block_size) : view + BlockOffset(call);
    job.results_place = view + ResultsOffset(call, block_size);
    job.results_size = SizeOf(call.results);
    Store(job.results, call.results, block_size);
    Serve(pipe, job, Number(arguments[5]));
    return 0;
}

} // namespace
} // namespace kessil::bench

int kessil::platform::Main(const std::vector<WideString> &arguments)
{
    return arguments.size() < 6 ? 2 : bench::Run(arguments);
}
