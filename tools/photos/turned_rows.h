// The rows of a photo that does not lie upright, turned as they are decoded.
#pragma once

#include "base/block.h"
#include "codec/jpeg_bands.h"
#include "tools/photos/photo.h"

namespace alg::tool {

/// Holds the upright picture, 3 bytes a pixel.
class TurnedRows final : public JpegRowStore {
 public:
  /// @param orientation  2 to 8 as in Exif, which is undone
  explicit TurnedRows(int orientation) : orientation_(orientation) {}

  bool begin(int& width, int& height, JpegPixels pixels) override;
  void put(const uint8_t* rows, int count) override;
  void get(uint8_t* rows, int count) override;

 private:
  void putTile(Rows<const uint8_t> src, const Part& part);
  uint8_t* at(int x, int y) const;

  const int orientation_;
  JpegPixels pixels_ = JpegPixels::kBgra;
  int sourceWidth_ = 0, sourceHeight_ = 0;
  int width_ = 0;
  int taken_ = 0, given_ = 0;  ///< rows
  Block picture_;
};

}  // namespace alg::tool
