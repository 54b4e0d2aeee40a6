#include "bench/figure.h"

#include "platform/measurement.h"
#include "platform/module.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <stdexcept>

namespace kessil::bench {
namespace {

using Clock = std::chrono::steady_clock;

// How much is measured for one figure.
struct Pace
{
    std::size_t rounds;
    int turn; // calls or starts of each side in a round
};

constexpr std::array parts = {&Round::contender, &Round::limit, &Round::control};

double Microseconds(Clock::duration time)
{
    return std::chrono::duration<double, std::micro>(time).count();
}

// Has everyone's turn in another order in each round, so that a drift of the machine falls on all alike.
template <class Turn>
void TakeTurns(std::size_t number, const Turn &turn)
{
    for (std::size_t i = 0; i < parts.size(); ++i)
        turn((number + i) % parts.size());
}

// The same work as the helper's, called directly.
class InProcess
{
public:
    explicit InProcess(Section &section) : m_section(section), m_module(platform::LoadModule(LibraryPath()))
    {
        if (m_module == nullptr)
            throw std::runtime_error("bench_target can't be loaded");
        m_function = platform::FindExport(m_module, m_section.Function().function);
        if (m_function == nullptr)
            throw std::runtime_error("bench_target lacks a function");
    }
    ~InProcess() { platform::FreeModule(m_module); }
    InProcess(const InProcess &) = delete;
    InProcess &operator=(const InProcess &) = delete;

    void Call() { m_section.Function().direct(m_function, m_section.Block(), m_section.BlockSize()); }

private:
    Section &m_section;
    platform::ModuleHandle m_module;
    void *m_function = nullptr;
};

// One running child with a section of its own.
struct Seat
{
    Seat(Contender contender, const Call &call, std::uint32_t block_size)
        : section(call, block_size), peer(contender, section)
    {}

    Section section;
    Peer peer;
};

class CallFigure final : public Figure
{
public:
    CallFigure(std::string name, Pace pace, const Call &call, std::uint32_t block_size, std::uint32_t core)
        : Figure(std::move(name), "us", 1.05), m_pace(pace), m_call(call), m_blockSize(block_size), m_core(core)
    {}

    std::size_t WantedRounds() const override { return m_pace.rounds; }

    void Release() override
    {
        m_inProcess.reset();
        for (auto &seat : m_seats)
            seat.reset();
    }

private:
    // The memory that a process happens to get makes it a little faster or slower for its whole life.
    static constexpr std::size_t rounds_per_process = 10;

    Round Measure(std::size_t number) override
    {
        if (number % rounds_per_process == 0)
            Seats();
        Round round;
        TakeTurns(number, [&](std::size_t part) { round.*parts[part] = Turn(m_seats[part]->peer); });
        round.in_process = Turn(*m_inProcess);
        return round;
    }

    void Seats()
    {
        Release();
        for (std::size_t part = 0; part < parts.size(); ++part) {
            const Contender contender = parts[part] == &Round::contender ? Contender::Kessil : Contender::Bare;
            m_seats[part] = std::make_unique<Seat>(contender, m_call, m_blockSize);
            Settle(*m_seats[part]);
        }
        m_inProcess = std::make_unique<InProcess>(m_seats[0]->section);
        m_inProcess->Call();
    }

    void Settle(Seat &seat) const
    {
        seat.peer.Start();
        seat.section.RemoveName();
        if (!platform::PlaceProcess(seat.peer.ProcessId(), m_core))
            throw std::runtime_error("a child process can't be placed on a core");
        for (int i = 0; i < 20; ++i)
            seat.peer.Call();
        seat.section.CheckOutList();
    }

    template <class Callee>
    double Turn(Callee &callee) const
    {
        const Clock::time_point start = Clock::now();
        for (int i = 0; i < m_pace.turn; ++i)
            callee.Call();
        return Microseconds(Clock::now() - start) / m_pace.turn;
    }

    Pace m_pace;
    const Call &m_call;
    std::uint32_t m_blockSize;
    std::uint32_t m_core;
    std::array<std::unique_ptr<Seat>, 3> m_seats;
    std::unique_ptr<InProcess> m_inProcess;
};

class StartFigure final : public Figure
{
public:
    StartFigure(std::string name, Pace pace, Contender limit)
        : Figure(std::move(name), "us", 1.2), m_pace(pace), m_limit(limit)
    {}

    std::size_t WantedRounds() const override { return m_pace.rounds; }

private:
    // The quickest of a turn counts: starts are long enough to be held up by whatever else runs.
    Round Measure(std::size_t number) override
    {
        Round round;
        TakeTurns(number, [&](std::size_t part) {
            const Contender contender = parts[part] == &Round::contender ? Contender::Kessil : m_limit;
            double quickest = StartTime(contender);
            for (int i = 1; i < m_pace.turn; ++i)
                quickest = std::min(quickest, StartTime(contender));
            round.*parts[part] = quickest;
        });
        return round;
    }

