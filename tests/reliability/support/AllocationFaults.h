#pragma once

#include <cstdint>

/// The program's `operator new`, which fails on demand. Linking AllocationFaults.cpp replaces the
/// global one, also for the shared libraries that the program uses.
namespace AllocationFaults {

/// From now on allocation number `first` fails, counted from 1, and with `sticky` all that follow.
/// 0: none fails; the allocations are counted all the same.
void failFrom(std::uint64_t first, bool sticky) noexcept;
/// No allocation fails any more. Returns how many were asked for since `failFrom`.
std::uint64_t stop() noexcept;

/// How many allocations have failed since the program began.
std::uint64_t failures() noexcept;
/// The same since the last `failFrom`.
std::uint64_t failuresOfThisPlan() noexcept;
/// Blocks handed out and not taken back.
std::int64_t liveBlocks() noexcept;

}  // namespace AllocationFaults
