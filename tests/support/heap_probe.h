#pragma once

#include <cstddef>

namespace kessil::test {

/// Stands between this program and the C allocator, and between it and operator new. A program that links `heap_probe`
/// has it. What shared libraries ask for by themselves isn't seen.
struct HeapProbe
{
    /// How often memory was asked for so far, by any thread. One block may count twice.
    static std::size_t Requests();

    /// From now on every request for `size` bytes or more fails. 0 for none.
    static void FailFrom(std::size_t size);
};

/// Requests for `size` bytes or more fail while this lives.
class NoMemoryFrom
{
public:
    explicit NoMemoryFrom(std::size_t size) { HeapProbe::FailFrom(size); }
    ~NoMemoryFrom() { HeapProbe::FailFrom(0); }
    NoMemoryFrom(const NoMemoryFrom &) = delete;
    NoMemoryFrom &operator=(const NoMemoryFrom &) = delete;
};

} // namespace kessil::test
