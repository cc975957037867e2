// The structure of TIFF files and Exif blocks: directories of entries, whose values lie anywhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "tools/metadata/jpeg_layout.h"

namespace alg::tool {

enum TiffTag : uint16_t {
  kImageWidth = 0x100,
  kImageLength = 0x101,
  kStripOffsets = 0x111,
  kOrientation = 0x112,
  kStripByteCounts = 0x117,
  kTileOffsets = 0x144,
  kThumbnailOffset = 0x201,
  kThumbnailBytes = 0x202,
  kExif = 0x8769,
  kGps = 0x8825,
  kMakerNote = 0x927C,
  kColorSpace = 0xA001,
  kPixelXDimension = 0xA002,
  kPixelYDimension = 0xA003,
  kInteroperability = 0xA005,
};
inline constexpr uint16_t kShort = 3;
inline constexpr uint16_t kLong = 4;

struct TiffEntry {
  static constexpr std::size_t kBytes = 12;

  std::size_t at;  ///< of its 12 bytes
  uint16_t tag;
  uint16_t type;
  uint32_t count;
  std::size_t valueAt;    ///< of its value, in the entry or elsewhere
  std::size_t valueSize;  ///< 0: does not lie in the block

  bool holdsValue() const { return valueAt == at + 8; }
};

struct TiffDirectory {
  std::size_t at;
  std::vector<TiffEntry> entries;
  uint32_t next = 0;
  std::size_t size() const { return 2 + TiffEntry::kBytes * entries.size() + 4; }
};

/// Bytes of a value's element; 0 for types that there are not.
std::size_t tiffTypeBytes(uint16_t type);

/// Reads; refers to the caller's bytes.
class TiffView {
 public:
  /// Takes bytes from the byte order on. Empty when no TIFF structure begins there.
  static std::optional<TiffView> of(Bytes bytes);

  Bytes bytes() const { return bytes_; }
  bool bigEndian() const { return bigEndian_; }
  /// Where the first directory is.
  std::size_t first() const { return number(4, 4); }
  uint32_t number(std::size_t at, std::size_t size) const;
  /// Empty when there is none, or not all of it.
  std::optional<TiffDirectory> directoryAt(std::size_t at) const;
  /// The one that an entry of another points to.
  std::optional<TiffDirectory> below(const TiffDirectory& parent, uint16_t pointer) const;
  /// The directory at `at` and all below it.
  void forEachDirectory(std::size_t at, const std::function<void(const TiffDirectory&)>& use) const;

 private:
  TiffView(Bytes bytes, bool bigEndian) : bytes_(bytes), bigEndian_(bigEndian) {}
  TiffEntry entryAt(std::size_t at) const;

  Bytes bytes_;
  bool bigEndian_;
};

/// Stores a number of 1 to 4 bytes.
void putTiffNumber(uint8_t* to, std::size_t size, bool bigEndian, uint32_t value);

}  // namespace alg::tool
