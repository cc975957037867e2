// Effects that look at neighbours: one walk over the image in windows of 3 x 3 pixels, and one
// border routine whose parts can be used alone. Effects read rows of any kind and write packed
// 3-byte pixels.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "base/block.h"
#include "base/image_size.h"
#include "classic/grey_rows.h"

namespace alg {

/// A packed 3-byte image that is written to. Sizes are at least 1.
struct PackedImage {
  uint8_t* bytes;
  int width;
  int height;

  std::ptrdiff_t rowBytes() const { return std::ptrdiff_t{width} * kPackedBytes; }
  uint8_t* at(int y, int x) const {
    return bytes + (y * rowBytes()) + (std::ptrdiff_t{x} * kPackedBytes);
  }
};

/// Which pixel of a window gets the result, as its row and its column.
enum class WindowTarget : uint8_t { kCentre = 1, kBottomRight = 2 };

/// Slides a window of 3 x 3 pixels over the image and calls kernel(top, middle, bottom, out, count)
/// for each row of windows. The three rows begin at the column of the first window's left edge;
/// `out` is the first window's target pixel and `count` the number of windows, each a pixel to the
/// right. Images below 3 x 3 have none.
///
/// rows(y) gives row y. It is asked once for each row, top down, and the row must stay valid until
/// rows(y + 3).
template <class Rows, class Kernel>
void walkWindows(const Rows& rows, const PackedImage& dst, WindowTarget target, Kernel kernel) {
  if (dst.width < 3 || dst.height < 3) {
    return;
  }
  const auto offset = static_cast<int>(target);
  const uint8_t* top = rows(0);
  const uint8_t* middle = rows(1);
  for (int y = 0; y < dst.height - 2; ++y) {
    const uint8_t* bottom = rows(y + 2);
    kernel(top, middle, bottom, dst.at(y + offset, offset), dst.width - 2);
    top = middle;
    middle = bottom;
  }
}

/// Walks along with walkWindows over packed images and fetches what comes next. Between rows
/// kernels work in the cache and the memory waits; the processor's own prefetching begins anew in
/// each row, and never fetches what is only written. Emboss takes half the time this way.
class FetchAhead {
 public:
  FetchAhead(const uint8_t* src, const PackedImage& dst, WindowTarget target)
      : src_(src), dst_(dst), target_(static_cast<int>(target)) {}

  /// Calls draw(x, count) for stretches of the next row of windows, x being the first one, and
  /// meanwhile fetches as much of the source row that is read next and of the one that is written
  /// next.
  template <class Draw>
  void drawRow(int windows, Draw draw) {
    constexpr int kStretch = 256;  // windows: a multiple of what kernels take at a time
    ++row_;
    const uint8_t* source = src_ + (std::min(row_ + 2, dst_.height - 1) * dst_.rowBytes());
    const uint8_t* target = dst_.at(std::min(row_ + target_, dst_.height - 1), 0);
    for (int x = 0; x < windows; x += kStretch) {
      const int count = std::min(windows - x, kStretch);
      const std::ptrdiff_t begin = std::ptrdiff_t{x} * kPackedBytes;
      fetch(source + begin, target + begin, count * kPackedBytes);
      draw(x, count);
    }
  }

 private:
  // Not a call: g++ drops those of functions that do nothing else.
  [[gnu::always_inline]] static void fetch(const uint8_t* src, const uint8_t* dst, int bytes) {
    constexpr int kCacheLine = 64;
    // At a time, of which the last ones may be further behind. On x86-64 more cost a few percent.
#ifdef __x86_64__
    constexpr int kLines = 1;
#else
    constexpr int kLines = 4;
#endif
    for (const uint8_t* end = src + bytes; src < end; src += kLines * kCacheLine) {
      for (int i = 0; i < kLines; ++i) {
        __builtin_prefetch(src + (i * kCacheLine));
        __builtin_prefetch(dst + (i * kCacheLine), 1);
      }
      dst += kLines * kCacheLine;
    }
  }

  const uint8_t* src_;
  const PackedImage dst_;
  const int target_;  // the row of a window that is written
  int row_ = 0;       // of windows, the next one
};

/// The rows of a packed image as they are.
inline auto packedRows(const uint8_t* src, int width) {
  const std::ptrdiff_t pitch = std::ptrdiff_t{width} * kPackedBytes;
  return [src, pitch](int y) { return src + (y * pitch); };
}

/// Work memory for rows of single bytes, kRowPadding behind each.
class WorkRows {
 public:
  /// Tests as false when memory is short.
  WorkRows(int rows, int width)
      : pitch_(width + static_cast<std::ptrdiff_t>(kRowPadding)),
        block_(allocateBlock(static_cast<std::size_t>(rows * pitch_))) {
    if (block_) {
      std::memset(block_.get(), 0, static_cast<std::size_t>(rows * pitch_));
    }
  }

  explicit operator bool() const { return block_ != nullptr; }
  std::ptrdiff_t pitch() const { return pitch_; }
  uint8_t* row(int index) const { return block_.get() + (index * pitch_); }

 private:
  std::ptrdiff_t pitch_;
  Block block_;
};

/// The rows of a packed image as one grey byte a pixel. The first three rows of `work` take turns.
inline auto greyRows(const uint8_t* src, int width, const WorkRows& work,
                     const GreyWeights& weights) {
  return [rows = packedRows(src, width), width, &work, weights](int y) {
    uint8_t* row = work.row(y % 3);
    greyRow(rows(y), row, static_cast<std::size_t>(width), weights);
    return row;
  };
}

/// The rows of a packed image as three planes, each a work row. The first nine rows of `work` take
/// turns, three at a time.
inline auto planeRows(const uint8_t* src, int width, const WorkRows& work) {
  return [rows = packedRows(src, width), width, &work](int y) {
    uint8_t* planes = work.row(y % 3 * kPackedBytes);
    splitRow(rows(y), planes, work.pitch(), static_cast<std::size_t>(width));
    return planes;
  };
}

inline void copyPixel(uint8_t* to, const uint8_t* from) { std::memcpy(to, from, kPackedBytes); }

/// Row 0 takes row 1, the last row the one before it. A single row stays.
inline void copyEdgeRows(const PackedImage& image) {
  if (image.height < 2) {
    return;
  }
  const auto bytes = static_cast<std::size_t>(image.rowBytes());
  std::memcpy(image.at(0, 0), image.at(1, 0), bytes);
  std::memcpy(image.at(image.height - 1, 0), image.at(image.height - 2, 0), bytes);
}

/// In each row pixel 0 takes pixel 1, then the last pixel the one before it. A single column stays.
inline void copyEdgeColumns(const PackedImage& image) {
  if (image.width < 2) {
    return;
  }
  for (int y = 0; y < image.height; ++y) {
    copyPixel(image.at(y, 0), image.at(y, 1));
    copyPixel(image.at(y, image.width - 1), image.at(y, image.width - 2));
  }
}

/// The border: edge rows, then edge columns, so that corners come from inside.
inline void copyEdges(const PackedImage& image) {
  copyEdgeRows(image);
  copyEdgeColumns(image);
}

}  // namespace alg
