#pragma once

#include <cstdint>

/// What the tests of the real platform, and their child, need from the operating system in addition to the platform's
/// own functions. One implementation per system.
namespace kessil::test {

/// A handle or descriptor of this process that children would inherit if nothing prevented it; closed on destruction.
/// The child receives its number.
class InheritableHandle
{
public:
    InheritableHandle();
    ~InheritableHandle();
    InheritableHandle(const InheritableHandle &) = delete;
    InheritableHandle &operator=(const InheritableHandle &) = delete;

    std::uint64_t Number() const { return m_number; }

private:
    std::uint64_t m_number;
};

/// Whether that number is an open handle or descriptor in this process.
bool IsOpen(std::uint64_t number);

/// Removes this process's standard input while it exists.
class NoInput
{
public:
    NoInput();
    ~NoInput();
    NoInput(const NoInput &) = delete;
    NoInput &operator=(const NoInput &) = delete;

private:
    std::uint64_t m_kept;
};

/// Does to this process and the rest of its group what Ctrl-C at their terminal does, except that this process ignores
/// it from now on. False, without doing anything, when it isn't the first of its group.
bool InterruptOwnGroup();

#ifdef _WIN32
/// Ends the calling thread and no other.
[[noreturn]] void EndThisThread(std::uint32_t exit_code);
#endif

} // namespace kessil::test
