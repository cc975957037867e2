// The commands and their options. The work itself is elsewhere.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "tools/batch/apply.h"
#include "tools/commands/beauty.h"
#include "tools/commands/bench.h"
#include "tools/commands/blend.h"
#include "tools/commands/curves.h"
#include "tools/commands/resize.h"
#include "tools/frames/frame_stream.h"
#include "tools/frames/raw_frames.h"
#include "tools/gallery/gallery.h"

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
