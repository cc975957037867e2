#include "tools/commands/resize.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>
#include <utility>

#include "libalgorithm/pretty_filters.h"
#include "tools/photos/photo_file.h"
#include "tools/photos/resample.h"
#include "tools/photos/size.h"
#include "tools/shell/console.h"

namespace alg::tool {
namespace {

constexpr char kBilinear[] = "bilinear";

/// What the user wants; sides that are 0 follow from the photo's shape.
struct Wanted {
  double percent = 0;
  bool longest = false;  ///< width is that of the longer side
  int width = 0;
  int height = 0;
};

std::optional<double> numberOf(std::string_view text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  return whole && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

Wanted parseWanted(const std::string& text) {
  const auto fail = [&]() -> WrongUse {
    return WrongUse(
        fmt::format("--size {}: expected WIDTHxHEIGHT, as in 640x480, or 400, 400x, "
                    "x300 or 50%",
                    text));
  };
  const auto side = [&](std::string_view digits) {
    const auto value = numberOf(digits);
    if (!value || *value < 1 || *value != std::floor(*value)) {
      throw fail();
    }
    if (*value > kLongestJpegSide) {
      throw WrongUse(fmt::format("--size {}: at most {} pixels on a side", text, kLongestJpegSide));
    }
    return static_cast<int>(*value);
  };
  const std::string_view all = text;
  const std::size_t cross = all.find('x');
  if (all.ends_with('%')) {
    const auto percent = numberOf(all.substr(0, all.size() - 1));
    if (!percent || *percent <= 0 || *percent > 10000) {
      throw fail();
    }
    return {.percent = *percent};
  }
  if (cross == std::string_view::npos) {
    return {.longest = true, .width = side(all)};
  }
  if (cross > 0 && cross + 1 < all.size()) {
    const Size size = parseSize(text, kLongestJpegSide);
    return {.width = size.width, .height = size.height};
  }
  return cross == 0 ? Wanted{.height = side(all.substr(1))}
                    : Wanted{.width = side(all.substr(0, cross))};
}

int rounded(double side) { return std::max(1, static_cast<int>(std::lround(side))); }

Size scaled(int width, int height, double factor) {
  return {rounded(width * factor), rounded(height * factor)};
}

/// The size of the result for a photo of a size.
Size sizeFor(const Wanted& wanted, ResizeRequest::Shape shape, int width, int height) {
  const double across = static_cast<double>(wanted.width) / width;
  const double down = static_cast<double>(wanted.height) / height;
  if (wanted.percent > 0) {
    return scaled(width, height, wanted.percent / 100);
  }
  if (wanted.longest) {
    return scaled(width, height, static_cast<double>(wanted.width) / std::max(width, height));
  }
  if (wanted.height == 0 || wanted.width == 0) {
    const Size size = scaled(width, height, std::max(across, down));
    return {wanted.width != 0 ? wanted.width : size.width,
            wanted.height != 0 ? wanted.height : size.height};
  }
  if (shape == ResizeRequest::Shape::kFit) {
    const Size size = scaled(width, height, std::min(across, down));
    return {std::min(size.width, wanted.width), std::min(size.height, wanted.height)};
  }
  return {wanted.width, wanted.height};
}

/// The part of the photo that is shown: all of it, or the middle in the result's shape.
Area areaFor(Size size, ResizeRequest::Shape shape, const Photo& photo) {
  if (shape != ResizeRequest::Shape::kCrop) {
    return {0, 0, static_cast<double>(photo.width), static_cast<double>(photo.height)};
  }
  const double scale = std::min(static_cast<double>(photo.width) / size.width,
                                static_cast<double>(photo.height) / size.height);
  const double width = size.width * scale;
  const double height = size.height * scale;
  return {(photo.width - width) / 2, (photo.height - height) / 2, width, height};
}

Photo bilinear(const Photo& photo, Size size, const ResizeRequest& request) {
  if (request.shape == ResizeRequest::Shape::kCrop) {
    throw WrongUse("--filter bilinear does not crop");
  }
  if (photo.width > kLongestSide || photo.height > kLongestSide) {
    throw BadInput(fmt::format("{} has {}x{} pixels; the bilinear filter takes up to {} on a side",
                               request.input.string(), photo.width, photo.height, kLongestSide));
  }
  Photo resized = blankPhoto(size.width, size.height);
  ::Resize(wordsOf(resized), size.width, size.height, wordsOf(photo), photo.width, photo.height);
  makeOpaque(resized);
  return resized;
}

/// The longer side that decoding may reduce a photo to: the filter needs twice what is wanted, both
/// ways, whether the photo lies on its side or not.
int keepSideFor(const Wanted& wanted, const ResizeRequest& request, int width, int height) {
  double most = width;  // that each side may be divided by
  for (const auto& [across, down] : {std::pair(width, height), std::pair(height, width)}) {
    const Size size = sizeFor(wanted, request.shape, across, down);
    most = std::min(
        {most, static_cast<double>(across) / size.width, static_cast<double>(down) / size.height});
  }
  constexpr double kForTheFilter = 2;
  return static_cast<int>(std::ceil(std::max(width, height) * kForTheFilter / most));
}

}  // namespace

void resizePhoto(const ResizeRequest& request) {
  const Wanted wanted = parseWanted(request.size);
  KeepSide keepSide;
  if (request.filter != kBilinear) {
    keepSide = [&](int width, int height) { return keepSideFor(wanted, request, width, height); };
  }
  PhotoFile file = readPhoto(request.input, request.options, keepSide);
  const Photo& photo = file.photo;
  const Size size = sizeFor(wanted, request.shape, file.origin.width, file.origin.height);
  if (std::max(size.width, size.height) > kLongestJpegSide) {
    throw WrongUse(fmt::format("--size {}: {} would become {}x{}; at most {} pixels on a side",
                               request.size, request.input.string(), size.width, size.height,
                               kLongestJpegSide));
  }
  const Area area = areaFor(size, request.shape, photo);
  file.change.shown = {area.x / photo.width, area.y / photo.height, area.width / photo.width,
                       area.height / photo.height};
  file.photo = request.filter == kBilinear ? bilinear(photo, size, request)
                                           : resample(photo, area, size.width, size.height);
  writePhoto(request.output, file, request.options);
}

}  // namespace alg::tool
