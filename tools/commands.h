// The commands and their options. The work itself is elsewhere.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "tools/apply.h"
#include "tools/beauty.h"
#include "tools/bench.h"
#include "tools/blend.h"
#include "tools/curves.h"
#include "tools/frame_stream.h"
#include "tools/gallery.h"
#include "tools/raw_frames.h"
#include "tools/resize.h"

namespace alg::tool {

/// What the options are parsed into, and the work that the chosen command asks for.
struct Options {
  ApplyRequest apply;
  ConvertRequest convert;
  RotateRequest rotate;
  ResizeRequest resize;
  BlendRequest blend;
  BeautyRequest beauty;
  GalleryRequest gallery;
  FramesRequest frames;
  CurvesRequest curves;
  BenchRequest bench;
  std::string shell;  ///< of completion
  std::function<bool()> work;
};

/// Adds all commands. Parsing fills the options, which must outlive it.
void addCommands(CLI::App& app, Options& options);

}  // namespace alg::tool
