// Resize() row by row, from rows that need not follow each other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace alg {

/// An image of 32-bit words. Sizes are at least 1.
struct ResizeSource {
  const uint32_t* words;
  int width, height;
  std::ptrdiff_t pitch;  ///< words from a row to the next

  /// The last row instead of any behind it.
  const uint32_t* row(int y) const { return words + (y < height ? y : height - 1) * pitch; }
};

/// The rows that Resize() makes, from the first to the last. When memory is short, it only takes
/// longer.
class Resizer {
 public:
  /// Takes sizes of at least 1.
  /// @param apart  whether the source's words stay as they are meanwhile
  Resizer(const ResizeSource& source, int dstWidth, int dstHeight, bool apart);
  ~Resizer();
  Resizer(const Resizer&) = delete;
  Resizer& operator=(const Resizer&) = delete;

  /// Writes as many words as the destination is wide.
  void nextRow(uint32_t* out);

 private:
  class RowMixer;

  const ResizeSource src_;
  const int dstWidth_;
  const int32_t xStep_, yStep_;
  std::unique_ptr<RowMixer> mixer_;  ///< null where pixels are mixed one by one
  int32_t position_ = 0;
  int row_ = 0;
};

}  // namespace alg
