// What a TIFF file says about its picture stands in its own directories, in which an Exif block's
// would be: from there into a block, and back.
#pragma once

#include <cstdint>
#include <vector>

#include "tools/metadata/jpeg_layout.h"

namespace alg::tool {

struct TiffExif {
  std::vector<uint8_t> block{};  ///< from its byte order on; empty for none
  bool makerNoteLost = false;    ///< it would not have been readable in another place
};

/// The Exif block of a TIFF file's first picture: all but how the picture is stored, and what other
/// formats keep beside their Exif (XMP, profile, Photoshop's). Values keep their bytes, and a maker
/// note its offset or, where its maker's way is known, gets it right.
TiffExif exifOfTiff(Bytes file);

/// A TIFF file of one picture in strips or tiles, with an Exif block, all of whose values keep
/// bytes and offset: the file begins as the block does.
std::vector<uint8_t> tiffWithExif(Bytes file, Bytes exif);

}  // namespace alg::tool
