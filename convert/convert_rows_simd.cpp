// Vector twins of the row kernels, compiled once per vector target: 32-bit lanes, the definition's
// arithmetic lane by lane.
#include <cstring>

#include "convert/bt601.h"
#include "convert/convert_rows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convert/convert_rows_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// Without vectors the definitions are the fastest there is.
void decodeRowVector(RowFormat format, const uint8_t* luma, const uint8_t* chroma, uint8_t* pixels,
                     std::size_t width) {
  decodeRowPlain(format, luma, chroma, pixels, width);
}

void encodeLumaRowVector(RowFormat format, const uint8_t* pixels, uint8_t* luma,
                         std::size_t width) {
  encodeLumaRowPlain(format, pixels, luma, width);
}

void encodeChromaRowVector(RowFormat format, const uint8_t* pixels, uint8_t* chroma,
                           std::size_t width) {
  encodeChromaRowPlain(format, pixels, chroma, width);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
using Ints = hn::Repartition<int32_t, Bytes>;
using Words = hn::Repartition<uint32_t, Bytes>;
using FewBytes = hn::Rebind<uint8_t, Ints>;  // as many bytes as there are int lanes
using IntVector = hn::Vec<Ints>;

constexpr std::size_t kBlock = hn::MaxLanes(Bytes());  // pixels a step
constexpr std::size_t kLanes = hn::MaxLanes(Ints());

struct Channels {
  IntVector r, g, b;
};

IntVector clampedChannel(IntVector value) {
  const Ints d;
  return hn::Max(hn::Min(value, hn::Set(d, bt601::kChannelMax)), hn::Zero(d));
}

// Pixels of one int vector; each chroma pair serves two neighbouring lanes.
template <RowFormat kFormat>
Channels decodeLanes(const uint8_t* luma, const uint8_t* chroma) {
  const Ints d;
  const FewBytes few;
  const auto load = [&](const uint8_t* from, int32_t offset) HWY_ATTR {
    return hn::Sub(hn::PromoteTo(d, hn::LoadU(few, from)), hn::Set(d, offset));
  };
  const IntVector level = hn::Mul(load(luma, bt601::kLumaOffset), hn::Set(d, bt601::kLumaGain));
  const IntVector pairs = load(chroma, bt601::kChromaOffset);
  constexpr bool kUFirst = kFormat != RowFormat::kArgbVU;
  const IntVector u = kUFirst ? hn::DupEven(pairs) : hn::DupOdd(pairs);
  const IntVector v = kUFirst ? hn::DupOdd(pairs) : hn::DupEven(pairs);
  const IntVector red = hn::Mul(v, hn::Set(d, bt601::kRedFromV));
  const IntVector green = hn::Add(hn::Mul(v, hn::Set(d, bt601::kGreenFromV)),
                                  hn::Mul(u, hn::Set(d, bt601::kGreenFromU)));
  const IntVector blue = hn::Mul(u, hn::Set(d, bt601::kBlueFromU));
  return {clampedChannel(hn::Add(level, red)), clampedChannel(hn::Add(level, green)),
          clampedChannel(hn::Add(level, blue))};
}

template <RowFormat kFormat>
void decodeBlock(const uint8_t* luma, const uint8_t* chroma, uint8_t* pixels) {
  const Ints d;
  const Words words;
  const FewBytes few;
  HWY_ALIGN uint8_t planes[3][kBlock];
  for (std::size_t x = 0; x < kBlock; x += kLanes) {
    const Channels c = decodeLanes<kFormat>(luma + x, chroma + x);
    if constexpr (kFormat == RowFormat::kPackedUV) {
      hn::Store(hn::DemoteTo(few, hn::ShiftRight<16>(c.b)), few, planes[0] + x);
      hn::Store(hn::DemoteTo(few, hn::ShiftRight<16>(c.g)), few, planes[1] + x);
      hn::Store(hn::DemoteTo(few, hn::ShiftRight<16>(c.r)), few, planes[2] + x);
    } else {
      const IntVector r = hn::And(c.r, hn::Set(d, 0xFF0000));
      const IntVector g = hn::And(hn::ShiftRight<8>(c.g), hn::Set(d, 0xFF00));
      const IntVector b = hn::ShiftRight<16>(c.b);
      const auto rgb = hn::BitCast(words, hn::Or(hn::Or(r, g), b));
      const auto word = hn::Or(rgb, hn::Set(words, 0xFF000000U));
      hn::StoreU(hn::BitCast(Bytes(), word), Bytes(), pixels + 4 * x);
    }
  }
  if constexpr (kFormat == RowFormat::kPackedUV) {
    const Bytes bytes;
    hn::StoreInterleaved3(hn::Load(bytes, planes[0]), hn::Load(bytes, planes[1]),
                          hn::Load(bytes, planes[2]), bytes, pixels);
  }
}

// R, G and B of kBlock pixels, handed to `use` one int vector at a time with its first column.
template <RowFormat kFormat, class Use>
void forEachLanes(const uint8_t* pixels, Use use) {
  const Ints d;
  if constexpr (kFormat == RowFormat::kPackedUV) {
    const Bytes bytes;
    const FewBytes few;
    HWY_ALIGN uint8_t planes[3][kBlock];
    hn::Vec<Bytes> r, g, b;
    hn::LoadInterleaved3(bytes, pixels, r, g, b);
    hn::Store(r, bytes, planes[0]);
    hn::Store(g, bytes, planes[1]);
    hn::Store(b, bytes, planes[2]);
    for (std::size_t x = 0; x < kBlock; x += kLanes) {
      use(x, Channels{hn::PromoteTo(d, hn::Load(few, planes[0] + x)),
                      hn::PromoteTo(d, hn::Load(few, planes[1] + x)),
                      hn::PromoteTo(d, hn::Load(few, planes[2] + x))});
    }
  } else {
    for (std::size_t x = 0; x < kBlock; x += kLanes) {
      const IntVector word = hn::BitCast(d, hn::LoadU(Bytes(), pixels + 4 * x));
      const IntVector mask = hn::Set(d, 0xFF);
      use(x, Channels{hn::And(hn::ShiftRight<16>(word), mask),
                      hn::And(hn::ShiftRight<8>(word), mask), hn::And(word, mask)});
    }
  }
}

IntVector weigh(const bt601::Weights& weights, const Channels& c) {
  const Ints d;
  const IntVector redGreen =
      hn::Add(hn::Mul(c.r, hn::Set(d, weights.red)), hn::Mul(c.g, hn::Set(d, weights.green)));
  const IntVector blue =
      hn::Add(hn::Mul(c.b, hn::Set(d, weights.blue)), hn::Set(d, weights.offset));
  return hn::ShiftRight<16>(hn::Add(redGreen, blue));
}

template <RowFormat kFormat>
void encodeLumaBlock(const uint8_t* pixels, uint8_t* luma) {
  forEachLanes<kFormat>(pixels, [&](std::size_t x, const Channels& c) HWY_ATTR {
    const FewBytes few;
    hn::StoreU(hn::DemoteTo(few, weigh(bt601::kY, c)), few, luma + x);
  });
}

template <RowFormat kFormat>
void encodeChromaBlock(const uint8_t* pixels, uint8_t* chroma) {
  forEachLanes<kFormat>(pixels, [&](std::size_t x, const Channels& c) HWY_ATTR {
    const FewBytes few;
    constexpr bool kUFirst = kFormat != RowFormat::kArgbVU;
    const IntVector first = weigh(kUFirst ? bt601::kU : bt601::kV, c);
    const IntVector second = weigh(kUFirst ? bt601::kV : bt601::kU, c);
    const IntVector pairs = hn::OddEven(hn::DupEven(second), first);
    hn::StoreU(hn::DemoteTo(few, pairs), few, chroma + x);
  });
}

// Whole blocks, then the rest through zeroed copies on the stack, so that nothing beyond the row is
// read or written.
template <RowFormat kFormat>
void decodeFormat(const uint8_t* luma, const uint8_t* chroma, uint8_t* pixels, std::size_t width) {
  constexpr std::size_t kBytes = pixelBytes(kFormat);
  std::size_t x = 0;
  for (; x + kBlock <= width; x += kBlock) {
    decodeBlock<kFormat>(luma + x, chroma + x, pixels + kBytes * x);
  }
  if (const std::size_t rest = width - x; rest != 0) {
    uint8_t lumaTail[kBlock] = {}, chromaTail[kBlock] = {}, pixelTail[kBytes * kBlock];
    std::memcpy(lumaTail, luma + x, rest);
    std::memcpy(chromaTail, chroma + x, rest + rest % 2);
    decodeBlock<kFormat>(lumaTail, chromaTail, pixelTail);
    std::memcpy(pixels + kBytes * x, pixelTail, kBytes * rest);
  }
}

template <RowFormat kFormat, class Encode>
void encodeFormat(const uint8_t* pixels, uint8_t* samples, std::size_t width, std::size_t count,
                  Encode encodeBlock) {
  constexpr std::size_t kBytes = pixelBytes(kFormat);
  std::size_t x = 0;
  for (; x + kBlock <= width; x += kBlock) {
    encodeBlock(pixels + kBytes * x, samples + x);
  }
  if (x < width) {
    uint8_t pixelTail[kBytes * kBlock] = {}, sampleTail[kBlock];
    std::memcpy(pixelTail, pixels + kBytes * x, kBytes * (width - x));
    encodeBlock(pixelTail, sampleTail);
    std::memcpy(samples + x, sampleTail, count - x);
  }
}

template <RowFormat kFormat>
void encodeLumaFormat(const uint8_t* pixels, uint8_t* luma, std::size_t width) {
  encodeFormat<kFormat>(pixels, luma, width, width, encodeLumaBlock<kFormat>);
}

template <RowFormat kFormat>
void encodeChromaFormat(const uint8_t* pixels, uint8_t* chroma, std::size_t width) {
  encodeFormat<kFormat>(pixels, chroma, width, width + width % 2, encodeChromaBlock<kFormat>);
}

void decodeRowVector(RowFormat format, const uint8_t* luma, const uint8_t* chroma, uint8_t* pixels,
                     std::size_t width) {
  switch (format) {
    case RowFormat::kArgbUV:
      return decodeFormat<RowFormat::kArgbUV>(luma, chroma, pixels, width);
    case RowFormat::kArgbVU:
      return decodeFormat<RowFormat::kArgbVU>(luma, chroma, pixels, width);
    case RowFormat::kPackedUV:
      return decodeFormat<RowFormat::kPackedUV>(luma, chroma, pixels, width);
  }
}

void encodeLumaRowVector(RowFormat format, const uint8_t* pixels, uint8_t* luma,
                         std::size_t width) {
  if (format == RowFormat::kPackedUV) {
    encodeLumaFormat<RowFormat::kPackedUV>(pixels, luma, width);
  } else {
    encodeLumaFormat<RowFormat::kArgbUV>(pixels, luma, width);
  }
}

void encodeChromaRowVector(RowFormat format, const uint8_t* pixels, uint8_t* chroma,
                           std::size_t width) {
  switch (format) {
    case RowFormat::kArgbUV:
      return encodeChromaFormat<RowFormat::kArgbUV>(pixels, chroma, width);
    case RowFormat::kArgbVU:
      return encodeChromaFormat<RowFormat::kArgbVU>(pixels, chroma, width);
    case RowFormat::kPackedUV:
      return encodeChromaFormat<RowFormat::kPackedUV>(pixels, chroma, width);
  }
}

#endif  // vectors or not

}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

HWY_EXPORT(decodeRowVector);
HWY_EXPORT(encodeLumaRowVector);
HWY_EXPORT(encodeChromaRowVector);

void decodeRow(RowFormat format, const uint8_t* luma, const uint8_t* chroma, uint8_t* pixels,
               std::size_t width) {
  HWY_DYNAMIC_DISPATCH(decodeRowVector)(format, luma, chroma, pixels, width);
}

void encodeLumaRow(RowFormat format, const uint8_t* pixels, uint8_t* luma, std::size_t width) {
  HWY_DYNAMIC_DISPATCH(encodeLumaRowVector)(format, pixels, luma, width);
}

void encodeChromaRow(RowFormat format, const uint8_t* pixels, uint8_t* chroma, std::size_t width) {
  HWY_DYNAMIC_DISPATCH(encodeChromaRowVector)(format, pixels, chroma, width);
}

}  // namespace alg
#endif
