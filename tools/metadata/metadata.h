// What a picture file says about its picture: Exif, XMP, IPTC, colour profile, comment, and
// whatever else cameras and programs have put beside the pixels. All of it stays as it is, byte for
// byte, except what an upright picture of new pixels and size contradicts.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tools/metadata/jpeg_layout.h"

namespace alg::tool {

/// The parts that several file formats have a place for; empty where there is none.
struct MetadataBlocks {
  std::vector<uint8_t> exif{};  ///< from its byte order on
  std::string xmp{};
  std::vector<uint8_t> profile{};    ///< ICC
  std::vector<uint8_t> photoshop{};  ///< resources, IPTC records among them
  std::string comment{};
};

/// Safe to use from several threads, and cheap to copy. Damaged metadata cost a note and the
/// damaged part, never the photo.
class Metadata {
 public:
  /// None.
  Metadata() = default;
  /// Those of a JPEG file.
  /// @param path  for notes; empty for none
  Metadata(const JpegLayout& jpeg, const std::filesystem::path& path);
  /// Those of a file of another format.
  Metadata(const MetadataBlocks& blocks, const std::filesystem::path& path);

  /// How the pixels lie, 1 to 8 as in Exif; 1 is upright.
  int orientation() const;
  /// The whole ICC profile, of the colours that the file holds; empty for none.
  const std::vector<uint8_t>& profile() const;
  /// The same for pixels that lie otherwise.
  Metadata withOrientation(int orientation) const;
  /// The same with another profile, or with none.
  Metadata withProfile(std::vector<uint8_t> profile) const;

  /// What stands behind a picture in its file, as XMP and others may say.
  struct Behind {
    uint64_t gainMapBytes = 0;
    bool others = false;
  };
  /// The segments of a JPEG file with these, which then describe it as upright and width x height.
  /// The first of them is JFIF's or Exif. Thumbnails stay behind, and profiles that aren't for RGB.
  std::vector<uint8_t> segments(int width, int height, const std::filesystem::path& path,
                                const Behind& behind) const;
  /// Which blocks a format takes, beside XMP and profile.
  struct Place {
    const char* format;
    bool exif = false;
    bool photoshop = false;
    bool comment = false;
  };
  /// The same for other formats; a note names what is left out.
  MetadataBlocks blocks(int width, int height, const std::filesystem::path& path,
                        const Place& place) const;

 private:
  struct Parts;
  std::shared_ptr<const Parts> parts_;  ///< null for none
};

}  // namespace alg::tool
