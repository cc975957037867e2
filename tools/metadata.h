// What a JPEG file says about its picture: Exif, XMP, IPTC, colour profile and comment.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <vector>

namespace alg::tool {

/// Safe to use from several threads, and cheap to copy. Damaged metadata costs a note and the
/// damaged part, never the photo.
class Metadata {
 public:
  /// None.
  Metadata() = default;
  /// Those of a JPEG file.
  /// @param path  for notes
  Metadata(std::span<const uint8_t> jpeg, const std::filesystem::path& path);

  /// How the pixels lie, 1 to 8 as in Exif; 1 is upright.
  int orientation() const;

  /// The JPEG file with these metadata, which then describe it as upright and width x height; empty
  /// when there is nothing to add. Thumbnails and extended XMP, and profiles that aren't for RGB,
  /// stay behind.
  std::vector<uint8_t> addedTo(std::span<const uint8_t> jpeg, int width, int height,
                               const std::filesystem::path& path) const;

 private:
  struct Parts;
  std::shared_ptr<const Parts> parts_;  ///< null for none
};

}  // namespace alg::tool
