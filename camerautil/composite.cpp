// Blending of images as byte arrays, and the copy of a rectangle.
//
// Buffers may overlap: each loop reads and writes in memory order, and what a loop has written is
// what it reads later on.
#include <cstddef>
#include <cstring>

#include "base/block.h"
#include "base/image_size.h"
#include "camerautil/blend_rows.h"
#include "catalogue/operations.h"
#include "kernels/overlap.h"
#include "libalgorithm/camera_util.h"

namespace {

int distance(uint8_t a, uint8_t b) { return a > b ? a - b : b - a; }

/// Of a, b and c what is farthest from the background; the first of equally far ones.
uint8_t farthest(uint8_t a, uint8_t b, uint8_t c, uint8_t background) {
  const int da = distance(a, background);
  const int db = distance(b, background);
  const int dc = distance(c, background);
  const uint8_t early = da < db ? b : a;
  return da < dc && db < dc ? c : early;
}

/// A byte offset in 32-bit arithmetic, which wraps.
int32_t pixelOffset(int32_t x, int32_t y, int32_t width) {
  return (y * width + x) * alg::kArgbBytes;
}

/// A pixel is read whole before it is written.
void copyPixel(const uint8_t* src, uint8_t* dst, std::ptrdiff_t offset) {
  uint32_t pixel;
  std::memcpy(&pixel, src + offset, sizeof pixel);
  std::memcpy(dst + offset, &pixel, sizeof pixel);
}

/// Whether the order of the pixels shows in the result: when an offset wraps, or when src and dst
/// overlap within the bytes from the first to the last pixel of the rectangle. `rect` isn't empty.
bool orderMatters(const uint8_t* src, const uint8_t* dst, int width, const int* rect) {
  const int64_t first = int64_t{rect[1]} * width + rect[0];
  const int64_t last = (int64_t{rect[3]} - 1) * width + rect[2] - 1;
  constexpr int64_t kLimit = INT32_MAX / alg::kArgbBytes;  // in pixels
  if (width < 0 || first < -kLimit || last > kLimit) {
    return true;
  }
  const std::ptrdiff_t begin = first * alg::kArgbBytes;
  const auto bytes = static_cast<std::size_t>((last - first + 1) * alg::kArgbBytes);
  return alg::overlap(src + begin, bytes, dst + begin, bytes);
}

}  // namespace

void CameraUtil::add2Image(const uint8_t* src, int srcWeight, uint8_t* dst, unsigned int dstWeight,
                           unsigned int n) {
  // Bits 8 to 15 of the sum are stored; they depend on the low 16 bits of the weights alone.
  const auto srcShare = static_cast<uint16_t>(srcWeight);
  const auto dstShare = static_cast<uint16_t>(dstWeight);
  (alg::feedsBack(src, dst, n) ? alg::addSharesPlain : alg::addShares)(src, srcShare, dst, dstShare,
                                                                       n);
}

void CameraUtil::add2ImageByBrightness(const uint8_t* src, uint8_t* dst, unsigned int n) {
  (alg::feedsBack(src, dst, n) ? alg::takeGreaterPlain : alg::takeGreater)(src, dst, n);
}

void CameraUtil::add2ImageByDarkness(const uint8_t* src, uint8_t* dst, unsigned int n) {
  (alg::feedsBack(src, dst, n) ? alg::takeLesserPlain : alg::takeLesser)(src, dst, n);
}

void CameraUtil::replaceImageContent(const uint8_t* src, uint8_t* dst, int width, int* rect) {
  const int left = rect[0];
  const int top = rect[1];
  const int right = rect[2];
  const int bottom = rect[3];
  if (left >= right || top >= bottom) {
    return;
  }
  if (orderMatters(src, dst, width, rect)) {
    for (int x = left; x < right; ++x) {
      for (int y = top; y < bottom; ++y) {
        copyPixel(src, dst, pixelOffset(x, y, width));
      }
    }
    return;
  }
  const auto rowBytes = static_cast<std::size_t>(int64_t{right} - left) * alg::kArgbBytes;
  for (int y = top; y < bottom; ++y) {
    const std::ptrdiff_t offset = pixelOffset(left, y, width);
    std::memcpy(dst + offset, src + offset, rowBytes);
  }
}

uint8_t* CameraUtil::getBackground(const uint8_t* a, const uint8_t* b, const uint8_t* c, int n) {
  const std::size_t size = n > 0 ? static_cast<std::size_t>(n) : 0;
  alg::Block background = alg::allocateBlock(size);
  if (background == nullptr) {
    return nullptr;
  }
  alg::takeNearer(a, b, c, background.get(), size);
  return background.release();
}

void CameraUtil::add3ImageByBackground(uint8_t* a, const uint8_t* b, const uint8_t* c, int n) {
  const std::size_t size = n > 0 ? static_cast<std::size_t>(n) : 0;
  if (!alg::feedsBack(b, a, size) && !alg::feedsBack(c, a, size)) {
    return alg::takeFarthest(a, b, c, size);
  }
  // Here b or c read what a has become, but the background is that of the images before.
  const alg::Block background(getBackground(a, b, c, n));
  if (background == nullptr) {
    return;
  }
  for (std::size_t i = 0; i < size; ++i) {
    a[i] = farthest(a[i], b[i], c[i], background[i]);
  }
}

