// Sketch and newsketch: dark edge lines on white or on paper.
#include <cstddef>
#include <cstdint>

#include "base/image_size.h"
#include "catalogue/operations.h"
#include "classic/drawing_rows.h"
#include "classic/grey_rows.h"
#include "classic/neighbourhood.h"
#include "kernels/stretched_rows.h"
#include "libalgorithm/classic_effects.h"

namespace {

using alg::PictureView;

/// Luminance of B, G, R, defined in 10 fractional bits.
constexpr alg::GreyWeights kLuminance{{74 << 6, 732 << 6, 218 << 6}};
static_assert(kLuminance.fit());

/// Rows of lines become rows of the image by paint(lines, y, x, out, count), from column x + 1 on.
template <class Paint>
void sketchOn(Paint paint, const uint8_t* src, uint8_t* dst, int width, int height) {
  const alg::WorkRows work(4, width);
  if (!work) {
    return;
  }
  const alg::PackedImage image{dst, width, height};
  alg::FetchAhead ahead(src, image, alg::WindowTarget::kCentre);
  int y = 0;  // the written row
  alg::walkWindows(alg::greyRows(src, width, work, kLuminance), image, alg::WindowTarget::kCentre,
                   [&, lines = work.row(3)](const uint8_t* top, const uint8_t* middle,
                                            const uint8_t* bottom, uint8_t* out, int windows) {
                     ++y;
                     ahead.drawRow(windows, [&](int x, int part) {
                       const auto count = static_cast<std::size_t>(part);
                       alg::lineRow(top + x, middle + x, bottom + x, lines, count);
                       paint(lines, y, x, out + (std::ptrdiff_t{x} * alg::kPackedBytes), count);
                     });
                   });
  alg::copyEdges(image);
}

/// Any rows of an image. The paper's bytes 0 and 1 tint red and green; blue takes none.
void sketchOnPaper(const alg::Call& call) {
  const PictureView& picture = call.pictures[0];
  alg::StretchedRows paper(picture.width, picture.height, call.width, call.rowsOfImage(),
                           alg::StretchedPixels::kPacked);
  if (!paper.any() || call.height < 1) {
    return;
  }
  sketchOn(
      [&](const uint8_t* lines, int y, int x, uint8_t* out, std::size_t count) {
        const uint8_t* tints = paper.row(picture.pixels, call.firstRow + y);
        alg::tintGreyRow(lines, tints + (std::ptrdiff_t{x} + 1) * alg::kPackedBytes, out, count);
      },
      call.src, call.dst, call.width, call.height);
}

}  // namespace

void Sketch(unsigned char* src, unsigned char* dst, int width, int height) {
  if (width >= 1 && height >= 1) {
    sketchOn([](const uint8_t* lines, int /*y*/, int /*x*/, uint8_t* out,
                std::size_t count) { alg::spreadGreyRow(lines, out, count); },
             src, dst, width, height);
  }
}

void newsketch(unsigned char* src, unsigned char* dst, int width, int height,
               unsigned char* auxImage, int auxWidth, int auxHeight) {
  sketchOnPaper({.src = src,
                 .dst = dst,
                 .width = width,
                 .height = height,
                 .pictures = {{auxImage, auxWidth, auxHeight}}});
}

namespace alg::operation {

constinit const Operation kSketch{
    .name = "sketch",
    .routine = "Sketch",
    .family = Family::kDrawing,
    .shows = "Pencil lines on white.",
    .formula = "255 minus the length of the luminance gradient (Prewitt, doubled).",
    .pixels = Pixels::kPackedBgr,
    .reach = Reach::kNeighbours,
    .radius = 1,
    .overlap = Overlap::kApart,
    .bands = Bands::kNear,
    .halo = 2,
    .readsDestination = true,
    .pipeline = {.name = "sketch", .identifier = 13},
    .run = runPlain<Sketch>,
};

constexpr PictureRole kNewSketchPictures[] = {{.name = "paper",
                                               .file = "red2green.png",
                                               .landscapeFile = "red2green_r.png",
                                               .help = "the paper"}};

constinit const Operation kNewSketch{
    .name = "new-sketch",
    .routine = "newsketch",
    .family = Family::kDrawing,
    .shows = "Pencil lines in the tint of a paper.",
    .formula = "Sketch, plus the paper's bytes 0 and 1 on red and green.",
    .pixels = Pixels::kPackedBgr,
    .reach = Reach::kNeighbours,
    .radius = 1,
    .overlap = Overlap::kApart,
    .bands = Bands::kNear,
    .halo = 2,
    .readsDestination = true,
    .pictures = kNewSketchPictures,
    .pipeline = {.name = "newsketch_effect",
                 .identifier = 14,
                 .loadsPicture = true,
                 .onMissing = PipelineName::OnMissing::kKeepLastPicture},
    .run = sketchOnPaper,
};

}  // namespace alg::operation
