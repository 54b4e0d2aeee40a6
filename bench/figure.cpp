#include "bench/figure.h"

#include "bench/placed_bytes.h"
#include "platform/measurement.h"
#include "platform/module.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstring>
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

// Gives the sides their turns in a different order in each round, so that a drift of the machine affects all of them
// alike.
template <class Turn>
void TakeTurns(std::size_t number, const Turn &turn)
{
    for (std::size_t i = 0; i < parts.size(); ++i)
        turn((number + i) % parts.size());
}

// What is called and timed: a process, or something in this one.
class Side
{
public:
    Side() = default;
    virtual ~Side() = default;
    Side(const Side &) = delete;
    Side &operator=(const Side &) = delete;

    virtual void Call() = 0;
};

// A function of the library in this process; `direct` is one of the two ways to make the call.
class InProcess final : public Side
{
public:
    using Direct = void (*)(void *function, unsigned char *block, std::uint32_t size);

    InProcess(const char *function, Direct direct, unsigned char *block, std::uint32_t block_size)
        : m_direct(direct), m_block(block), m_blockSize(block_size), m_module(platform::LoadModule(LibraryPath()))
    {
        if (m_module == nullptr)
            throw std::runtime_error("bench_target can't be loaded");
        m_function = platform::FindExport(m_module, function);
        if (m_function == nullptr)
            throw std::runtime_error("bench_target lacks a function");
    }
    ~InProcess() override { platform::FreeModule(m_module); }

    void Call() override { m_direct(m_function, m_block, m_blockSize); }

private:
    Direct m_direct;
    unsigned char *m_block;
    std::uint32_t m_blockSize;
    platform::ModuleHandle m_module;
    void *m_function = nullptr;
};

// A copy of a block in this process.
class MemoryCopy final : public Side
{
public:
    explicit MemoryCopy(std::uint32_t block_size) : m_from(0, block_size), m_to(0, block_size) {}

    void Call() override { std::memcpy(m_to.Data(), m_from.Data(), m_to.Size()); }

private:
    PlacedBytes m_from;
    PlacedBytes m_to;
};

class PeerSide final : public Side
{
public:
    // Starts the process, binds it to that core, and checks what it does.
    PeerSide(Contender contender, const bench::Call &call, std::uint32_t block_size, std::uint32_t core)
        : m_peer(MakePeer(contender, call, block_size))
    {
        m_peer->Start();
        if (!platform::PlaceProcess(m_peer->ProcessId(), core))
            throw std::runtime_error("a child process can't be placed on a core");
        for (int i = 0; i < 20; ++i)
            m_peer->Call();
        m_peer->Check();
    }

    void Call() override { m_peer->Call(); }
    unsigned char *Block() { return m_peer->Block(); }

private:
    std::unique_ptr<Peer> m_peer;
};

// What a call is measured against.
enum class Limit
{
    BareChild,
    Stream,
    MemoryCopy // of as many bytes, in this process
};

struct CallKind
{
    const char *function;
    std::uint32_t block_size;
    std::size_t rounds;
    Contender contender = Contender::Kessil;
    Limit limit = Limit::BareChild;
    double target = 1.05;

    bool OnPipe() const { return contender == Contender::KessilByCommand || limit == Limit::Stream; }
};

class CallFigure final : public Figure
{
public:
    CallFigure(std::string name, const CallKind &kind, Pace pace, std::uint32_t core)
        : Figure(std::move(name), "us", kind.target), m_kind(kind), m_pace(pace), m_call(CallOf(kind.function)),
          m_core(core)
    {}

    std::size_t WantedRounds() const override { return m_pace.rounds; }
    bool CostsBlocks() const override { return ByCommand() && m_kind.limit == Limit::Stream; }

    void Release() override
    {
        m_inProcess.reset();
        m_library.reset();
        for (auto &side : m_sides)
            side.reset();
    }

private:
    // The memory that a process happens to get makes it a little faster or slower for as long as it runs.
    static constexpr std::size_t rounds_per_process = 10;

    bool ByCommand() const { return m_kind.contender == Contender::KessilByCommand; }

    Round Measure(std::size_t number) override
    {
        if (number % rounds_per_process == 0)
            StartSides();
        Round round;
        TakeTurns(number, [&](std::size_t part) { round.*parts[part] = Turn(*m_sides[part]); });
        round.in_process = Turn(*m_inProcess);
        if (CostsBlocks())
            round.library = Turn(*m_library);
        return round;
    }

    void StartSides()
    {
        Release();
        auto contender = std::make_unique<PeerSide>(m_kind.contender, m_call, m_kind.block_size, m_core);
        unsigned char *const block = contender->Block();
        for (std::size_t part = 0; part < parts.size(); ++part)
            m_sides[part] = parts[part] == &Round::contender ? std::move(contender) : MakeLimit();
        const auto direct = ByCommand() ? m_call.direct_by_command : m_call.direct;
        m_inProcess = std::make_unique<InProcess>(m_kind.function, direct, block, m_kind.block_size);
        m_library = std::make_unique<InProcess>(m_kind.function, m_call.direct, block, m_kind.block_size);
        m_inProcess->Call();
        m_library->Call();
    }

