// All colours, edges and factors of the drawing effects.
#include "libalgorithm/classic_effects.h"
#include "operation_check.h"

namespace {

TEST(Drawing, EveryColourGivesTheReferenceBytes) {
  for (const char* name : {"sketch", "emboss", "nature", "prague-carton"}) {
    checkEveryColour(operationNamed(name));
  }
}

/// One window of 3 x 3 pixels for each (a, b), next to each other; pixels(a, b, set) sets its bytes
/// by row, column and channel.
template <class Pixels>
void checkWindows(const char* name, int as, int bs, Pixels pixels) {
  const int width = as * bs * 3;
  Bytes image(asSize(width * 9));
  for (int i = 0; i < as * bs; ++i) {
    pixels(i % as, i / as, [&](int y, int x, int c, int v) {
      image[asSize(((y * as * bs + i) * 3 + x) * 3 + c)] = uint8_t(v);
    });
  }
  check(trialOn(operationNamed(name), image, width, 3));
}

TEST(Drawing, EveryEdgeOfPragueAndSketch) {  // both gradients are odd or both even
  for (const char* name : {"sketch", "prague"}) {
    checkWindows(name, 352, 176, [](int gx, int half, auto set) {
      for (int c = 0; c < 3; ++c) {
        set(0, 0, c, gx % 2), set(1, 0, c, gx / 2), set(0, 1, c, half), set(1, 1, c, gx + 85 * c);
      }
    });
  }
}

TEST(Drawing, EveryFactorAndValueOfPragueCarton) {  // 3 x least + most = 0..1020
  checkWindows("prague-carton", 256, 1021, [](int v, int i, auto set) {
    const int least = i / 4, most = i - 3 * least;
    for (int c = 0; c < 3; ++c) set(1, 1, c, v), set(2, 2, c, c == i % 3 ? most : least);
  });
}

TEST(Drawing, EveryValueBetweenEveryExtremesOfNature) {  // its quotients decide by single roundings
  Bytes rows[3];
  for (int i = 0; i < 256 * 256; ++i) {
    const int most = i % 256, least = i / 256;
    for (int v = least; v <= most; ++v) {
      rows[0].insert(rows[0].end(), 3, uint8_t(least));
      for (const int value : {least, v, most}) rows[1].push_back(uint8_t(value));
    }
  }
  const int width = int(rows[0].size()) / 3 + 2;
  rows[1].insert(rows[1].begin(), 3, 0);
  Bytes image;
  for (Bytes& row : rows) {
    row.resize(asSize(width * 3));
    image.insert(image.end(), row.begin(), row.end());
  }
  check(trialOn(operationNamed("nature"), image, width, 3));
}

TEST(Drawing, EmptyPaperDoesNothing) {
  for (const auto& [width, height] : kSizesBelowOne) {
    newsketch(nullptr, nullptr, 5, 5, nullptr, width, height);
  }
}

}  // namespace
