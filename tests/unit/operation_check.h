// Runs operations and compares all that they write with their references.
#pragma once

#include "guarded.h"
#include "trial.h"
#include "vector_targets.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kSlowdown = 7;  // of tests, which take fewer sizes then
#else
constexpr int kSlowdown = 1;
#endif

/// The operation of a name that there must be.
inline const alg::Operation& operationNamed(std::string_view name) {
  const alg::Operation* const found = alg::findOperation(name);
  return found != nullptr ? *found : throw std::invalid_argument(std::string(name));
}

/// A block that ends, or begins, at an inaccessible page.
using PageBehind = Guarded;
struct PageBefore : Guarded {
  explicit PageBefore(const Bytes& content) : Guarded(content, true) {}
};

/// Runs a trial between guard pages and compares all memory with what the reference leaves there:
/// result, source, pictures. On the vector target that is set.
template <class Block = PageBehind>
void expectBytes(const Trial& trial, const Bytes& expected) {
  const auto& [src, dst, w, h, rw, rh, first, rows, values, pictures] = trial.call;
  SCOPED_TRACE(testing::Message() << trial.operation->name << " " << w << "x" << h << " to " << rw
                                  << "x" << rh << " shift " << trial.shift.value_or(INT32_MIN)
                                  << " values " << testing::PrintToString(values) << " pictures "
                                  << pictures[0].width << "x" << pictures[0].height << " "
                                  << pictures[1].width << "x" << pictures[1].height);
  EXPECT_TRUE(same(resultOf<Block>(trial, trial.operation->run), expected));
}

inline Bytes expectedOf(const Trial& trial) {
  return resultOf<Bytes>(trial, referenceOf(*trial.operation));
}

/// A run on pixels of one's own, every parameter at its preset. What the destination held is noise.
inline Trial trialOn(const alg::Operation& operation, const Bytes& pixels, int width, int height) {
  Trial trial(operation, width, height);
  trial.src = pixels;
  trial.dst = noise(int(trial.resultBytes()), 7);
  return trial;
}

/// Checks that every colour of packed pixels, 4096 to a row, becomes the reference's.
inline void checkEveryColour(const alg::Operation& operation) {
  Bytes pixels(asSize(3 * 4096 * 256));
  for (int slice = 0; slice < 16; ++slice) {
    for (int i = 0; i < 4096 * 256; ++i) {
      uint8_t* const pixel = &pixels[asSize(3 * i)];
      pixel[0] = uint8_t(i), pixel[1] = uint8_t(i >> 8);
      pixel[2] = uint8_t(slice * 16 + (i >> 16));
    }
    const Trial trial = trialOn(operation, pixels, 4096, 256);
    expectBytes(trial, expectedOf(trial));
  }
}

/// Checks a trial on each vector target.
inline void check(const Trial& trial) {
  const Bytes expected = expectedOf(trial);
  onEachVectorTarget([&] { expectBytes(trial, expected); });
}
