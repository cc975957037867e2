// Vector twins of the pixel row kernels, compiled once per vector target.
#include "images/pixel_rows.h"

#include "kernels/vector_frame.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "images/pixel_rows_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
#include "kernels/row_blocks-inl.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& packRowVector = packRowPlain;
constexpr auto& unpackRowVector = unpackRowPlain;
constexpr auto& colourRowVector = colourRowPlain;
constexpr auto& mixRowVector = mixRowPlain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
using Halves = hn::Repartition<uint16_t, Bytes>;
using Words = hn::Repartition<uint32_t, Bytes>;
using Sixteen = hn::Full128<uint8_t>;
using SixteenVector = hn::Vec<Sixteen>;

constexpr std::size_t kBlock = 16;  // pixels a step: four vectors of words, three of packed pixels
constexpr uint8_t kNone = 0x80;     // a byte that shuffles leave 0

// Four words to 12 bytes, and back with a fourth byte of 0.
alignas(16) constexpr uint8_t kPacks[2][16] = {
    {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, kNone, kNone, kNone, kNone},
    {2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, kNone, kNone, kNone, kNone}};
alignas(16) constexpr uint8_t kUnpacks[2][16] = {
    {0, 1, 2, kNone, 3, 4, 5, kNone, 6, 7, 8, kNone, 9, 10, 11, kNone},
    {2, 1, 0, kNone, 5, 4, 3, kNone, 8, 7, 6, kNone, 11, 10, 9, kNone}};
alignas(16) constexpr uint8_t kColours[2][16] = {
    {0, 1, 2, kNone, 4, 5, 6, kNone, 8, 9, 10, kNone, 12, 13, 14, kNone},
    {2, 1, 0, kNone, 6, 5, 4, kNone, 10, 9, 8, kNone, 14, 13, 12, kNone}};

std::size_t index(ByteOrder order) { return static_cast<std::size_t>(order); }

void packRowVector(const uint8_t* pixels, uint8_t* packed, std::size_t count, ByteOrder order) {
  const Sixteen d;
  const SixteenVector shuffle = hn::Load(d, kPacks[index(order)]);
  // Parts a, b, c, d of 12 bytes fill three vectors:  aaab bbcc cddd
  const auto pack = [&](std::size_t /*x*/, const uint8_t* from, uint8_t* to) HWY_ATTR {
    const auto part = [&](std::size_t i) HWY_ATTR {
      return hn::TableLookupBytesOr0(hn::LoadU(d, from + 16 * i), shuffle);
    };
    const SixteenVector a = part(0), b = part(1), c = part(2), e = part(3);
    hn::StoreU(hn::Or(a, hn::ShiftLeftBytes<12>(d, b)), d, to);
    hn::StoreU(hn::Or(hn::ShiftRightBytes<4>(d, b), hn::ShiftLeftBytes<8>(d, c)), d, to + 16);
    hn::StoreU(hn::Or(hn::ShiftRightBytes<8>(d, c), hn::ShiftLeftBytes<4>(d, e)), d, to + 32);
  };
  forEachBlock<kBlock>(count, pack, Reads<4>{pixels}, Writes<3>{packed});
}

/// Four words with the colours of one vector and the fourth bytes of another.
HWY_INLINE SixteenVector withAlpha(SixteenVector colours, const uint8_t* alpha) {
  const Sixteen d;
  const hn::Repartition<uint32_t, Sixteen> words;
  const auto opacity = hn::And(hn::BitCast(words, hn::LoadU(d, alpha)), hn::Set(words, 0xFF000000));
  return hn::Or(colours, hn::BitCast(d, opacity));
}

