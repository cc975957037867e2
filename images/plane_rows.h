// Row kernels of a camera's planes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace alg {

/// `count` samples, `step` bytes apart, to places `toStep` bytes apart.
void gatherRow(const uint8_t* samples, std::ptrdiff_t step, uint8_t* to, std::ptrdiff_t toStep,
               std::size_t count);

/// Pairs of a sample of each.
void interleaveRows(const uint8_t* first, const uint8_t* second, uint8_t* pairs, std::size_t count);
void interleaveRowsPlain(const uint8_t* first, const uint8_t* second, uint8_t* pairs,
                         std::size_t count);

/// Pairs the other way round.
void exchangePairs(const uint8_t* from, uint8_t* to, std::size_t count);
void exchangePairsPlain(const uint8_t* from, uint8_t* to, std::size_t count);

}  // namespace alg
