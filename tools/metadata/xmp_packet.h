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

  /// Makes the packet say what stands behind the picture, where it says anything about that.
  /// @param gainMapBytes  0: there is none
  /// @param others        there are other bytes behind it: a video
  void describeFollowers(uint64_t gainMapBytes, bool others);

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
