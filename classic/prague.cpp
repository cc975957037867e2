// Prague: each channel overlaid with its inverted Sobel edges. PragueCarton: each pixel divided by
// the brightest of its diagonal neighbours.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "base/image_size.h"
#include "catalogue/operations.h"
#include "classic/drawing_rows.h"
#include "classic/neighbourhood.h"
#include "libalgorithm/classic_effects.h"

namespace {

using alg::CartoonFactors;
using alg::EdgeSteps;
using alg::PlaneWindow;

constexpr int kPlanes = 3 * alg::kPackedBytes;

/// The grey of a squared gradient: 255 without an edge, 2 on a strong one, falling in steps of 1.
/// Any C library's exp and pow give these: errors of up to 64 units in the last place in either,
/// tried over all arguments, change none.
int edgeGrey(int energy) {
  const auto root = std::sqrt(static_cast<float>(std::min(energy, EdgeSteps::kStrongest)));
  const double length = root / 350.0f;  // a float, up to 1
  const auto rise = static_cast<float>(1.0 - std::exp(-5.0 * std::pow(length, 1.5)));
  return 255 - static_cast<int>(rise * 255.0f);
}

/// The first argument of a block, plus kOffset.
int blockStart(int block) {
  const int bits = (block + EdgeSteps::kFirstBlock) << EdgeSteps::kBlockShift;
  float start;
  std::memcpy(&start, &bits, sizeof start);
  return static_cast<int>(start);
}

/// Of an argument plus kOffset, in the upper half.
int rankOf(int argument) {
  const auto number = static_cast<float>(argument);
  int bits;
  std::memcpy(&bits, &number, sizeof bits);
  return (bits >> EdgeSteps::kRankShift) << 16;
}

/// Not constant for the compiler, which would put the table into the library file.
EdgeSteps findEdgeSteps() {
  EdgeSteps edges;
  for (int block = 0; block < EdgeSteps::kBlocks; ++block) {
    int first = blockStart(block), last = blockStart(block + 1) - 1;
    const int grey = edgeGrey(first - EdgeSteps::kOffset);
    while (first < last) {  // the last argument before the step, or of the block
      const int middle = (first + last + 1) / 2;
      if (edgeGrey(middle - EdgeSteps::kOffset) == grey) {
        first = middle;
      } else {
        last = middle - 1;
      }
    }
    edges.entries[block] = rankOf(first) | grey;
  }
  return edges;
}

const EdgeSteps& edgeSteps() {
  static const EdgeSteps kEdges = findEdgeSteps();
  return kEdges;
}

/// A channel v whose brightest neighbour is `most`, where one more than the brightest neighbour of
/// all channels is `limit`, becomes trunc(v x 255.0 x f), and what exceeds 255 wraps. The factor f
/// is 1.0 / (most + (limit - most) x 0.25), rounded to a float. With n = 3 x most + limit that is
/// 4.0 / n: both divisions have the same real quotient.
///
/// v x 255 x f differs from 1020 x v / n by less than 1 / n, so that the rounding counts only where
/// n divides 1020 x v and f is rounded down. A fixed-point factor just above 1020 / n, or just
/// below it where f is rounded down, gives the same for each v (all n and v have been tried).
CartoonFactors findCartoonFactors() {
  constexpr uint64_t kDividend = uint64_t{4 * 255} << (8 + CartoonFactors::kFineBits);
  CartoonFactors factors;
  for (int i = 0; i < static_cast<int>(std::size(factors.entries)); ++i) {
    const int n = i + 1;
    const auto f = static_cast<float>(4.0 / n);
    const bool roundedDown = static_cast<double>(f) * n < 4.0;
    const uint64_t below = (kDividend - 1) / static_cast<unsigned>(n);
    const uint64_t factor = roundedDown ? below : below + 1;
    constexpr int kFineBits = CartoonFactors::kFineBits;
    const auto fine = static_cast<uint32_t>(factor & ((1 << kFineBits) - 1));
    factors.entries[i] = static_cast<uint32_t>(factor >> kFineBits) << 16 | fine;
  }
  return factors;
}

const CartoonFactors& cartoonFactors() {
  static const CartoonFactors kFactors = findCartoonFactors();
  return kFactors;
}

/// Runs a row kernel over the inner pixels, then copies the edges.
template <class Kernel>
void draw(const uint8_t* src, uint8_t* dst, int width, int height, Kernel kernel) {
  if (width < 1 || height < 1) {
    return;
  }
  const alg::WorkRows work(kPlanes, width);
  if (!work) {
    return;
  }
  const alg::PackedImage image{dst, width, height};
  alg::FetchAhead ahead(src, image, alg::WindowTarget::kCentre);
  alg::walkWindows(alg::planeRows(src, width, work), image, alg::WindowTarget::kCentre,
                   [&](const uint8_t* top, const uint8_t* middle, const uint8_t* bottom,
                       uint8_t* out, int windows) {
                     ahead.drawRow(windows, [&](int x, int count) {
                       kernel(PlaneWindow{.top = top + x,
                                          .middle = middle + x,
                                          .bottom = bottom + x,
                                          .pitch = work.pitch()},
                              out + (std::ptrdiff_t{x} * alg::kPackedBytes),
                              static_cast<std::size_t>(count));
                     });
                   });
  alg::copyEdges(image);
}

}  // namespace

void Prague(unsigned char* src, unsigned char* dst, int width, int height, float /*unused*/) {
  draw(src, dst, width, height,
       [&edges = edgeSteps()](const PlaneWindow& rows, uint8_t* out, std::size_t count) {
         alg::inkRow(rows, out, count, edges);
       });
}

void PragueCarton(unsigned char* src, unsigned char* dst, int width, int height, float /*unused*/) {
  draw(src, dst, width, height,
       [&factors = cartoonFactors()](const PlaneWindow& rows, uint8_t* out, std::size_t count) {
         alg::cartoonRow(rows, out, count, factors);
       });
}

namespace alg::operation {

constinit const Operation kPrague{
    .name = "prague",
    .routine = "Prague",
    .family = Family::kDrawing,
    .shows = "Bright colours with edges in ink.",
    .formula =
        "Each channel overlaid with its inverted Sobel edges, 1 - exp(-5 (length / 350)^1.5).",
    .pixels = Pixels::kPackedBgr,
    .reach = Reach::kNeighbours,
    .radius = 1,
    .overlap = Overlap::kApart,
    .bands = Bands::kNear,
    .halo = 2,
    .readsDestination = true,
    .run = [](const Call& call) { Prague(call.src, call.dst, call.width, call.height, 0); },
};

constinit const Operation kPragueCarton{
    .name = "prague-carton",
    .routine = "PragueCarton",
    .family = Family::kDrawing,
    .shows = "Pale as a cartoon; highlights wrap.",
    .formula = "Each pixel divided by the brightest of its diagonal neighbours.",
    .pixels = Pixels::kPackedBgr,
    .reach = Reach::kNeighbours,
    .radius = 1,
    .overlap = Overlap::kApart,
    .bands = Bands::kNear,
    .halo = 2,
    .readsDestination = true,
    .run = [](const Call& call) { PragueCarton(call.src, call.dst, call.width, call.height, 0); },
};

}  // namespace alg::operation
