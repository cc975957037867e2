// What an effect identifier does to a strip of a packed work image.
#pragma once

#include <cstdint>
#include <optional>

#include "effect/effect_table.h"
#include "libalgorithm/effect_pipeline.h"
#include "pretty/soft_light.h"

namespace alg {

/// The effect of one strip, which may be done in parts. One thread at a time.
class StripEffect {
 public:
  /// Reads the strip's sizes, identifier and overlay band; the overlay's pixels must outlive this.
  explicit StripEffect(const RgbStripDesc& strip);

  /// Whether the work memory for the overlay could be had.
  bool ready() const { return !image_ || image_->ready(); }

  /// Does rows firstRow..firstRow + rows - 1 of the strip, src and dst pointing at the first of
  /// them. They may be the same. When not ready it passes them through.
  void mapRows(uint8_t* src, uint8_t* dst, int firstRow, int rows);

 private:
  int width_;
  SimpleFilter* filter_;
  std::optional<SoftLightImage> image_;
};

}  // namespace alg
