// An XMP packet: properties by namespace and name, changed where they stand. What is not changed is
// written as it was read, whatever it is.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pugi {
class xml_document;
class xml_node;
}  // namespace pugi

namespace alg::tool {

class XmpPacket {
 public:
  /// Empty when the packet is damaged.
  static std::optional<XmpPacket> parse(std::string_view packet);
  XmpPacket(XmpPacket&&) noexcept;
  XmpPacket& operator=(XmpPacket&&) noexcept;
  ~XmpPacket();

  /// 1 to 8; 0 when it does not say.
  int orientation() const;
  /// Says that the picture is upright and has that size, where the packet says anything about it.
  void describe(uint32_t width, uint32_t height);
  void dropThumbnails();

  /// A file that stands behind the picture's, or the picture itself.
  struct Item {
    std::string mime;
    std::string semantic;  ///< "Primary", "GainMap", "MotionPhoto", ...
    uint64_t length = 0;   ///< in bytes; 0 for the picture itself
    uint64_t padding = 0;  ///< bytes between it and the next
  };
  /// Those that the packet lists, in their order.
  std::vector<Item> items() const;
  void setLength(std::size_t item, uint64_t length);
  /// Bytes from a video's begin to the file's end, as older cameras say; 0: no video.
  uint64_t videoBytes() const;
  bool claimsGainMap() const;
  bool claimsVideo() const;
  /// Takes out what the packet says of files behind the picture's.
  void dropClaims();

  bool changed() const { return changed_; }
  std::string text() const;

 private:
  explicit XmpPacket(std::unique_ptr<pugi::xml_document> document);
  std::optional<std::string> find(std::string_view space, std::string_view name) const;
  void set(std::string_view space, std::string_view name, std::string_view value);
  /// Removes the properties whose names begin so.
  void remove(std::string_view space, std::string_view begin);

  std::unique_ptr<pugi::xml_document> document_;
  bool changed_ = false;
};

}  // namespace alg::tool
