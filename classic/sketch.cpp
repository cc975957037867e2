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

/// Luminance of B, G, R, defined in 10 fractional bits.
constexpr alg::GreyWeights kLuminance{{74 << 6, 732 << 6, 218 << 6}};
static_assert(kLuminance.fit());

/// Rows of lines become rows of the image by paint(lines, y, out, count), from column 1 on.
template <class Paint>
void sketchOn(Paint paint, const uint8_t* src, uint8_t* dst, int width, int height) {
  const alg::WorkRows work(4, width);
  if (!work) {
    return;
  }
  const alg::PackedImage image{dst, width, height};
  int y = 0;  // the written row
  alg::walkWindows(
      alg::greyRows(src, width, work, kLuminance), image, alg::WindowTarget::kCentre,
      [&paint, &y, lines = work.row(3)](const uint8_t* top, const uint8_t* middle,
                                        const uint8_t* bottom, uint8_t* out, int windows) {
        const auto count = static_cast<std::size_t>(windows);
        alg::lineRow(top, middle, bottom, lines, count);
        paint(lines, ++y, out, count);
      });
  alg::copyEdges(image);
}

}  // namespace

void Sketch(unsigned char* src, unsigned char* dst, int width, int height) {
  if (width >= 1 && height >= 1) {
    sketchOn([](const uint8_t* lines, int /*y*/, uint8_t* out,
                std::size_t count) { alg::spreadGreyRow(lines, out, count); },
             src, dst, width, height);
  }
}

void newsketch(unsigned char* src, unsigned char* dst, int width, int height,
               unsigned char* auxImage, int auxWidth, int auxHeight) {
  alg::StretchedRows paper(auxWidth, auxHeight, width, height, alg::StretchedPixels::kPacked);
  if (!paper.any()) {
    return;
  }
  // The paper's bytes 0 and 1 tint red and green; blue takes none.
  sketchOn(
      [&](const uint8_t* lines, int y, uint8_t* out, std::size_t count) {
        alg::tintGreyRow(lines, paper.row(auxImage, y) + alg::kPackedBytes, out, count);
      },
      src, dst, width, height);
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
    .bands = Bands::kWholeImage,
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
    .bands = Bands::kWholeImage,
    .readsDestination = true,
    .pictures = kNewSketchPictures,
    .pipeline = {.name = "newsketch_effect",
                 .identifier = 14,
                 .loadsPicture = true,
                 .onMissing = PipelineName::OnMissing::kKeepLastPicture},
    .run =
        [](const Call& call) {
          const PictureView& paper = call.pictures[0];
          newsketch(call.src, call.dst, call.width, call.height, const_cast<uint8_t*>(paper.pixels),
                    paper.width, paper.height);
        },
};

}  // namespace alg::operation
