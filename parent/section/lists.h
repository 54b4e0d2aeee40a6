#pragma once

#include <kessil/parent.h>

#include <vector>

namespace kessil::parent {

/// The width of the length in front of a buffer's data.
constexpr std::uint32_t buffer_length_size = 4;

/// How many bytes are skipped so that an element starts at a multiple of `alignment`. The section starts on a page
/// boundary, so a position in it is aligned where its address is.
constexpr std::uint32_t PaddingTo(std::uint32_t alignment, std::uint32_t position)
{
    return (0U - position) % alignment;
}

/// What the lists need of the Helper that they belong to.
class SectionKeeper
{
public:
    /// Replaces the section by one of at least `needed` bytes, of which the first `used` keep their content. False when
    /// that failed, with the reason in `fault`.
    virtual bool Grow(std::uint64_t needed, std::uint32_t used, std::string &fault) = 0;

    virtual unsigned char *View() const = 0;
    virtual std::uint32_t Size() const = 0;

    virtual Result NoResults() = 0;
    virtual Result ImpossibleResults(std::string_view reason) = 0;

protected:
    ~SectionKeeper() = default;
};

struct InList::State
{
    SectionKeeper &keeper;
    bool begun = false;
    std::uint32_t position = 0;
    std::string fault{}; ///< why the list can't be sent; empty when it can

    /// Where the terminators lie that the element behind them begins inside of.
    std::vector<std::uint32_t> shared_terminators{};

    void Begin();

    /// The next `size` bytes of the section, behind `padding` bytes that are skipped; null when the list can't be sent.
    unsigned char *Take(std::uint32_t padding, std::uint64_t size);
    void Number(std::uint64_t value, int width);
    unsigned char *Buffer(std::uint64_t size);

    /// Whether the list can be sent as it lies in the section.
    bool Finish();
};

struct OutList::State
{
    SectionKeeper &keeper;
    bool present = false; ///< whether a call has been answered and its results are still there
    bool good = true;
    std::uint32_t position = 0;
    std::uint32_t element = 0;
    std::uint64_t bytes_read = 0;

    void Begin();

    /// The next `size` bytes behind `padding`; null when they don't lie within the section.
    const unsigned char *Take(std::uint32_t padding, std::uint64_t size);
    bool Number(std::uint64_t &value, int width);

    /// How many bytes a text has, its terminator of `unit` bytes included; 0 when none lies within the section.
    std::uint32_t Measure(std::uint32_t padding, std::uint32_t unit);
};

} // namespace kessil::parent
