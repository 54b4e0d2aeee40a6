#include "bench/table.h"

#include <cmath>
#include <cstdio>
#include <utility>

namespace kessil::bench {
namespace {

constexpr const char *row_format = "%-70s %9s %9s %5s  %14s %7s %8s %11s\n";

std::string Number(const char *format, double value)
{
    char text[32];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

// Zero means that there is no value.
std::string OrDash(const char *format, double value)
{
    return value > 0 ? Number(format, value) : "-";
}

std::string OrNull(double value)
{
    return value > 0 ? Number("%.4f", value) : "null";
}

// All in the figure's unit. The limit plus these three is the contender's median.
struct Parts
{
    double library;
    double block;
    double rest;
};

Parts PartsOf(const Figure &figure)
{
    const double library = figure.Of(&Round::library).median;
    const double in_process = figure.Of(&Round::in_process).median;
    const double over_limit = figure.Of(&Round::contender).median - figure.Of(&Round::limit).median;
    return {library, in_process - library, over_limit - in_process};
}

std::string Row(const std::string &name, const std::string &contender, const std::string &limit,
                const std::string &ratio, const std::string &spread, const std::string &target,
                const std::string &control, const std::string &in_process)
{
    char text[256];
    std::snprintf(text, sizeof text, row_format, name.c_str(), contender.c_str(), limit.c_str(), ratio.c_str(),
                  spread.c_str(), target.c_str(), control.c_str(), in_process.c_str());
    return text;
}

} // namespace

std::string TableHead()
{
    return Row("figure", "kessil", "limit", "ratio", "quartiles", "target", "control", "in process");
}

std::string BlocksHead()
{
    return "\nWhat the second generation's blocks cost, in us per call:\n";
}

std::string BlocksLine(const Figure &figure)
{
    const double limit = figure.Of(&Round::limit).median;
    const Parts parts = PartsOf(figure);
    char text[320];
    std::snprintf(text, sizeof text, "%s: %.1f over its %.1f = %.1f block + %.1f library %s %.1f rest\n",
                  figure.Name().c_str(), parts.block + parts.library + parts.rest, limit, parts.block, parts.library,
                  parts.rest < 0 ? "-" : "+", std::abs(parts.rest));
    return text;
}

std::string TableRow(const Figure &figure)
{
    const Quartiles ratio = figure.Ratio(&Round::contender, &Round::limit);
    return Row(figure.Name() + " (" + figure.Unit() + ")", Number("%.1f", figure.Of(&Round::contender).median),
               Number("%.1f", figure.Of(&Round::limit).median), Number("%.2f", ratio.median),
               Number("%.2f", ratio.low) + " to " + Number("%.2f", ratio.high), OrDash("%.2f", figure.Target()),
               OrDash("%.2f", figure.Ratio(&Round::control, &Round::limit).median),
               OrDash("%.2f", figure.Of(&Round::in_process).median));
}

std::string JsonRow(const Figure &figure)
{
    const Quartiles ratio = figure.Ratio(&Round::contender, &Round::limit);
    const bool costs = figure.CostsBlocks();
    const Parts parts = PartsOf(figure);
    const std::pair<const char *, std::string> fields[] = {
        {"name", '"' + figure.Name() + '"'},
        {"unit", '"' + figure.Unit() + '"'},
        {"rounds", std::to_string(figure.Rounds().size())},
        {"kessil", OrNull(figure.Of(&Round::contender).median)},
        {"limit", OrNull(figure.Of(&Round::limit).median)},
        {"ratio", OrNull(ratio.median)},
        {"ratio_low", OrNull(ratio.low)},
        {"ratio_high", OrNull(ratio.high)},
        {"target", OrNull(figure.Target())},
        {"control", OrNull(figure.Ratio(&Round::control, &Round::limit).median)},
        {"in_process", OrNull(figure.Of(&Round::in_process).median)},
        {"library", costs ? Number("%.4f", parts.library) : "null"},
        {"block", costs ? Number("%.4f", parts.block) : "null"},
        {"rest", costs ? Number("%.4f", parts.rest) : "null"},
    };
    std::string row;
    for (const auto &[name, value] : fields)
        row += (row.empty() ? "{\"" : ", \"") + std::string(name) + "\": " + value;
    return row + "}";
}

} // namespace kessil::bench
