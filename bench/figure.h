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
    double in_process = 0; ///< the same work by a plain call in this process
    double library = 0;    ///< the library's part of that, where CostsBlocks
};

/// A median and its quartiles.
struct Middle
{
    double median = 0;
    double low = 0;
    double high = 0;
};

/// One row of the table: something measured round by round, the contender and its limit in turn within each round.
class Figure
{
public:
    /// `target` is what the ratio is to stay within; 0 when the row has none.
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

    /// Measures and keeps one more round. Throws std::runtime_error when that can't be done.
    const Round &MeasureRound();

    /// How many rounds make the figure.
    virtual std::size_t WantedRounds() const = 0;

    /// Whether it shows what the blocks of the second generation cost: the limit is a stream of the same
    /// bytes, and what isn't the library's of `in_process` are they.
    virtual bool CostsBlocks() const { return false; }

    /// Ends the processes that are kept between rounds.
    virtual void Release() {}

    /// The middle of a value, or of the ratio of two, over all rounds.
    Middle Of(double Round::*value) const;
    Middle Ratio(double Round::*value, double Round::*to) const;

private:
    virtual Round Measure(std::size_t number) = 0;
    Middle MiddleOf(const std::function<double(const Round &)> &value) const;

    std::string m_name;
    std::string m_unit;
    double m_target;
    std::vector<Round> m_rounds;
};

/// Every figure, in the order of the table. This process has to stay on `cores[0]`, and children go there or, where
/// the figure says so, to `cores[1]`; without a second core those figures are left out.
/// With `quick` there is only as much of each as shows that it can be measured.
std::vector<std::unique_ptr<Figure>> AllFigures(const std::vector<std::uint32_t> &cores, bool quick);

} // namespace kessil::bench
