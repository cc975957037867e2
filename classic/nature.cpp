// nature: saturation raised against the upper left neighbour, then contrast.
#include "classic/nature_rows.h"

#include <cstddef>
#include <cstdint>

#include "base/image_size.h"
#include "catalogue/operations.h"
#include "classic/neighbourhood.h"
#include "libalgorithm/classic_effects.h"

namespace {

using alg::PackedImage;

/// The top row goes left to right while the bottom row goes right to left: with two rows each reads
/// what the other has just overwritten.
void copyRowsCrosswise(const PackedImage& dst) {
  if (dst.height < 2) {
    return;
  }
  for (int k = 0; k < dst.width; ++k) {
    const int mirrored = dst.width - 1 - k;
    alg::copyPixel(dst.at(0, k), dst.at(1, k));
    alg::copyPixel(dst.at(dst.height - 1, mirrored), dst.at(dst.height - 2, mirrored));
  }
}

/// The right column takes its neighbour. The left one takes the three bytes from y x width + 1 on,
/// byte by byte: they lie near the top of the image, and in row 0 they overlap the pixel itself.
void copyColumnsAskew(const PackedImage& dst) {
  const std::ptrdiff_t end = dst.height * dst.rowBytes();
  for (int y = 0; y < dst.height; ++y) {
    const std::ptrdiff_t from = (std::ptrdiff_t{y} * dst.width) + 1;
    for (int k = 0; k < alg::kPackedBytes && from + k < end; ++k) {
      dst.at(y, 0)[k] = dst.bytes[from + k];
    }
    if (dst.width > 1) {
      alg::copyPixel(dst.at(y, dst.width - 1), dst.at(y, dst.width - 2));
    }
  }
}

}  // namespace

void nature(unsigned char* src, unsigned char* dst, int width, int height) {
  if (width < 1 || height < 1) {
    return;
  }
  const PackedImage image{dst, width, height};
  alg::FetchAhead ahead(src, image, alg::WindowTarget::kCentre);
  alg::walkWindows(alg::packedRows(src, width), image, alg::WindowTarget::kCentre,
                   [&ahead](const uint8_t* top, const uint8_t* middle, const uint8_t* /*bottom*/,
                            uint8_t* out, int windows) {
                     ahead.drawRow(windows, [=](int x, int count) {
                       const std::ptrdiff_t at = std::ptrdiff_t{x} * alg::kPackedBytes;
                       alg::boostRow(top + at, middle + at + alg::kPackedBytes, out + at,
                                     static_cast<std::size_t>(count));
                     });
                   });
  copyRowsCrosswise(image);
  copyColumnsAskew(image);
}

namespace alg::operation {

constinit const Operation kNature{
    .name = "nature",
    .routine = "nature",
    .family = Family::kDrawing,
    .shows = "Deep colours, hard contrast.",
    .formula = "Saturation raised relative to the upper left neighbour, then contrast of gain 1.5.",
    .pixels = Pixels::kPackedBgr,
    .reach = Reach::kNeighbours,
    .radius = 1,
    .overlap = Overlap::kApart,
    .bands = Bands::kWholeImage,
    .readsDestination = true,
    .pipeline = {.name = "nature", .identifier = 6},
    .run = runPlain<nature>,
};

}  // namespace alg::operation
