// Sizes of images in pixels and bytes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace alg {

inline constexpr int kPackedBytes = 3;  // bytes of a packed pixel
inline constexpr int kArgbBytes = 4;    // bytes of an ARGB word

/// The pixel count of an image, by contract a wrapping 32-bit product; 0 when the product or a side
/// is below 1.
constexpr std::size_t pixelCount(int32_t width, int32_t height) {
  if (width < 1 || height < 1) {
    return 0;
  }
  const auto product =
      static_cast<int32_t>(static_cast<uint32_t>(width) * static_cast<uint32_t>(height));
  return product < 1 ? 0 : static_cast<std::size_t>(product);
}

/// Bytes of a YUV 4:2:0 frame with packed rows: floor(3 x pixels / 2).
constexpr int64_t yuvFrameBytes(int32_t width, int32_t height) {
  return int64_t{width} * height * 3 / 2;
}

/// Pictures from files are decoded up to these sizes; larger ones fail before memory is allocated.
inline constexpr int64_t kMaxPictureSide = 65535;
inline constexpr int64_t kMaxPicturePixels = 256'000'000;
/// The same for the effects' pictures: a PNG file of a few kilobytes can hold hundreds of
/// megabytes.
inline constexpr int64_t kMaxEffectPicturePixels = 64'000'000;

constexpr bool isPictureSize(int64_t width, int64_t height,
                             int64_t mostPixels = kMaxPicturePixels) {
  return width >= 1 && height >= 1 && width <= kMaxPictureSide && height <= kMaxPictureSide &&
         width * height <= mostPixels;
}

}  // namespace alg