    static double StartTime(Contender contender)
    {
        Seat seat(contender, CallOf("GetBackupType"), 0);
        const Clock::time_point start = Clock::now();
        seat.peer.Start();
        const Clock::time_point end = Clock::now();
        seat.section.CheckOutList();
        return Microseconds(end - start);
    }

    Pace m_pace;
    Contender m_limit;
};

class MemoryFigure final : public Figure
{
public:
    /// With `limit_kib` 0 the bare child's memory is the limit.
    MemoryFigure(std::string name, double limit_kib, double target)
        : Figure(std::move(name), "KiB", target), m_limit(limit_kib)
    {}

    std::size_t WantedRounds() const override { return 3; }

    // Wine doesn't tell it.
    static bool CanBeMeasured() { return PrivateMemory(Contender::Bare) > 0; }

private:
    Round Measure(std::size_t /*number*/) override
    {
        Round round;
        round.contender = PrivateMemory(Contender::Kessil);
        round.limit = m_limit > 0 ? m_limit : PrivateMemory(Contender::Bare);
        return round;
    }

    static double PrivateMemory(Contender contender)
    {
        Seat seat(contender, CallOf("GetBackupType"), 0);
        seat.peer.Start();
        seat.peer.Call();
        std::uint64_t bytes = 0;
        return platform::ReadPrivateMemory(seat.peer.ProcessId(), bytes) ? static_cast<double>(bytes) / 1024 : 0;
    }

    double m_limit;
};

std::string SizeInName(std::uint32_t block_size)
{
    if (block_size == 0)
        return "";
    const std::uint32_t kib = block_size >> 10;
    return ' ' + (kib < 1024 ? std::to_string(kib) + " KiB" : std::to_string(kib >> 10) + " MiB");
}

} // namespace

const Round &Figure::MeasureRound()
{
    return m_rounds.emplace_back(Measure(m_rounds.size()));
}

Middle Figure::Of(double Round::*value) const
{
    return MiddleOf([value](const Round &round) { return round.*value; });
}

Middle Figure::Ratio(double Round::*value, double Round::*to) const
{
    return MiddleOf([value, to](const Round &round) { return round.*value / round.*to; });
}

Middle Figure::MiddleOf(const std::function<double(const Round &)> &value) const
{
    std::vector<double> values;
    for (const Round &round : m_rounds)
        values.push_back(value(round));
    std::sort(values.begin(), values.end());
    if (values.empty())
        return {};
    const std::size_t last = values.size() - 1;
    return {(values[last / 2] + values[(last + 1) / 2]) / 2, values[last / 4], values[last - last / 4]};
}

std::vector<std::unique_ptr<Figure>> AllFigures(const std::vector<std::uint32_t> &cores, bool quick)
{
    struct Kind
    {
        const char *function;
        std::uint32_t block_size;
        std::size_t rounds;
    };
    constexpr Kind kinds[] = {
        {"GetBackupType", 0, 400},       {"VornReadFile", 64 << 10, 60},
        {"VornReadFile", 1 << 20, 60},   {"VornReadFile", 4 << 20, 30},
        {"VornWriteFile", 64 << 10, 60}, {"VornWriteFile", 1 << 20, 60},
        {"VornWriteFile", 4 << 20, 30},  {"HrESEBackupReadFile", 1 << 20, 60},
        {"MapiReadMail", 1 << 20, 60},   {"cwbDB_GetDataPointer", 1 << 20, 60},
    };
    constexpr const char *placements[] = {", one core", ", two cores"};
    constexpr Pace quick_calls = {2, 20};
    const Pace starts = quick ? Pace{2, 1} : Pace{60, 5};

    std::vector<std::unique_ptr<Figure>> figures;
    for (std::size_t i = 0; i < std::min<std::size_t>(cores.size(), 2); ++i) {
        for (const Kind &kind : kinds)
            figures.push_back(std::make_unique<CallFigure>(kind.function + SizeInName(kind.block_size) + placements[i],
                                                           quick ? quick_calls : Pace{kind.rounds, 200},
                                                           CallOf(kind.function), kind.block_size, cores[i]));
    }
    figures.push_back(std::make_unique<StartFigure>("start-up", starts, Contender::BareWithLibrary));
    figures.push_back(std::make_unique<StartFigure>("start-up, bare child loads nothing", starts, Contender::Bare));
    if (MemoryFigure::CanBeMeasured()) {
        figures.push_back(std::make_unique<MemoryFigure>("idle private memory, to 1 MiB", 1024, 1.0));
        figures.push_back(std::make_unique<MemoryFigure>("idle private memory, to the bare child's", 0, 0));
    }
    return figures;
}

} // namespace kessil::bench
