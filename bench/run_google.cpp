#include "bench/run.h"

#include <benchmark/benchmark.h>

#include <stdexcept>

namespace kessil::bench {
namespace {

// The caller of RunFigures prints the table.
class SilentReporter final : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context & /*context*/) override { return true; }
    void ReportRuns(const std::vector<Run> & /*runs*/) override {}
};

// One iteration is one round. The time is the contender's.
void MeasureFigure(benchmark::State &state, Figure &figure, const std::function<void(const Figure &)> &done)
{
    for ([[maybe_unused]] auto _ : state)
        state.SetIterationTime(figure.MeasureRound().contender / 1e6);
    figure.Release();
    state.counters["ratio"] = figure.Ratio(&Round::contender, &Round::limit).median;
    done(figure);
}

} // namespace

void RunFigures(const std::vector<std::unique_ptr<Figure>> &figures, const std::vector<std::string> &arguments,
                const std::function<void(const Figure &)> &done)
{
    std::vector<std::string> words = arguments;
    words.insert(words.begin(), "kessil_bench");
    std::vector<char *> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string &word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    int count = static_cast<int>(words.size());
    benchmark::Initialize(&count, pointers.data());
    if (count > 1)
        throw std::runtime_error("unknown argument " + std::string(pointers[1]));

    for (const auto &figure : figures) {
        benchmark::RegisterBenchmark(figure->Name().c_str(),
                                     [&figure, &done](benchmark::State &state) { MeasureFigure(state, *figure, done); })
            ->UseManualTime()
            ->Iterations(static_cast<benchmark::IterationCount>(figure->WantedRounds()));
    }
    SilentReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
}

} // namespace kessil::bench
