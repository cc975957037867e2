// Emboss: grey relief of the luminance step from two rows up and two columns left.
#include <cstddef>
#include <cstdint>

#include "catalogue/operations.h"
#include "classic/drawing_rows.h"
#include "classic/grey_rows.h"
#include "classic/neighbourhood.h"
#include "libalgorithm/classic_effects.h"

namespace {

using alg::PackedImage;

/// Luminance of B, G, R.
constexpr alg::GreyWeights kLuminance{{4732, 46871, 13933}};
static_assert(kLuminance.fit());

/// Row 0, which holds what dst held before, goes one pixel to the right in row 1 (its last pixel to
/// the start of row 2), while the last row but one takes the row above it from right to left. With
/// few rows each reads what the other has written, so the order counts.
void smearRows(const PackedImage& dst) {
  for (int k = 0; k < dst.width; ++k) {
    const bool wraps = k + 1 == dst.width;
    const int toRow = wraps ? 2 : 1;
    if (toRow < dst.height) {
      alg::copyPixel(dst.at(toRow, wraps ? 0 : k + 1), dst.at(0, k));
    }
    if (dst.height >= 3) {
      const int mirrored = dst.width - 1 - k;
      alg::copyPixel(dst.at(dst.height - 2, mirrored), dst.at(dst.height - 3, mirrored));
    }
  }
}

}  // namespace

void Emboss(unsigned char* src, unsigned char* dst, int width, int height) {
  if (width < 1 || height < 1) {
    return;
  }
  const alg::WorkRows work(4, width);
  if (!work) {
    return;
  }
  const PackedImage image{dst, width, height};
  constexpr auto kTarget = alg::WindowTarget::kBottomRight;
  alg::FetchAhead ahead(src, image, kTarget);
  alg::walkWindows(alg::greyRows(src, width, work, kLuminance), image, kTarget,
                   [&ahead, grey = work.row(3)](const uint8_t* top, const uint8_t* /*middle*/,
                                                const uint8_t* bottom, uint8_t* out, int windows) {
                     ahead.drawRow(windows, [=](int x, int part) {
                       const auto count = static_cast<std::size_t>(part);
                       alg::reliefRow(top + x, bottom + x, grey, count);
                       alg::spreadGreyRow(grey, out + (std::ptrdiff_t{x} * alg::kPackedBytes),
                                          count);
                     });
                   });
  smearRows(image);
  alg::copyEdgeColumns(image);
}

namespace alg::operation {

constinit const Operation kEmboss{
    .name = "emboss",
    .routine = "Emboss",
    .family = Family::kDrawing,
    .shows = "A grey relief.",
    .formula = "16 times the luminance step from two rows up and two columns left, plus 128.",
    .pixels = Pixels::kPackedBgr,
    .reach = Reach::kNeighbours,
    .radius = 2,
    .overlap = Overlap::kApart,
    .bands = Bands::kNear,
    .halo = 4,
    .readsDestination = true,
    .pipeline = {.name = "emboss_effect", .identifier = 18, .strips = 1},
    .backdrop = 128,
    .run = runPlain<Emboss>,
};

}  // namespace alg::operation
