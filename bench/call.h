#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kessil::bench {

/// What one call does with the block.
enum class Work
{
    Answer, ///< there is no block
    Read,   ///< the library passes it to the parent
    Write   ///< the parent passes it to the library
};

/// One number in a list of elements: `bytes` wide, big-endian, unaligned.
struct Value
{
    std::uint32_t bytes = 0;
    std::uint32_t number = 0;
};

/// A placeholder for the block's length.
inline constexpr std::uint32_t the_length = 0xFFFFFFFF;

/// A placeholder for the number of sectors in the block.
inline constexpr std::uint32_t the_sectors = 0xFFFFFFFE;

/// Up to three of them, one after the other.
using Values = std::array<Value, 3>;

/// A function that is measured.
struct Call
{
    const char *function;
    const char *signature;
    Work work;
    Values front;   ///< the in-list before the block
    Values back;    ///< the in-list after the block
    Values results; ///< the out-list: all of it, or for a read what follows the block

    /// Calls `function`, an export of bench_target, directly, and does with the block what else a handler does.
    void (*direct)(void *function, unsigned char *block, std::uint32_t size);

    Values begin = {};       ///< for a read, the start of the out-list where it isn't the front again
    std::uint32_t spare = 0; ///< the number of bytes by which the buffer is longer than the block

    /// The call's command in the second generation, or 0; and `direct` as the handler of that command does it, with
    /// blocks that are created for the call.
    unsigned char command = 0;
    void (*direct_by_command)(void *function, unsigned char *block, std::uint32_t size) = nullptr;
};

/// The call of that function. Throws std::out_of_range when the function isn't measured.
const Call &CallOf(std::string_view function);

/// The offset of the block's data in the section: behind the front and the length, aligned to 8.
std::uint32_t BlockOffset(const Call &call);

/// The buffer's length, which precedes it in the in-list.
std::uint32_t BufferSize(const Call &call, std::uint32_t block_size);

/// The offset of the results.
std::uint32_t ResultsOffset(const Call &call, std::uint32_t block_size);

/// The number of bytes that they take.
std::uint32_t SizeOf(const Values &values);

/// Stores them at `place`, which has room for SizeOf(values).
void Store(unsigned char *place, const Values &values, std::uint32_t block_size);

// A call by command: both sides know the sizes of its request and its reply in advance. A block comes last.

/// The number of bytes before the block in the request and in the reply.
inline constexpr std::uint32_t request_head = 22;
inline constexpr std::uint32_t reply_head = 8;

std::uint32_t RequestSize(const Call &call, std::uint32_t block_size);
std::uint32_t ReplySize(const Call &call, std::uint32_t block_size);

/// Lay them out at `place`, without the block's bytes.
void StoreRequestHead(unsigned char *place, const Call &call, std::uint32_t block_size);
void StoreReplyHead(unsigned char *place, const Call &call, std::uint32_t block_size);

} // namespace kessil::bench
