// JPEG as the application sees it: whole files to and from B, G, R, A pixels, in sizes that a Java
// buffer or array can hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/jpeg.h"

namespace alg {

/// Decodes a JPEG file of `size` bytes. Empty when it can't be decoded or its pixels take more than
/// 2^31 - 1 bytes.
std::optional<DecodedJpeg> jpegToArgb(const uint8_t* file, std::size_t size);

/// Encodes pixels; `quality` is passed on. Empty when they can't be encoded or the file takes more
/// than 2^31 - 1 bytes.
std::optional<EncodedJpeg> argbToJpeg(const uint8_t* pixels, int width, int height, int quality);

}  // namespace alg
