// An Exif block (a TIFF structure), changed in place: what is not changed keeps its bytes and its
// offset, so that maker notes, which point into the block in ways only their makers know, stay
// readable.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "tools/metadata/tiff_view.h"

namespace alg::tool {

class ExifBlock {
 public:
  /// Takes a block from its byte order on, and drops entries of no valid type, behind which many
  /// readers give up. Empty when it is damaged beyond that.
  static std::optional<ExifBlock> parse(std::vector<uint8_t> bytes);

  /// 1 to 8; 0 when it does not say.
  int orientation() const;
  /// Says that the picture is upright and has that size, where the block says anything about it.
  void describe(uint32_t width, uint32_t height);
  /// Says that the colours are sRGB, where the block says anything about them.
  void describeSrgb();
  /// Takes out the second directory with its thumbnail.
  void dropThumbnail();

  const std::vector<uint8_t>& bytes() const { return bytes_; }

 private:
  explicit ExifBlock(std::vector<uint8_t> bytes) : bytes_(std::move(bytes)) {}
  TiffView view() const { return *TiffView::of(bytes_); }
  void dropInvalidEntries(std::size_t at);
  void setNumber(std::size_t at, std::size_t size, uint32_t value);
  void setEntry(const TiffEntry& entry, uint32_t value);
  void setNext(const TiffDirectory& directory, uint32_t next);

  std::vector<uint8_t> bytes_;
};

}  // namespace alg::tool
