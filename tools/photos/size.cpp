#include "tools/photos/size.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>

#include "tools/shell/console.h"

namespace alg::tool {

Size parseSize(const std::string& text, int longestSide) {
  Size size{};
  const char* end = text.data() + text.size();
  const auto width = std::from_chars(text.data(), end, size.width);
  const bool separated = width.ec == std::errc() && width.ptr != end && *width.ptr == 'x';
  const auto height = std::from_chars(separated ? width.ptr + 1 : end, end, size.height);
  if (height.ec != std::errc() || height.ptr != end || size.width < 1 || size.height < 1) {
    throw WrongUse(fmt::format("--size {}: expected WIDTHxHEIGHT, as in 640x480", text));
  }
  if (int64_t{kArgbBytes} * size.width * size.height > std::numeric_limits<int32_t>::max()) {
    throw WrongUse(fmt::format("--size {}: too large, at most {} pixels", text,
                               std::numeric_limits<int32_t>::max() / kArgbBytes));
  }
  if (std::max(size.width, size.height) > longestSide) {
    throw WrongUse(fmt::format("--size {}: at most {} pixels on a side", text, longestSide));
  }
  return size;
}

Size parseFrameSize(const std::string& text, int longestSide) {
  const Size size = parseSize(text, longestSide);
  if (size.width % 2 != 0 || size.height % 2 != 0) {
    throw WrongUse(fmt::format("--size {}: width and height must be even", text));
  }
  return size;
}

}  // namespace alg::tool
