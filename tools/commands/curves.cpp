#include "tools/commands/curves.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <numeric>
#include <random>

#include "base/image_size.h"
#include "tools/effects/effect_names.h"
#include "tools/effects/photo_effect.h"
#include "tools/files/files.h"
#include "tools/photos/photo.h"
#include "tools/shell/console.h"

namespace alg::tool {
namespace {

constexpr int kSide = 128;
constexpr std::size_t kPixels = pixelCount(kSide, kSide);

/// What becomes of each value of a channel; -1 for a value not seen yet.
using Curve = std::array<int, 256>;

/// A channel of a photo's pixels and its line in the plot.
struct Channel {
  std::size_t byte;
  std::string_view name;
  std::string_view colour;
  double width;  // lines that coincide show as one with edges
};
constexpr std::array<Channel, 3> kChannels{{
    {2, "red", "#ff5a52", 3.4},
    {1, "green", "#3fce6a", 2.4},
    {0, "blue", "#4c9dff", 1.5},
}};

struct Measured {
  std::array<Curve, kChannels.size()> curves;
  std::string trouble;  ///< why there are no curves, as the rest of a sentence; or empty
};

/// Each channel takes every value equally often, in an order of its own; the same in every run.
Photo mixedPixels() {
  Photo photo = blankPhoto(kSide, kSide);
  std::vector<uint8_t> values(kPixels);
  std::iota(values.begin(), values.end(), uint8_t{0});
  std::mt19937 random(1);
  for (const Channel& channel : kChannels) {
    std::shuffle(values.begin(), values.end(), random);
    for (std::size_t i = 0; i < kPixels; ++i) {
      photo.pixels[i * kArgbBytes + channel.byte] = values[i];
    }
  }
  makeOpaque(photo);
  return photo;
}

/// Why the effect can't be measured, as the rest of a sentence about it; or empty.
std::string troubleOf(const Operation& effect) {
  if (!isEffect(effect)) {
    return "it passes through";
  }
  if (std::ranges::any_of(effect.pictures, &PictureRole::read)) {
    return "it looks at a picture, too";
  }
  return "";
}

/// The curve that turns each value of a channel into the one at the same place of the other photo.
/// Returns whether there is such a curve.
bool findCurve(const Photo& before, const Photo& after, std::size_t byte, Curve& curve) {
  curve.fill(-1);
  for (std::size_t i = byte; i < kPixels * kArgbBytes; i += kArgbBytes) {
    int& result = curve[before.pixels[i]];
    if (result >= 0 && result != after.pixels[i]) {
      return false;
    }
    result = after.pixels[i];
  }
  return true;
}

Measured measure(const Operation& effect) {
  Measured measured{{}, troubleOf(effect)};
  if (!measured.trouble.empty()) {
    return measured;
  }
  const Photo before = mixedPixels();
  Photo after = copyOf(before);
  runOnPixels(effect, presetCall(effect), after);
  for (std::size_t i = 0; i < kChannels.size() && measured.trouble.empty(); ++i) {
    // What depends on the place may happen to be the same all over so small a photo.
    if (effect.reach != Reach::kPixel ||
        !findCurve(before, after, kChannels[i].byte, measured.curves[i])) {
      measured.trouble =
          fmt::format("its {0} depends on more than the {0} of the same pixel", kChannels[i].name);
    }
  }
  return measured;
}

/// A polyline's points, where the slope changes. The picture's y runs downwards.
std::string points(const Curve& curve) {
  std::string text;
  for (std::size_t v = 0; v < curve.size(); ++v) {
    const bool end = v == 0 || v + 1 == curve.size();
    if (end || curve[v] - curve[v - 1] != curve[v + 1] - curve[v]) {
      text += fmt::format("{}{},{}", text.empty() ? "" : " ", v, 255 - curve[v]);
    }
  }
  return text;
}

// A panel with a background of its own, so that it can be read on white and on dark pages. Inside
// its frame one unit is one level.
constexpr double kLeft = 45, kTop = 45, kUnit = 1.125;
constexpr char kHead[] = R"svg(<svg xmlns="http://www.w3.org/2000/svg" width="360" height="368"
 viewBox="0 0 360 368" role="img" font-family="system-ui, sans-serif" font-size="11">
<title>Tone curves of {0}</title>
<rect width="360" height="368" rx="8" fill="#1f2228"/>
<text x="45" y="27" font-size="15" font-weight="600" fill="#f2f3f5">{0}</text>
)svg";
constexpr char kLabels[] = R"svg(</text>
<g fill="#a9afba">
)svg";
constexpr char kTick[] =
    R"svg(<text x="{}" y="346" text-anchor="middle">{}</text>
<text x="39" y="{}" text-anchor="end">{}</text>
)svg";
constexpr char kFrame[] = R"svg(<text x="188" y="360" text-anchor="middle">input</text>
<text transform="translate(13 188) rotate(-90)" text-anchor="middle">output</text>
</g>
<g transform="translate({} {}) scale({})" fill="none" stroke-linejoin="round"
 style="isolation:isolate">
<path d="M64 0V255M128 0V255M192 0V255M0 63H255M0 127H255M0 191H255" stroke="#3a3f49"/>
<path d="M0 255L255 0" stroke="#6b7280" stroke-dasharray="2 4"/>
<rect width="255" height="255" stroke="#565d6a"/>
)svg";
// Colours mix as light does, so that lines that coincide don't hide each other.
constexpr char kLine[] =
    R"svg(<polyline stroke="{}" stroke-width="{}" style="mix-blend-mode:screen"
 points="{}"/>
)svg";

std::string svg(std::string_view name, const Measured& measured) {
  std::string text = fmt::format(kHead, name);
  text += R"(<text x="332" y="27" text-anchor="end" font-size="12">)";
  for (const Channel& channel : kChannels) {
    text += fmt::format(R"(<tspan dx="8" fill="{}">{}</tspan>)", channel.colour, channel.name);
  }
  text += kLabels;
  for (const int level : {0, 64, 128, 192, 255}) {
    text +=
        fmt::format(kTick, kLeft + level * kUnit, level, kTop + (255 - level) * kUnit + 4, level);
  }
  text += fmt::format(kFrame, kLeft, kTop, kUnit);
  for (std::size_t i = 0; i < kChannels.size(); ++i) {
    text += fmt::format(kLine, kChannels[i].colour, kChannels[i].width, points(measured.curves[i]));
  }
  return text + "</g>\n</svg>\n";
}

}  // namespace

void plotCurves(const CurvesRequest& request) {
  const Measured measured = measure(findEffect(request.effect));
  if (!measured.trouble.empty()) {
    throw UserError(
        fmt::format("{} does not consist of curves: {}", request.effect, measured.trouble));
  }
  const std::string picture = svg(request.effect, measured);
  if (request.output == "-") {
    fmt::print("{}", picture);
  } else {
    writeFile(request.output, {reinterpret_cast<const uint8_t*>(picture.data()), picture.size()});
  }
}

std::vector<std::string_view> curveEffects() {
  std::vector<std::string_view> names;
  for (const Operation* effect : effects()) {
    if (measure(*effect).trouble.empty()) {
      names.emplace_back(effect->name);
    }
  }
  return names;
}

}  // namespace alg::tool
