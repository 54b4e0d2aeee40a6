#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kessil::bench {

/// What one call does with the block.
enum class Work
{
    Answer, ///< there is none
    Read,   ///< it goes from the library to the parent
    Write   ///< it goes from the parent to the library
};

/// One number in a list of elements: so many bytes, big-endian, unaligned.
struct Value
{
    std::uint32_t bytes = 0;
    std::uint32_t number = 0;
};

/// The number that stands for the block's length.
inline constexpr std::uint32_t the_length = 0xFFFFFFFF;

/// The number that stands for how many sectors the block has.
inline constexpr std::uint32_t the_sectors = 0xFFFFFFFE;

/// Up to three of them, one behind the other.
using Values = std::array<Value, 3>;

/// One function that is measured.
struct Call
{
    const char *function;
    const char *signature;
    Work work;
    Values front;   ///< what stands before the block in the in-list
    Values back;    ///< what stands behind it there
    Values results; ///< the out-list: from its start, or after a read what stands behind the block

    /// Calls `function`, an export of bench_target, directly, and does what a handler does beside with the block.
    void (*direct)(void *function, unsigned char *block, std::uint32_t size);

    Values begin = {};       ///< with a read, what the out-list begins with where that isn't the front again
    std::uint32_t spare = 0; ///< by how much the buffer is longer than the block

    /// The number of the call in the second generation, or 0; and `direct` as its handler does it, with blocks that
    /// are made for the call.
    unsigned char command = 0;
    void (*direct_by_command)(void *function, unsigned char *block, std::uint32_t size) = nullptr;
};

/// The call of that function. Throws std::out_of_range when it isn't measured.
const Call &CallOf(std::string_view function);

/// Where the block's data begin in the section: behind the front and the length, aligned to 8.
std::uint32_t BlockOffset(const Call &call);

/// The buffer's length, which stands before it in the in-list.
std::uint32_t BufferSize(const Call &call, std::uint32_t block_size);

/// Where the results begin.
std::uint32_t ResultsOffset(const Call &call, std::uint32_t block_size);

/// How many bytes they take.
std::uint32_t SizeOf(const Values &values);

/// Stores them at `place`, which has room for SizeOf(values).
void Store(unsigned char *place, const Values &values, std::uint32_t block_size);

// A call by command: both sides know the sizes of its request and its reply in advance. A block stands last.

/// What stands before the block in the request and in the reply.
inline constexpr std::uint32_t request_head = 22;
inline constexpr std::uint32_t reply_head = 8;

std::uint32_t RequestSize(const Call &call, std::uint32_t block_size);
std::uint32_t ReplySize(const Call &call, std::uint32_t block_size);

/// Lay them out at `place`, without the block's bytes.
void StoreRequestHead(unsigned char *place, const Call &call, std::uint32_t block_size);
void StoreReplyHead(unsigned char *place, const Call &call, std::uint32_t block_size);

} // namespace kessil::bench
