// Row kernels of the byte-wise blends, whose rows are whole images. What is written must not feed
// back into what is read (kernels/overlap.h).
#pragma once

#include <cstddef>
#include <cstdint>

namespace alg {

/// dst[i] = bits 8 to 15 of dst[i] x dstShare + src[i] x srcShare.
void addShares(const uint8_t* src, uint16_t srcShare, uint8_t* dst, uint16_t dstShare,
               std::size_t n);
void addSharesPlain(const uint8_t* src, uint16_t srcShare, uint8_t* dst, uint16_t dstShare,
                    std::size_t n);

/// dst[i] = the greater, or the lesser, of src[i] and dst[i].
void takeGreater(const uint8_t* src, uint8_t* dst, std::size_t n);
void takeGreaterPlain(const uint8_t* src, uint8_t* dst, std::size_t n);
void takeLesser(const uint8_t* src, uint8_t* dst, std::size_t n);
void takeLesserPlain(const uint8_t* src, uint8_t* dst, std::size_t n);

/// out[i] = of b[i] and c[i] the one nearer to a[i], c[i] if both are equally near.
void takeNearer(const uint8_t* a, const uint8_t* b, const uint8_t* c, uint8_t* out, std::size_t n);
void takeNearerPlain(const uint8_t* a, const uint8_t* b, const uint8_t* c, uint8_t* out,
                     std::size_t n);

/// a[i] = of a[i], b[i] and c[i] the one farthest from the background, which is of b[i] and c[i]
/// the one nearer to a[i]; the first of equally far ones.
///
/// This needs no background: let x be the one of b and c that it is, and y the other one. x is at
/// distance 0 from it, so that x never replaces a. y does when it is farther away than a,
/// |y - x| > |a - x|; then it is farther away than x, too. So the result is y or a.
void takeFarthest(uint8_t* a, const uint8_t* b, const uint8_t* c, std::size_t n);
void takeFarthestPlain(uint8_t* a, const uint8_t* b, const uint8_t* c, std::size_t n);

}  // namespace alg