void unpackRowVector(const uint8_t* packed, const uint8_t* alpha, uint8_t* pixels,
                     std::size_t count, ByteOrder order) {
  const Sixteen d;
  const SixteenVector shuffle = hn::Load(d, kUnpacks[index(order)]);
  const auto unpack = [&](std::size_t /*x*/, const uint8_t* from, const uint8_t* opacity,
                          uint8_t* to) HWY_ATTR {
    const SixteenVector a = hn::LoadU(d, from), b = hn::LoadU(d, from + 16),
                        c = hn::LoadU(d, from + 32);
    const auto words = [&](SixteenVector part, std::size_t i) HWY_ATTR {
      return withAlpha(hn::TableLookupBytesOr0(part, shuffle), opacity + 16 * i);
    };
    const SixteenVector w0 = words(a, 0), w1 = words(hn::CombineShiftRightBytes<12>(d, b, a), 1),
                        w2 = words(hn::CombineShiftRightBytes<8>(d, c, b), 2),
                        w3 = words(hn::ShiftRightBytes<4>(d, c), 3);
    hn::StoreU(w0, d, to);
    hn::StoreU(w1, d, to + 16);
    hn::StoreU(w2, d, to + 32);
    hn::StoreU(w3, d, to + 48);
  };
  forEachBlock<kBlock>(count, unpack, Reads<3>{packed}, Reads<4>{alpha}, Writes<4>{pixels});
}

void colourRowVector(const uint8_t* colours, const uint8_t* alpha, uint8_t* pixels,
                     std::size_t count, ByteOrder order) {
  const Sixteen d;
  const SixteenVector shuffle = hn::Load(d, kColours[index(order)]);
  const auto colour = [&](std::size_t /*x*/, const uint8_t* from, const uint8_t* opacity,
                          uint8_t* to) HWY_ATTR {
    hn::StoreU(withAlpha(hn::TableLookupBytesOr0(hn::LoadU(d, from), shuffle), opacity), d, to);
  };
  forEachBlock<4>(count, colour, Reads<4>{colours}, Reads<4>{alpha}, Writes<4>{pixels});
}

// Even and odd bytes each in 16 bits: 255 x 256 + 128 fits.
void mixRowVector(const uint8_t* from, const uint8_t* to, uint8_t* mixed, std::size_t bytes,
                  int weight) {
  const Bytes d;
  const Halves h;
  const auto toShare = hn::Set(h, static_cast<uint16_t>(weight));
  const auto fromShare = hn::Set(h, static_cast<uint16_t>(kWholeWeight - weight));
  const auto half = hn::Set(h, 128);
  const auto low = hn::Set(h, 0x00FF);
  const auto mix = [&](std::size_t /*x*/, const uint8_t* first, const uint8_t* second,
                       uint8_t* sums) HWY_ATTR {
    const auto a = hn::BitCast(h, hn::LoadU(d, first));
    const auto b = hn::BitCast(h, hn::LoadU(d, second));
    const auto sum = [&](auto x, auto y) HWY_ATTR {
      return hn::Add(hn::Add(hn::Mul(x, fromShare), hn::Mul(y, toShare)), half);
    };
    const auto even = sum(hn::And(a, low), hn::And(b, low));
    const auto odd = sum(hn::ShiftRight<8>(a), hn::ShiftRight<8>(b));
    hn::StoreU(hn::BitCast(d, hn::Or(hn::ShiftRight<8>(even), hn::AndNot(low, odd))), d, sums);
  };
  forEachBlock<hn::MaxLanes(Bytes())>(bytes, mix, Reads<1>{from}, Reads<1>{to}, Writes<1>{mixed});
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void packRow(const uint8_t* pixels, uint8_t* packed, std::size_t count, ByteOrder order) {
  ALG_DISPATCH(packRowVector)(pixels, packed, count, order);
}

void unpackRow(const uint8_t* packed, const uint8_t* alpha, uint8_t* pixels, std::size_t count,
               ByteOrder order) {
  ALG_DISPATCH(unpackRowVector)(packed, alpha, pixels, count, order);
}

void colourRow(const uint8_t* colours, const uint8_t* alpha, uint8_t* pixels, std::size_t count,
               ByteOrder order) {
  ALG_DISPATCH(colourRowVector)(colours, alpha, pixels, count, order);
}

void mixRow(const uint8_t* from, const uint8_t* to, uint8_t* mixed, std::size_t bytes, int weight) {
  ALG_DISPATCH(mixRowVector)(from, to, mixed, bytes, weight);
}

}  // namespace alg
#endif
