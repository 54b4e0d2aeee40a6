#pragma once

#include "kessilctl/console/progress.h"

#include <kessil/adapter.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kessil::kessilctl {

/// Moves `bytes` of a disk, whole sectors from sector `start` on, in blocks of at most 1 MiB, and shows the progress.
/// `move` is called for each block with its first sector and its memory, which is used again for the next block.
template <typename Move>
void MoveInBlocks(Console &console, const char *verb, std::uint64_t start, std::uint64_t bytes, const Move &move)
{
    constexpr std::uint64_t block_size = 1024 * 1024;
    std::vector<std::byte> block(std::min(bytes, block_size));
    Progress progress(console, verb, 1, bytes, Progress::Clock::now());
    std::uint64_t done = 0;
    while (done < bytes) {
        const auto part = std::span(block).first(std::min(bytes - done, block_size));
        move(start + done / parent::sector_size, part);
        done += part.size();
        progress.Advance(0, done, Progress::Clock::now());
    }
    progress.Finish(1, done, Progress::Clock::now());
}

} // namespace kessil::kessilctl
