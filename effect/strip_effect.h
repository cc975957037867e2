// What an effect does to a strip of a packed image.
#pragma once

#include <cstdint>
#include <optional>

#include "catalogue/operation.h"
#include "pretty/soft_light.h"

namespace alg {

/// The effect on one strip, which may be processed in parts. One thread at a time.
class StripEffect {
 public:
  /// @param operation  null: pixels are only crossed, which the conversion back undoes
  /// @param picture    the strip's share of the effect's picture; its pixels must outlive this
  /// @param width      pixels per row
  /// @param rows       of the strip
  StripEffect(const Operation* operation, const PictureView& picture, int width, int rows);

  /// Whether the work memory for the picture was allocated.
  bool ready() const { return !image_ || image_->ready(); }

  /// Processes rows firstRow..firstRow + rows - 1 of the strip; src and dst point at the first of
  /// them and may be the same. When not ready, it passes them through.
  void mapRows(uint8_t* src, uint8_t* dst, int firstRow, int rows);

  /// Goes on to another strip, whose share of the picture has the same size.
  void moveTo(const PictureView& picture, int rows);

 private:
  const Operation* operation_;
  PictureView picture_;
  int width_;
  int rows_;
  std::optional<SoftLightImage> image_;
};

}  // namespace alg
