// The options of all commands that read or write photos.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>

#include "platform/jpeg_format.h"

namespace alg::tool {

inline constexpr int kDefaultQuality = 92;

struct PhotoOptions {
  bool toSrgb = false;       ///< colours converted from the photo's profile
  bool plain = false;        ///< without gain maps, videos and other pictures behind the photo
  bool keepDamaged = false;  ///< go on with what is left of a damaged photo
  std::optional<int> quality = kDefaultQuality;  ///< 0 to 100; none: the source's
  std::optional<JpegSampling> sampling;          ///< none: the source's
};

/// Adds --damaged and --to-srgb. Parsing fills the options, which must outlive it.
void addReadOptions(CLI::App& command, PhotoOptions& options);
/// Adds --quality, --sampling and --plain.
void addWriteOptions(CLI::App& command, PhotoOptions& options);

}  // namespace alg::tool
