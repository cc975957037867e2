// Runs a routine on packed images and compares all that it writes with its reference.
#pragma once

#include <functional>

#include "guarded.h"
#include "vector_targets.h"

struct PackedEffect {
  using Run = std::function<void(uint8_t* src, uint8_t* dst, int width, int height)>;
  const char* name;
  Run run, reference;
  bool overlaps = false;  // src and dst may overlap in any way
  int channels = 3;
};

/// Runs the effect between guard pages; what dst held before is noise.
inline void checkOn(const PackedEffect& effect, const Bytes& pixels, int width, int height) {
  SCOPED_TRACE(testing::Message() << effect.name << " " << width << "x" << height);
  const Guarded src(pixels), dst(noise(width * height * effect.channels, 7));
  Bytes source = pixels, expected = dst.bytes();
  effect.reference(source.data(), expected.data(), width, height);
  effect.run(src.data(), dst.data(), width, height);
  EXPECT_TRUE(same(dst.bytes(), expected));
  EXPECT_TRUE(same(src.bytes(), pixels)) << "the source changed";
}

/// The same with src and dst `shift` bytes apart in one block.
inline void checkOverlapping(const PackedEffect& effect, int width, int height, int shift) {
  SCOPED_TRACE(testing::Message() << effect.name << " " << width << "x" << height << " " << shift);
  const Guarded got(noise(width * height * effect.channels + std::abs(shift)));
  const int srcAt = std::max(-shift, 0), dstAt = std::max(shift, 0);
  Bytes expected = got.bytes();
  effect.reference(&expected[zu(srcAt)], &expected[zu(dstAt)], width, height);
  effect.run(got.data() + srcAt, got.data() + dstAt, width, height);
  EXPECT_TRUE(same(got.bytes(), expected));
}

/// Noise in every size from 1 to 70 in both directions, structured images, one large image, and
/// overlaps where they are allowed. Nothing may happen for sizes below 1.
inline void checkEverySize(const PackedEffect& effect) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  constexpr int kStep = 7;
#else
  constexpr int kStep = 1;
#endif
  for (int width = 1; width <= 70; ++width) {
    const int step = width <= 5 ? 1 : kStep;
    for (int height = 1 + (width - 1) % step; height <= 70; height += step) {
      checkOn(effect, noise(width * height * 3, width + height), width, height);
    }
  }
  for (const int stripe : {1, 2, 9, 50}) {  // flat areas, edges in both directions, extremes
    Bytes pixels;
    for (int i = 0; i < 61 * 57 * 3; ++i) {
      const int x = i / 3 % 61, y = i / 3 / 61;
      pixels.push_back(uint8_t((x / stripe + y / stripe) % 2 * (i % 3 == 0 ? 200 : 255)));
    }
    checkOn(effect, pixels, 61, 57);
    checkOn(effect, Bytes(pixels.size(), uint8_t(stripe * 5)), 57, 61);
  }
  checkOn(effect, noise(1021 * 765 * 3), 1021, 765);
  if (effect.overlaps) {
    for (const int shift : {0, 1, -1, 3, -3, 5, 47, -49, 96, 300}) {
      checkOverlapping(effect, 67, 33, shift);
    }
  }
  for (const auto& [width, height] : kSizesBelowOne) effect.run(nullptr, nullptr, width, height);
}

/// Every colour, 4096 to a row.
inline void checkEveryColour(const PackedEffect& effect) {
  Bytes pixels(zu(3 * 4096 * 256));
  for (int slice = 0; slice < 16; ++slice) {
    for (int i = 0; i < 4096 * 256; ++i) {
      pixels[zu(3 * i)] = uint8_t(i), pixels[zu(3 * i + 1)] = uint8_t(i >> 8);
      pixels[zu(3 * i + 2)] = uint8_t(slice * 16 + (i >> 16));
    }
    checkOn(effect, pixels, 4096, 256);
  }
}
