// Row kernels between 32-bit pixels and what operations take: packed pixels, and words in either
// order.
#pragma once

#include <cstddef>
#include <cstdint>

namespace alg {

/// Whether bytes 0 and 2 of a pixel change places on the way.
enum class ByteOrder : uint8_t { kKept, kExchanged };

/// 4-byte pixels to packed 3-byte ones.
void packRow(const uint8_t* pixels, uint8_t* packed, std::size_t count, ByteOrder order);
void packRowPlain(const uint8_t* pixels, uint8_t* packed, std::size_t count, ByteOrder order);

/// Packed 3-byte pixels to 4-byte ones, whose fourth byte is that of `alpha`, which may be
/// `pixels`.
void unpackRow(const uint8_t* packed, const uint8_t* alpha, uint8_t* pixels, std::size_t count,
               ByteOrder order);
void unpackRowPlain(const uint8_t* packed, const uint8_t* alpha, uint8_t* pixels, std::size_t count,
                    ByteOrder order);

/// 4-byte pixels to 4-byte pixels whose fourth byte is that of `alpha`. All may be the same.
void colourRow(const uint8_t* colours, const uint8_t* alpha, uint8_t* pixels, std::size_t count,
               ByteOrder order);
void colourRowPlain(const uint8_t* colours, const uint8_t* alpha, uint8_t* pixels,
                    std::size_t count, ByteOrder order);

inline constexpr int kWholeWeight = 256;

/// mixed[i] = (from[i] x (256 - weight) + to[i] x weight + 128) / 256, rounded down, for weights 0
/// to 256: `from` at 0, `to` at 256. `mixed` may be either.
void mixRow(const uint8_t* from, const uint8_t* to, uint8_t* mixed, std::size_t bytes, int weight);
void mixRowPlain(const uint8_t* from, const uint8_t* to, uint8_t* mixed, std::size_t bytes,
                 int weight);

}  // namespace alg
