// Sketch and newsketch: dark edge lines on white or on paper.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "base/image_size.h"
#include "catalogue/operations.h"
#include "classic/drawing_rows.h"
#include "classic/grey_rows.h"
#include "classic/neighbourhood.h"
#include "kernels/nearest_steps.h"
#include "libalgorithm/classic_effects.h"

namespace {

using alg::PictureView;

/// Luminance of B, G, R, defined in 10 fractional bits.
constexpr alg::GreyWeights kLuminance{{74 << 6, 732 << 6, 218 << 6}};
static_assert(kLuminance.fit());

struct WhitePaper {
  static void drawRow(const uint8_t* lines, uint8_t* out, int count) {
    alg::spreadGreyRow(lines, out, static_cast<std::size_t>(count));
  }
};

/// A picture of 4 bytes a pixel, stretched over the image. Its bytes 0 and 1 tint red and green;
/// blue takes none.
class PaperPicture {
 public:
  /// @param firstRow  the image's row at which drawing begins
  PaperPicture(const PictureView& picture, int imageWidth, int imageHeight, int firstRow)
      : pixels_(picture.pixels),
        width_(picture.width),
        firstColumn_(picture.width, imageWidth),
        row_(picture.height, imageHeight) {
    firstColumn_.advance();  // drawing starts in column 1 ...
    for (int y = 0; y < firstRow; ++y) {
      row_.advance();
    }
  }

  void drawRow(const uint8_t* lines, uint8_t* out, int count) {
    row_.advance();  // ... and in row 1
    const uint8_t* tints = pixels_ + (std::ptrdiff_t{row_.index()} * width_ * alg::kArgbBytes);
    alg::NearestSteps column = firstColumn_;
    for (int x = 0; x < count; ++x, out += alg::kPackedBytes) {
      const uint8_t* tint = tints + (std::ptrdiff_t{column.index()} * alg::kArgbBytes);
      out[0] = static_cast<uint8_t>(std::min(lines[x] + tint[0], 255));
      out[1] = static_cast<uint8_t>(std::min(lines[x] + tint[1], 255));
      out[2] = lines[x];
      column.advance();
    }
  }

 private:
  const uint8_t* pixels_;
  int width_;
  alg::NearestSteps firstColumn_, row_;
};

template <class Paper>
void sketchOn(Paper paper, const uint8_t* src, uint8_t* dst, int width, int height) {
  const alg::WorkRows work(4, width);
  if (!work) {
    return;
  }
  const alg::PackedImage image{dst, width, height};
  alg::walkWindows(alg::greyRows(src, width, work, kLuminance), image, alg::WindowTarget::kCentre,
                   [&paper, lines = work.row(3)](const uint8_t* top, const uint8_t* middle,
                                                 const uint8_t* bottom, uint8_t* out, int count) {
                     alg::lineRow(top, middle, bottom, lines, static_cast<std::size_t>(count));
                     paper.drawRow(lines, out, count);
                   });
  alg::copyEdges(image);
}

/// Any rows of an image.
void sketchOnPaper(const alg::Call& call) {
  const PictureView& paper = call.pictures[0];
  if (call.width >= 1 && call.height >= 1 && paper.width >= 1 && paper.height >= 1) {
    sketchOn(PaperPicture(paper, call.width, call.rowsOfImage(), call.firstRow), call.src, call.dst,
             call.width, call.height);
  }
}

}  // namespace

void Sketch(unsigned char* src, unsigned char* dst, int width, int height) {
  if (width >= 1 && height >= 1) {
    sketchOn(WhitePaper{}, src, dst, width, height);
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
