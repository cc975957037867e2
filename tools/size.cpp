#include "tools/size.h"

#include <fmt/format.h>

#include <charconv>
#include <cstdint>
#include <limits>

#include "tools/console.h"

namespace alg::tool {

Size parseSize(const std::string& text) {
  Size size{};
  const char* end = text.data() + text.size();
  const auto width = std::from_chars(text.data(), end, size.width);
  const bool separated = width.ec == std::errc() && width.ptr != end && *width.ptr == 'x';
  const auto height = std::from_chars(separated ? width.ptr + 1 : end, end, size.height);
  if (height.ec != std::errc() || height.ptr != end || size.width < 1 || size.height < 1) {
    throw UserError(fmt::format("--size {}: expected WIDTHxHEIGHT, as in 640x480", text));
  }
  if (int64_t{kArgbBytes} * size.width * size.height > std::numeric_limits<int32_t>::max()) {
    throw UserError(fmt::format("--size {}: too large", text));
  }
  return size;
}

}  // namespace alg::tool
