// What stands behind the picture in a JPEG file: a gain map, which makes an HDR picture of it, a
// video, previews, and the index of those that are pictures (a "multi-picture" file).
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tools/metadata/jpeg_layout.h"
#include "tools/photos/resample.h"

namespace alg::tool {

/// What has become of a picture since its file was read.
struct PictureChange {
  int orientation = 1;        ///< that has been undone
  Area shown = {0, 0, 1, 1};  ///< what is left of the upright picture, in parts of its sides
  bool moved = false;         ///< pixels are not where they were
};

class Followers {
 public:
  Followers() = default;
  /// Of a file, all of which is in memory.
  Followers(Bytes file, const JpegLayout& layout);

  bool empty() const { return pictures_.empty() && rest_.empty(); }
  bool hasGainMap() const;
  /// Bytes that are no pictures: a video, or what a camera maker has put there.
  bool hasRest() const { return !rest_.empty(); }
  /// Whether there are pictures that can't be kept: of other views or times.
  bool hasViews() const;

  /// Takes out what no longer goes with the picture. Throws std::bad_alloc.
  void follow(const PictureChange& change);
  /// The gain map's bytes; 0 for none.
  std::size_t gainMapBytes() const;

  /// The segment of the index, still without places and sizes; empty for none.
  std::vector<uint8_t> index() const;
  /// Appends all to a file, and fills in its index.
  /// @param indexAt  of the index's segment in the file; 0: has none
  void appendTo(std::vector<uint8_t>& file, std::size_t indexAt) const;

 private:
  struct Picture {
    uint32_t attributes;  ///< as the index has them
    std::vector<uint8_t> bytes;
    bool listed = true;  ///< in the index
  };
  void readIndex(Bytes file, Bytes index, Bytes behind);

  uint32_t attributes_ = 0;  ///< of the picture itself
  std::vector<Picture> pictures_;
  std::vector<uint8_t> rest_;
};

}  // namespace alg::tool
