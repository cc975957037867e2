// The definitions of the box blur's row kernels.
#include "kernels/box_blur_rows.h"

#include "base/image_size.h"

namespace alg {
namespace {

// Alpha is not summed up; the packed pixels' bytes cross here.
template <int kBytes>
void sumUpPixels(const uint8_t* pixel, std::size_t width, uint16_t* prefix) {
  for (std::size_t x = 0; x < width; ++x, pixel += kBytes, prefix += kBlurElements) {
    for (int k = 0; k < 3; ++k) {
      const uint8_t value = pixel[kBytes == kPackedBytes ? 2 - k : k];
      prefix[3 + k] = static_cast<uint16_t>(prefix[k] + value);
    }
  }
}

}  // namespace

void sumUpPlain(BlurPixels pixels, const uint8_t* row, std::size_t width, uint16_t* prefix) {
  if (pixels == BlurPixels::kWords) {
    sumUpPixels<kArgbBytes>(row, width, prefix);
  } else {
    sumUpPixels<kPackedBytes>(row, width, prefix);
  }
}

void meansAcrossPlain(const BlurRun* runs, int runCount, const uint16_t* prefix, uint8_t* row) {
  for (const BlurRun* run = runs; run != runs + runCount; ++run) {
    const std::size_t reach = kBlurElements * static_cast<std::size_t>(run->radius);
    const uint16_t* from = prefix + run->begin - reach;
    const uint16_t* to = prefix + run->begin + reach + kBlurElements;
    uint8_t* __restrict means = row + run->at;
    const LineMean mean = kBlurMeans.line[run->radius];
    for (std::size_t i = 0; i < run->count; ++i) {
      means[i] = mean.of(static_cast<uint16_t>(to[i] - from[i]));
    }
  }
}

void sumsAcrossPlain(const BlurRun* runs, int runCount, const uint16_t* prefix, uint16_t* row) {
  for (const BlurRun* run = runs; run != runs + runCount; ++run) {
    const std::size_t reach = kBlurElements * static_cast<std::size_t>(run->radius);
    const uint16_t* from = prefix + run->begin - reach;
    const uint16_t* to = prefix + run->begin + reach + kBlurElements;
    uint16_t* __restrict sums = row + run->at;
    for (std::size_t i = 0; i < run->count; ++i) {
      sums[i] = static_cast<uint16_t>(to[i] - from[i]);
    }
  }
}

void finishMeansPlain(const BlurRun* runs, int runCount, const uint8_t* ring, uint16_t* sums,
                      uint8_t* bytes) {
  for (const BlurRun* run = runs; run != runs + runCount; ++run) {
    const uint8_t* entering = ring + run->entering + run->at;
    const uint8_t* leaving = ring + run->leaving + run->at;
    uint16_t* __restrict sum = sums + run->at;
    uint8_t* __restrict out = bytes + run->begin;
    const LineMean mean = kBlurMeans.line[run->radius];
    for (std::size_t i = 0; i < run->count; ++i) {
      sum[i] = static_cast<uint16_t>(sum[i] + entering[i] - leaving[i]);
      out[i] = mean.of(sum[i]);
    }
  }
}

void addSquaresPlain(const BlurRun& run, int weight, const uint16_t* row, uint32_t* sums) {
  uint32_t* __restrict sum = sums;
  const std::size_t count = run.count;
  for (std::size_t i = 0; i < count; ++i) {
    sum[i] += static_cast<uint32_t>(weight) * row[i];
  }
}

void finishSquaresPlain(const BlurRun* runs, int runCount, const uint16_t* ring, uint32_t* sums,
                        const uint8_t* centres, uint8_t* bytes) {
  for (const BlurRun* run = runs; run != runs + runCount; ++run) {
    const uint16_t* entering = ring + run->entering + run->at;
    const uint16_t* leaving = ring + run->leaving + run->at;
    const uint8_t* centre = centres + run->begin;
    uint32_t* __restrict sum = sums + run->at;
    uint8_t* __restrict out = bytes + run->begin;
    const uint32_t reciprocal = kBlurMeans.square[run->radius];
    for (std::size_t i = 0; i < run->count; ++i) {
      sum[i] += uint32_t{entering[i]} - leaving[i];
      out[i] = static_cast<uint8_t>(((sum[i] + uint32_t{4} * centre[i]) * reciprocal) >> 16);
    }
  }
}

void dropAlphaPlain(const uint8_t* words, std::size_t width, uint8_t* bytes) {
  for (std::size_t x = 0; x < width; ++x, words += kArgbBytes, bytes += kBlurElements) {
    bytes[0] = words[0];
    bytes[1] = words[1];
    bytes[2] = words[2];
  }
}

void addAlphaPlain(const uint8_t* bytes, std::size_t width, uint8_t* words, bool /*stream*/) {
  for (std::size_t x = 0; x < width; ++x, words += kArgbBytes, bytes += kBlurElements) {
    words[0] = bytes[0];
    words[1] = bytes[1];
    words[2] = bytes[2];
    words[3] = 0;
  }
}

}  // namespace alg
