// Colours from one ICC profile to another.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/jpeg_reader.h"
#include "tools/metadata/metadata.h"
#include "tools/photos/photo.h"
#include "tools/photos/photo_options.h"

namespace alg::tool {

/// A way from the colours of one profile to those of another, by relative colorimetry with black
/// points matched. One thread at a time.
class ColourTransform {
 public:
  /// An empty profile stands for sRGB. None when a profile can't be used, or not for such pixels.
  /// @param pixels  that come: kGrey as B, G, R, A, all the same; kCmyk with 255 for no ink
  static std::optional<ColourTransform> make(JpegColours pixels, const std::vector<uint8_t>& from,
                                             const std::vector<uint8_t>& to);

  /// Converts pixels, in place, to B, G, R, A.
  void run(uint8_t* pixels, std::size_t count) const;
  void run(Photo& photo) const;

 private:
  ColourTransform(void* transform, bool opaque);

  std::shared_ptr<void> transform_;
  bool opaque_;  ///< sets alpha
};

/// What the pixels of a file have to go through to become a photo's; none for nothing. A photo's
/// colours are those of an RGB profile, or sRGB: grey and CMYK go through their own profile to
/// that, CMYK with a note; and so does all else with --to-srgb. CMYK without a profile comes from
/// the decoder, by ideal inks. Throws BadInput.
/// @param metadata  of the file; of the photo afterwards
std::optional<ColourTransform> transformFor(JpegColours pixels, Metadata& metadata,
                                            const PhotoOptions& options,
                                            const std::filesystem::path& path);

/// What PNG files say of their colours in place of a profile, in units of 1/100000.
struct Gamma {
  int32_t encoding = 0;             ///< exponent from light to sample
  int32_t chromaticities[8] = {0};  ///< x and y of white, red, green, blue; 0: sRGB's
};
/// A profile of these colours; empty for those of sRGB.
std::vector<uint8_t> profileOf(const Gamma& gamma, bool grey);

/// As JpegReader takes it; empty for none. `transform` must outlive it.
JpegRowWork rowWork(const std::optional<ColourTransform>& transform);

}  // namespace alg::tool
