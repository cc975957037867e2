// An Exif block (a TIFF structure), changed in place: what is not changed keeps its bytes and its
// offset, so that maker notes, which point into the block in ways only their makers know, stay
// readable.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

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
  /// Takes out the second directory with its thumbnail.
  void dropThumbnail();

  const std::vector<uint8_t>& bytes() const { return bytes_; }

 private:
  struct Entry {
    std::size_t at;  ///< of its 12 bytes
    uint16_t tag;
    uint16_t type;
    uint32_t count;
    std::size_t valueAt;    ///< of its value, in the entry or elsewhere
    std::size_t valueSize;  ///< 0: does not lie in the block
  };
  struct Directory {
    std::size_t at;
    std::vector<Entry> entries;
    uint32_t next = 0;
    std::size_t size() const { return 2 + 12 * entries.size() + 4; }
  };

  explicit ExifBlock(std::vector<uint8_t> bytes) : bytes_(std::move(bytes)) {}
  bool readHeader();
  std::optional<Directory> directoryAt(std::size_t at) const;
  Entry entryAt(std::size_t at) const;
  std::optional<Directory> below(const Directory& parent, uint16_t pointer) const;
  /// The directory at `at` and all below it.
  void forEachDirectory(std::size_t at, const std::function<void(const Directory&)>& use) const;
  void dropInvalidEntries(std::size_t at);
  uint32_t number(std::size_t at, std::size_t size) const;
  void setNumber(std::size_t at, std::size_t size, uint32_t value);
  void setEntry(const Entry& entry, uint32_t value);
  void setNext(const Directory& directory, uint32_t next);

  std::vector<uint8_t> bytes_;
  bool bigEndian_ = false;
  std::size_t first_ = 0;
};

}  // namespace alg::tool