    std::unique_ptr<Side> MakeLimit() const
    {
        if (m_kind.limit == Limit::MemoryCopy)
            return std::make_unique<MemoryCopy>(m_kind.block_size);
        const Contender bare = m_kind.limit == Limit::Stream ? Contender::BareStream : Contender::Bare;
        return std::make_unique<PeerSide>(bare, m_call, m_kind.block_size, m_core);
    }

    double Turn(Side &side) const
    {
        const Clock::time_point start = Clock::now();
        for (int i = 0; i < m_pace.turn; ++i)
            side.Call();
        return Microseconds(Clock::now() - start) / m_pace.turn;
    }

    CallKind m_kind;
    Pace m_pace;
    const bench::Call &m_call;
    std::uint32_t m_core;
    std::array<std::unique_ptr<Side>, 3> m_sides;
    std::unique_ptr<Side> m_inProcess;
    std::unique_ptr<Side> m_library;
};

class StartFigure final : public Figure
{
public:
    StartFigure(std::string name, Pace pace, Contender limit)
        : Figure(std::move(name), "us", 1.2), m_pace(pace), m_limit(limit)
    {}

    std::size_t WantedRounds() const override { return m_pace.rounds; }

private:
    // The quickest of a turn counts: starts take long enough to be delayed by whatever else runs.
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
        const std::unique_ptr<Peer> peer = MakePeer(contender, CallOf("GetBackupType"), 0);
        const Clock::time_point start = Clock::now();
        peer->Start();
        const Clock::time_point end = Clock::now();
        peer->Check();
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

    // Wine doesn't report it.
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
        const std::unique_ptr<Peer> peer = MakePeer(contender, CallOf("GetBackupType"), 0);
        peer->Start();
        peer->Call();
        std::uint64_t bytes = 0;
        return platform::ReadPrivateMemory(peer->ProcessId(), bytes) ? static_cast<double>(bytes) / 1024 : 0;
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

std::string NameOf(const CallKind &kind)
{
    std::string name = kind.function + SizeInName(kind.block_size);
    if (kind.contender == Contender::KessilByCommand)
        name += ", second generation";
    if (kind.limit == Limit::Stream)
        name += ", to a stream";
    if (kind.limit == Limit::MemoryCopy)
        name += ", to a memory copy";
    return name;
}

} // namespace

const Round &Figure::MeasureRound()
{
    return m_rounds.emplace_back(Measure(m_rounds.size()));
}

Quartiles Figure::Of(double Round::*value) const
{
    return QuartilesOf([value](const Round &round) { return round.*value; });
}

Quartiles Figure::Ratio(double Round::*value, double Round::*to) const
{
    return QuartilesOf([value, to](const Round &round) { return round.*value / round.*to; });
}

Quartiles Figure::QuartilesOf(const std::function<double(const Round &)> &value) const
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
    constexpr std::uint32_t mib = 1 << 20;
    constexpr CallKind kinds[] = {
        {"GetBackupType", 0, 400},
        {"VornReadFile", 64 << 10, 60},
        {"VornReadFile", mib, 60},
        {"VornReadFile", 4 * mib, 30},
        {"VornWriteFile", 64 << 10, 60},
        {"VornWriteFile", mib, 60},
        {"VornWriteFile", 4 * mib, 30},
        {"HrESEBackupReadFile", mib, 60},
        {"MapiReadMail", mib, 60},
        {"cwbDB_GetDataPointer", mib, 60},
        {"ReadSectors", mib, 60},
        {"ReadSectors", mib, 60, Contender::Kessil, Limit::Stream, 0},
        {"ReadSectors", mib, 60, Contender::KessilByCommand, Limit::Stream, 0},
        {"ReadSectors", mib, 60, Contender::KessilByCommand, Limit::MemoryCopy, 0},
        {"WriteSectors", mib, 60},
        {"WriteSectors", mib, 60, Contender::Kessil, Limit::Stream, 0},
        {"WriteSectors", mib, 60, Contender::KessilByCommand, Limit::Stream, 0},
        {"WriteSectors", mib, 60, Contender::KessilByCommand, Limit::MemoryCopy, 0},
    };
    constexpr const char *placements[] = {", one core", ", two cores"};
    constexpr Pace quick_calls = {2, 20};
    constexpr int calls = 200;
    constexpr int calls_on_pipe = 50; // with a block, far slower
    const Pace starts = quick ? Pace{2, 1} : Pace{60, 5};

    std::vector<std::unique_ptr<Figure>> figures;
    for (std::size_t i = 0; i < std::min<std::size_t>(cores.size(), 2); ++i) {
        for (const CallKind &kind : kinds)
            figures.push_back(std::make_unique<CallFigure>(
                NameOf(kind) + placements[i], kind,
                quick ? quick_calls : Pace{kind.rounds, kind.OnPipe() ? calls_on_pipe : calls}, cores[i]));
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
