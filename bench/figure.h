#pragma once

#include "bench/peer.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kessil::bench {

/// What one round measured, in the figure's unit. Zero where there is nothing to measure.
struct Round
{
    double contender = 0;
    double limit = 0;
    double control = 0;    ///< a second instance of the limit
    double in_process = 0; ///< the same work as a plain call in this process
    double library = 0;    ///< the library's part of that, if CostsBlocks
};

/// A median and its quartiles.
struct Quartiles
{
    double median = 0;
    double low = 0;
    double high = 0;
};

/// One row of the table: something measured round by round, the contender and its limit in turn within each round.
class Figure
{
public:
    /// `target` is the largest ratio allowed; 0 when the row has none.
    Figure(std::string name, std::string unit, double target)
        : m_name(std::move(name)), m_unit(std::move(unit)), m_target(target)
    {}
    virtual ~Figure() = default;
    Figure(const Figure &) = delete;
    Figure &operator=(const Figure &) = delete;

    const std::string &Name() const { return m_name; }
    const std::string &Unit() const { return m_unit; }
    double Target() const { return m_target; }
    const std::vector<Round> &Rounds() const { return m_rounds; }

    /// Measures and stores one more round. Throws std::runtime_error when that fails.
    const Round &MeasureRound();

    /// The number of rounds that make up the figure.
    virtual std::size_t WantedRounds() const = 0;

    /// Whether the figure shows what the blocks of the second generation cost: the limit is then a stream of the same
    /// bytes, and the part of `in_process` that isn't the library's is the cost of the blocks.
    virtual bool CostsBlocks() const { return false; }

    /// Ends the processes that live from round to round.
    virtual void Release() {}

    /// The median and quartiles of a value, or of the ratio of two, over all rounds.
    Quartiles Of(double Round::*value) const;
    Quartiles Ratio(double Round::*value, double Round::*to) const;

private:
    virtual Round Measure(std::size_t number) = 0;
    Quartiles QuartilesOf(const std::function<double(const Round &)> &value) const;

    std::string m_name;
    std::string m_unit;
    double m_target;
    std::vector<Round> m_rounds;
};

/// Every figure, in the order of the table. This process has to stay on `cores[0]`. Children run there or, where the
/// figure says so, on `cores[1]`; without a second core those figures are left out. With `quick`, each figure only
/// measures enough to show that it can be measured.
std::vector<std::unique_ptr<Figure>> AllFigures(const std::vector<std::uint32_t> &cores, bool quick);

} // namespace kessil::bench
