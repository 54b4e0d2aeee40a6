// Measures the helper against the least that a child process could do, and prints one line for each figure.
//
//   kessil_bench [--quick] [--json] [--benchmark_filter=REGEX]
//
//   --quick   two short rounds of each figure: shows that everything can be measured, and nothing about speed
//   --json    one JSON object instead of the table
//   --benchmark_filter=REGEX   only the figures whose name the expression matches
//
// On Linux Google Benchmark runs the figures, one round per iteration, and accepts its other flags as well. On a
// machine with other work, `chrt -f 5 kessil_bench` keeps that work out of the figures; the same under Wine, as long as
// no wineserver is running yet.
//
// How to read the table:
//   kessil      the helper with a hosted library: microseconds for a call, from the request to the answer; or for a
//               start, from the start of the process to its first answer; or KiB
//   limit       the bare child, which reads the same frames with one read, answers with one write, and knows all sizes
//               in advance; or, where the figure says so, a stream: the bare child that receives and sends as many
//               bytes as the call does in the second generation, with one write and as few reads as the pipe allows;
//               or a copy of as many bytes in the measuring process
//   ratio       the median of kessil / limit over all rounds, with its quartiles: the figure that counts. Times mean
//               little, because the scheduler and the processor's clock decide them
//   target      the largest ratio allowed
//   control     a second limit / the limit. It is 1.00 when the machine was idle enough to measure
//   in process  microseconds for the same library call without another process, with the blocks that the helper
//               creates: for data that the library only points to, and for every call of the second generation
//
// Below the table is what these blocks cost in the second generation. A call is broken down into the stream of the same
// bytes, the library's call and the helper's blocks, both as measured in this process, and the rest. The first three
// are medians; the rest is the call's median less these three, and is negative when they cost less in the helper than
// here.
//
// A round is one turn for each side, in an order that rotates: 200 calls, or 50 where a block passes through the pipe,
// or the quickest of 5 starts. Every few rounds the processes are started anew. "One core" keeps both sides on the same
// core, "two cores" gives each its own. Starts run on one core. Wine's server, which every call passes through there,
// runs on any core.
//
// A start-up of the helper is: start the process, attach, load the library, attach a section, answer one GetBackupType,
// all with its log open. The bare child does the same: start, attach, load the library, open and map the section,
// answer one frame. In a row of its own it loads no library, so that the loader's time counts for the helper only.
//
// The exit code is 0 when every figure was measured, whatever the result, and 1 otherwise.

#include "bench/run.h"
#include "bench/table.h"
#include "platform/entry_point.h"
#include "platform/measurement.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>

namespace kessil::bench {
namespace {

bool RemoveFlag(std::vector<std::string> &arguments, const char *flag)
{
    return std::erase(arguments, flag) > 0;
}

// What follows the table, for the figures that were measured.
std::string BlocksOf(const std::vector<std::unique_ptr<Figure>> &figures)
{
    std::string lines;
    for (const auto &figure : figures) {
        if (figure->CostsBlocks() && !figure->Rounds().empty())
            lines += BlocksLine(*figure);
    }
    return lines.empty() ? lines : BlocksHead() + lines;
}

void Run(std::vector<std::string> arguments)
{
    const bool quick = RemoveFlag(arguments, "--quick");
    const bool json = RemoveFlag(arguments, "--json");
    const std::vector<std::uint32_t> cores = platform::UsableCores();
    if (cores.empty() || !platform::PlaceSelf(cores[0]))
        throw std::runtime_error("this process can't be placed on a core");

    const auto figures = AllFigures(cores, quick);
    std::string separator = "{\"figures\": [\n";
    if (!json)
        std::fputs(TableHead().c_str(), stdout);
    RunFigures(figures, arguments, [&](const Figure &figure) {
        std::fputs(json ? (separator + JsonRow(figure)).c_str() : TableRow(figure).c_str(), stdout);
        std::fflush(stdout);
        separator = ",\n";
    });
    std::fputs(json ? "\n]}\n" : BlocksOf(figures).c_str(), stdout);
}

} // namespace
} // namespace kessil::bench

int kessil::platform::Main(const std::vector<WideString> &arguments)
{
    std::vector<std::string> words;
    for (std::size_t i = 1; i < arguments.size(); ++i)
        words.push_back(ToUtf8(arguments[i]));
    try {
        bench::Run(words);
    } catch (const std::exception &failure) {
        std::fprintf(stderr, "kessil_bench: %s\n", failure.what());
        return 1;
    }
    return 0;
}
