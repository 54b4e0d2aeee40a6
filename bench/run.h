#pragma once

#include "bench/figure.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kessil::bench {

/// Measures the figures one after the other and calls `done` after each. On Linux Google Benchmark runs them, with its
/// own flags in `arguments` (without the program's name); elsewhere a plain loop does, which accepts only
/// --benchmark_filter. Throws std::runtime_error for an unknown argument, when the filter matches no figure, and when a
/// figure can't be measured.
void RunFigures(const std::vector<std::unique_ptr<Figure>> &figures, const std::vector<std::string> &arguments,
                const std::function<void(const Figure &)> &done);

} // namespace kessil::bench
