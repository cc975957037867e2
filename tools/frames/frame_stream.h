// camera-effects frames: a stream of frames through the pipeline, one at a time.
#pragma once

#include <string>

#include "tools/effects/effect_options.h"

namespace alg::tool {

struct FramesRequest {
  std::string effects;  ///< one, or several with commas between them
  EffectChoices choices;
  std::string size;    ///< "WIDTHxHEIGHT" of raw frames; empty for a Y4M stream, which says it
  std::string format;  ///< "nv21" or "nv12", of raw frames; empty for nv21
};

/// Copies the standard input to the standard output, with the effects on each frame, in memory for
/// one frame. A frame is written before the next one is read. On a terminal it tells the rate at
/// the end. Throws UserError: BadInput for a last frame that is cut off, after all whole ones are
/// written.
void filterFrames(const FramesRequest& request);

}  // namespace alg::tool
