#include "tools/frames/y4m.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

#include "tools/shell/failure.h"

namespace alg::tool {
namespace {

/// They differ in where chroma samples lie, which no effect asks for.
constexpr std::array<std::string_view, 4> kTaken = {"420", "420jpeg", "420mpeg2", "420paldv"};

}  // namespace

Size parseY4mHeader(std::string_view line) {
  if (!line.starts_with(kY4mStart)) {
    throw BadInput(
        "the standard input is no Y4M stream; raw frames need --size WxH and perhaps --format");
  }
  Size size{};
  std::string_view colours = kTaken[0];
  for (std::string_view rest = line.substr(kY4mStart.size()); !rest.empty();) {
    const std::string_view field = rest.substr(0, rest.find(' '));
    rest.remove_prefix(std::min(rest.size(), field.size() + 1));
    if (field.starts_with('W') || field.starts_with('H')) {
      int& side = field[0] == 'W' ? size.width : size.height;
      std::from_chars(field.data() + 1, field.data() + field.size(), side);
    } else if (field.starts_with('C')) {
      colours = field.substr(1);
    }
  }
  if (std::ranges::count(kTaken, colours) == 0) {
    throw BadInput(
        fmt::format("the stream's pixels are of the kind {}; convert them to 8-bit 4:2:0 "
                    "(ffmpeg -pix_fmt yuv420p)",
                    colours));
  }
  const bool even = size.width % 2 == 0 && size.height % 2 == 0;
  const int64_t bytes = int64_t{kArgbBytes} * size.width * size.height;
  if (!even || size.width < 1 || size.height < 1 || bytes > std::numeric_limits<int32_t>::max()) {
    throw BadInput(fmt::format("the stream's frames have {}x{} pixels; only even sides will do",
                               size.width, size.height));
  }
  return size;
}

void pairsOfPlanes(const uint8_t* planes, uint8_t* pairs, std::size_t count) {
  const uint8_t* const u = planes;
  const uint8_t* const v = planes + count;
  for (std::size_t i = 0; i < count; ++i) {
    pairs[2 * i] = v[i];
    pairs[2 * i + 1] = u[i];
  }
}

void planesOfPairs(const uint8_t* pairs, uint8_t* planes, std::size_t count) {
  uint8_t* const u = planes;
  uint8_t* const v = planes + count;
  for (std::size_t i = 0; i < count; ++i) {
    v[i] = pairs[2 * i];
    u[i] = pairs[2 * i + 1];
  }
}

}  // namespace alg::tool
