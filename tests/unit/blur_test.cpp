// Ramps of radii that no image has.
#include "blur_reference.h"
#include "guarded.h"
#include "kernels/box_blur_rows.h"
#include "libalgorithm/classic_effects.h"
#include "vector_targets.h"

namespace {

/// miniature_r from row `offset` of an image that has `extra` more rows below the strip.
void checkStrip(int offset, int height, int extra, int width) {
  const Bytes pixels = noise(width * height * 3);
  const Guarded src(pixels), dst(noise(width * height * 3, 7));
  Bytes expected(pixels.size());
  ref::blurSeparable(3, {true, offset, extra}, pixels.data(), expected.data(), width, height);
  miniature_r(src.data(), dst.data(), width, height, offset, offset + height + extra);
  EXPECT_TRUE(same(dst.bytes(), expected)) << offset << " " << height << " " << extra;
}

TEST(Blur, TakesAnyStripOfAnyRamp) {
  onEachTarget([&] {
    for (int n = 1; n <= 200; ++n) {
      checkStrip(0, n, 0, 5), checkStrip(0, n - n / 3, n / 3, 5);
      checkStrip(n / 3, n - n / 3 * 2, n / 3, 5), checkStrip(n - 1, 1, 0, 5);
    }
    for (const int n : {-50, -1, 0, 1, 2, 3, 40, 89}) {  // too short for the rows: stays inside
      for (const int offset : {-200, -3, 0, 1, 50, 1000}) {
        checkStrip(offset, 90, n - offset - 90, 11);
      }
    }
  });
}

TEST(Blur, WritesWordsAnywherePastTheCaches) {
  onEachTarget([] {
    const Bytes bytes = noise(3 * 200 + static_cast<int>(alg::kBlurBlock));
    for (const std::size_t width : {0U, 1U, 15U, 16U, 17U, 33U, 200U}) {
      for (std::size_t offset = 0; offset < 68; ++offset) {
        Bytes words(1000, 7);
        Bytes expected = words;
        alg::addAlpha(bytes.data(), width, words.data() + offset, true);
        alg::endStream();
        alg::addAlphaPlain(bytes.data(), width, expected.data() + offset);
        ASSERT_TRUE(same(words, expected)) << width << " " << offset;
      }
    }
  });
}

}  // namespace
