// The commands and their options. The work itself is elsewhere.
#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <functional>
#include <string>

#include "tools/apply.h"
#include "tools/beauty.h"
#include "tools/bench.h"
#include "tools/curves.h"
#include "tools/raw_frames.h"
#include "tools/resize_blend.h"

namespace alg::tool {

inline constexpr int kDefaultQuality = 92;

struct GalleryRequest {
  std::filesystem::path photo;
  std::filesystem::path folder;
  int quality = kDefaultQuality;
};

/// What the options are parsed into, and the work that the chosen command asks for.
struct Options {
  ApplyRequest apply{{}, {}, kDefaultQuality, {}, {}, {}};
  ConvertRequest convert{{}, {}, {}, {}, {}, kDefaultQuality};
  RotateRequest rotate{};
  ResizeRequest resize{{}, {}, {}, kDefaultQuality};
  BlendRequest blend{"mix", {}, {}, {}, {}, kDefaultQuality};
  BeautyRequest beauty{60, 60, 30, {}, {}, {}, kDefaultQuality};  ///< the engine's default levels
  GalleryRequest gallery;
  CurvesRequest curves;
  BenchRequest bench;
  std::string shell;  ///< of completion
  std::function<bool()> work;
};

/// Adds all commands. Parsing fills the options, which must outlive it.
void addCommands(CLI::App& app, Options& options);

}  // namespace alg::tool
