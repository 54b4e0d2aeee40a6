#include "bench/run.h"

#include <regex>
#include <stdexcept>
#include <string_view>

namespace kessil::bench {
namespace {

constexpr std::string_view filter_flag = "--benchmark_filter=";

std::regex Filter(const std::vector<std::string> &arguments)
{
    std::string pattern;
    for (const std::string &argument : arguments) {
        if (!argument.starts_with(filter_flag))
            throw std::runtime_error("unknown argument " + argument);
        pattern = argument.substr(filter_flag.size());
    }
    return std::regex(pattern);
}

void MeasureFigure(Figure &figure)
{
    for (std::size_t left = figure.WantedRounds(); left > 0; --left)
        figure.MeasureRound();
    figure.Release();
}

} // namespace

void RunFigures(const std::vector<std::unique_ptr<Figure>> &figures, const std::vector<std::string> &arguments,
                const std::function<void(const Figure &)> &done)
{
    const std::regex filter = Filter(arguments);
    bool measured = false;
    for (const auto &figure : figures) {
        if (!std::regex_search(figure->Name(), filter))
            continue;
        MeasureFigure(*figure);
        done(*figure);
        measured = true;
    }
    if (!measured)
        throw std::runtime_error("no figure has such a name");
}

} // namespace kessil::bench