namespace alg::operation {
namespace {

/// The largest coordinate of a rectangle.
constexpr int kLongestSide = 65535;

unsigned int wordBytes(const Call& call) {
  return static_cast<unsigned int>(bytesOf(Pixels::kWords, pixelCount(call.width, call.height)));
}

/// The rows of a picture, as large as the whole image, that a call's rows belong to.
const uint8_t* rowsOf(const Call& call, std::size_t picture) {
  return call.pictures[picture].pixels +
         bytesOf(Pixels::kWords, pixelCount(call.width, call.firstRow));
}

}  // namespace

constexpr Parameter kMixParameters[] = {{.name = "weight",
                                         .type = Parameter::Type::kInteger,
                                         .most = 256,
                                         .preset = 128,
                                         .unit = "1/256",
                                         .help = "share of the source"}};

constinit const Operation kMix{
    .name = "mix",
    .routine = "CameraUtil::add2Image",
    .family = Family::kBlend,
    .shows = "Two images mixed.",
    .formula = "(dst x (256 - weight) + src x weight) / 256.",
    .pixels = Pixels::kWords,
    .readsDestination = true,
    .parameters = kMixParameters,
    .run =
        [](const Call& call) {
          const int weight = call.integer(0);
          CameraUtil::add2Image(call.src, weight, call.dst, static_cast<unsigned int>(256 - weight),
                                wordBytes(call));
        },
};

constinit const Operation kLighten{
    .name = "lighten",
    .routine = "CameraUtil::add2ImageByBrightness",
    .family = Family::kBlend,
    .shows = "The lighter values of two images.",
    .formula = "The greater of the two bytes.",
    .pixels = Pixels::kWords,
    .readsDestination = true,
    .run =
        [](const Call& call) {
          CameraUtil::add2ImageByBrightness(call.src, call.dst, wordBytes(call));
        },
};

constinit const Operation kDarken{
    .name = "darken",
    .routine = "CameraUtil::add2ImageByDarkness",
    .family = Family::kBlend,
    .shows = "The darker values of two images.",
    .formula = "The smaller of the two bytes.",
    .pixels = Pixels::kWords,
    .readsDestination = true,
    .run =
        [](const Call& call) {
          CameraUtil::add2ImageByDarkness(call.src, call.dst, wordBytes(call));
        },
};

constexpr Parameter kPasteParameters[] = {{.name = "left",
                                           .type = Parameter::Type::kInteger,
                                           .most = kLongestSide,
                                           .unit = "pixels",
                                           .help = "first column"},
                                          {.name = "top",
                                           .type = Parameter::Type::kInteger,
                                           .most = kLongestSide,
                                           .unit = "pixels",
                                           .help = "first row"},
                                          {.name = "right",
                                           .type = Parameter::Type::kInteger,
                                           .most = kLongestSide,
                                           .unit = "pixels",
                                           .help = "column after the last; 0: the image's width"},
                                          {.name = "bottom",
                                           .type = Parameter::Type::kInteger,
                                           .most = kLongestSide,
                                           .unit = "pixels",
                                           .help = "row after the last; 0: the image's height"}};

constinit const Operation kPaste{
    .name = "paste",
    .routine = "CameraUtil::replaceImageContent",
    .family = Family::kBlend,
    .shows = "A rectangle of one image pasted into another.",
    .formula = "Pixels are copied as they are, as if column by column.",
    .pixels = Pixels::kWords,
    .reach = Reach::kPlace,
    .overlap = Overlap::kAny,
    .bands = Bands::kWholeImage,
    .readsDestination = true,
    .parameters = kPasteParameters,
    .run =
        [](const Call& call) {
          const int right = call.integer(2) != 0 ? call.integer(2) : call.width;
          const int bottom = call.integer(3) != 0 ? call.integer(3) : call.height;
          int rect[] = {call.integer(0), call.integer(1), right, bottom};
          CameraUtil::replaceImageContent(call.src, call.dst, call.width, rect);
        },
};

constexpr PictureRole kBackgroundPictures[] = {
    {.name = "second", .size = PictureRole::Size::kSameAsImage, .help = "the second image"},
    {.name = "third", .size = PictureRole::Size::kSameAsImage, .help = "the third image"}};

constinit const Operation kBackground{
    .name = "background",
    .routine = "CameraUtil::getBackground",
    .family = Family::kBlend,
    .shows = "What two of three images agree on.",
    .formula =
        "The second or the third byte, whichever is nearer to the first; the third when both are "
        "equally near.",
    .pixels = Pixels::kWords,
    .overlap = Overlap::kApart,
    .pictures = kBackgroundPictures,
    .run =
        [](const Call& call) {
          const unsigned int bytes = wordBytes(call);
          const Block result(CameraUtil::getBackground(call.src, rowsOf(call, 0), rowsOf(call, 1),
                                                       static_cast<int>(bytes)));
          if (result != nullptr && bytes > 0) {
            std::memcpy(call.dst, result.get(), bytes);
          }
        },
};

constexpr PictureRole kFarthestPictures[] = {
    {.name = "third", .size = PictureRole::Size::kSameAsImage, .help = "the third image"}};

constinit const Operation kFarthest{
    .name = "farthest",
    .routine = "CameraUtil::add3ImageByBackground",
    .family = Family::kBlend,
    .shows = "What stands out in one of three images.",
    .formula =
        "Whichever of the three bytes is farthest from their background; the first of equally far "
        "ones.",
    .pixels = Pixels::kWords,
    .readsDestination = true,
    .pictures = kFarthestPictures,
    .run =
        [](const Call& call) {
          CameraUtil::add3ImageByBackground(call.dst, call.src, rowsOf(call, 0),
                                            static_cast<int>(wordBytes(call)));
        },
};

}  // namespace alg::operation
