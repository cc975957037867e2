#include "tools/photos/colour.h"

#include <fmt/format.h>
#include <lcms2.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "base/image_size.h"
#include "tools/shell/console.h"
#include "tools/shell/failure.h"

namespace alg::tool {
namespace {

struct CloseProfile {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, CloseProfile>;

Profile open(const std::vector<uint8_t>& bytes) {
  return Profile(bytes.empty() ? cmsCreate_sRGBProfile()
                               : cmsOpenProfileFromMem(bytes.data(),
                                                       static_cast<cmsUInt32Number>(bytes.size())));
}

struct Layout {
  cmsColorSpaceSignature space;
  cmsUInt32Number format;
};

Layout layoutOf(JpegColours pixels) {
  switch (pixels) {
    case JpegColours::kGrey:  // one of three samples that are the same
      return {cmsSigGrayData, COLORSPACE_SH(PT_GRAY) | CHANNELS_SH(1) | EXTRA_SH(3) | BYTES_SH(1)};
    case JpegColours::kCmyk:
      return {cmsSigCmykData, TYPE_CMYK_8_REV};
    default:
      return {cmsSigRgbData, TYPE_BGRA_8};
  }
}

}  // namespace

ColourTransform::ColourTransform(void* transform, bool opaque)
    : transform_(transform, [](void* owned) { cmsDeleteTransform(owned); }), opaque_(opaque) {}

std::optional<ColourTransform> ColourTransform::make(JpegColours pixels,
                                                     const std::vector<uint8_t>& from,
                                                     const std::vector<uint8_t>& to) {
  cmsSetLogErrorHandler([](cmsContext, cmsUInt32Number, const char*) {});
  const Profile source = open(from);
  const Profile target = open(to);
  const Layout layout = layoutOf(pixels);
  if (!source || !target || cmsGetColorSpace(source.get()) != layout.space) {
    return std::nullopt;
  }
  auto* const transform =
      cmsCreateTransform(source.get(), layout.format, target.get(), TYPE_BGRA_8,
                         INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_BLACKPOINTCOMPENSATION);
  return transform != nullptr
             ? std::optional(ColourTransform(transform, pixels == JpegColours::kCmyk))
             : std::nullopt;
}

// Alpha is not part of a transform, and stays.
void ColourTransform::run(uint8_t* pixels, std::size_t count) const {
  cmsDoTransform(transform_.get(), pixels, pixels, static_cast<cmsUInt32Number>(count));
  for (std::size_t i = 0; opaque_ && i < count; ++i) {
    pixels[i * kArgbBytes + 3] = 255;
  }
}

void ColourTransform::run(Photo& photo) const {
  const auto width = static_cast<std::size_t>(photo.width);
  for (std::size_t y = 0; y < static_cast<std::size_t>(photo.height); ++y) {
    run(photo.pixels.get() + kArgbBytes * width * y, width);
  }
}

std::optional<ColourTransform> transformFor(JpegColours pixels, Metadata& metadata,
                                            const PhotoOptions& options,
                                            const std::filesystem::path& path) {
  const std::vector<uint8_t>& profile = metadata.profile();
  const std::vector<uint8_t>& other = metadata.otherProfile();
  std::optional<ColourTransform> transform;
  if (!other.empty()) {
    transform = ColourTransform::make(pixels, other, {});
    if (!transform) {
      note(fmt::format("{}: its colour profile is left out: damaged or not for its colours",
                       path.string()));
    }
  } else if (options.toSrgb && pixels != JpegColours::kCmyk && !profile.empty()) {
    transform = ColourTransform::make(JpegColours::kRgb, profile, {});
    if (!transform) {
      throw BadInput(fmt::format("{}: its colour profile can't be used", path.string()));
    }
  }
  if (pixels == JpegColours::kCmyk) {
    note(fmt::format("{}: its CMYK colours become sRGB, {}", path.string(),
                     transform ? "by its profile" : "without a profile: as ideal inks"));
  }
  if (transform || pixels == JpegColours::kCmyk) {
    metadata = metadata.inSrgb();
  }
  return transform;
}

std::vector<uint8_t> profileOf(const Gamma& gamma, bool grey) {
  constexpr double kUnits = 100000;
  constexpr int32_t kSrgb[] = {31270, 32900, 64000, 33000, 30000, 60000, 15000, 6000};
  constexpr int32_t kSrgbEncoding = 45455;  // which PNG has for it
  constexpr int32_t kSame = 1000;
  const int32_t* const places = gamma.chromaticities[0] > 0 ? gamma.chromaticities : kSrgb;
  const auto near = [](int32_t a, int32_t b) { return std::abs(a - b) <= kSame; };
  const bool srgb = near(gamma.encoding, kSrgbEncoding) &&
                    (grey || std::equal(std::begin(kSrgb), std::end(kSrgb), places, near));
  if (srgb || gamma.encoding <= 0) {
    return {};
  }
  const auto place = [&](int i) {
    return cmsCIExyY{places[i] / kUnits, places[i + 1] / kUnits, 1};
  };
  const cmsCIExyY white = place(0);
  const cmsCIExyYTRIPLE primaries = {place(2), place(4), place(6)};
  const std::unique_ptr<cmsToneCurve, void (*)(cmsToneCurve*)> curve(
      cmsBuildGamma(nullptr, kUnits / gamma.encoding), cmsFreeToneCurve);
  cmsToneCurve* const curves[] = {curve.get(), curve.get(), curve.get()};
  const Profile profile(grey ? cmsCreateGrayProfile(&white, curve.get())
                             : cmsCreateRGBProfile(&white, &primaries, curves));
  cmsUInt32Number size = 0;
  if (!profile || cmsSaveProfileToMem(profile.get(), nullptr, &size) == 0) {
    return {};
  }
  std::vector<uint8_t> bytes(size);
  return cmsSaveProfileToMem(profile.get(), bytes.data(), &size) != 0 ? bytes
                                                                      : std::vector<uint8_t>();
}

JpegRowWork rowWork(const std::optional<ColourTransform>& transform) {
  return transform ? [&way = *transform](uint8_t* row, std::size_t count) { way.run(row, count); }
                   : JpegRowWork();
}

}  // namespace alg::tool
