#include "tools/photos/photo_options.h"

#include <array>
#include <charconv>
#include <string>
#include <string_view>
#include <utility>

namespace alg::tool {
namespace {

constexpr std::string_view kSame = "same";

/// 0 to 100; none for anything else.
std::optional<int> parseQuality(std::string_view text) {
  int value = -1;
  const char* const end = text.data() + text.size();
  const auto [at, error] = std::from_chars(text.data(), end, value);
  const bool valid = error == std::errc() && at == end && value >= 0 && value <= 100;
  return valid ? std::optional(value) : std::nullopt;
}

constexpr std::array<std::pair<std::string_view, JpegSampling>, 3> kSamplings = {
    {{"420", JpegSampling::k420}, {"422", JpegSampling::k422}, {"444", JpegSampling::k444}}};

}  // namespace

void addReadOptions(CLI::App& command, PhotoOptions& options) {
  command
      .add_option_function<std::string>(
          "--damaged",
          [&options](const std::string& text) { options.keepDamaged = text == "keep"; },
          "what to do with a damaged photo: refuse it, or keep what is left")
      ->default_str("refuse")
      ->check(CLI::IsMember({"refuse", "keep"}));
  command.add_flag("--to-srgb", options.toSrgb,
                   "convert the colours from the photo's profile to sRGB");
}

void addWriteOptions(CLI::App& command, PhotoOptions& options) {
  command
      .add_option_function<std::string>(
          "--quality",
          [&options](const std::string& text) { options.quality = parseQuality(text); },
          "of the coding, 0 to 100; or \"same\", which is near the input's if that is a JPEG")
      ->type_name("N|same")
      ->default_str(std::to_string(kDefaultQuality))
      ->check(
          [](const std::string& text) {
            return text == kSame || parseQuality(text) ? "" : "0 to 100, or same";
          },
          "");
  command
      .add_option_function<std::string>(
          "--sampling",
          [&options](const std::string& text) {
            options.sampling.reset();
            for (const auto& [name, sampling] : kSamplings) {
              options.sampling = text == name ? sampling : options.sampling;
            }
          },
          "resolution of a JPEG's colours: of the input, or half of it both ways, across, or full")
      ->default_str(std::string(kSame))
      ->check(CLI::IsMember({"same", "420", "422", "444"}));
  command.add_flag("--plain", options.plain,
                   "leave out what a JPEG file holds behind its photo: gain map, video, previews");
}

}  // namespace alg::tool
