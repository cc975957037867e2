// Y4M: uncompressed video with a line of text before it and before each frame.
#pragma once

#include <cstdint>
#include <string_view>

#include "tools/photos/size.h"

namespace alg::tool {

inline constexpr std::string_view kY4mStart = "YUV4MPEG2 ";
inline constexpr std::string_view kY4mFrame = "FRAME";
inline constexpr std::size_t kLongestY4mLine = 4096;

/// The size of the frames that a stream's first line announces, without its newline. Throws
/// BadInput for lines that are none, and for anything but 8-bit 4:2:0 with even sides.
Size parseY4mHeader(std::string_view line);

/// Between the planes of Y4M, U and then V, and the V,U pairs of NV21.
void pairsOfPlanes(const uint8_t* planes, uint8_t* pairs, std::size_t count);
void planesOfPairs(const uint8_t* pairs, uint8_t* planes, std::size_t count);

}  // namespace alg::tool
