// Effects one after the other, and how much of their result is kept.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "effect/frame_strips.h"
#include "images/job.h"
#include "tools/effects/effect_options.h"
#include "tools/effects/effect_pictures.h"
#include "tools/effects/photo_effect.h"
#include "tools/photos/photo.h"

namespace alg::tool {

class EffectChain {
 public:
  /// Throws UserError: for unknown names, options of none of them, pictures that can't be read.
  /// @param names  "sepia" or "sepia,PrettyBlue"
  /// @param mix    percent of the result that is kept, the rest is the photo as it was
  EffectChain(const std::string& names, const EffectChoices& choices, double mix = 100,
              Way way = Way::kPhoto);

  /// For names of outputs: "sepia", "sepia+PrettyBlue".
  const std::string& title() const { return title_; }

  /// Runs them on a photo, in place; from any thread. Throws UserError.
  /// @param path  for notes
  void applyTo(Photo& photo, const std::filesystem::path& path);
  /// Whether photos can go through them in bands of rows.
  bool fitsBands() const;
  /// What is to be done to the bands of a photo of that size; nothing when none of the result is
  /// kept. Throws UserError.
  std::vector<Job> jobs(int width, int height);
  /// How much of the result is kept, of kWholeWeight.
  int weight() const { return weight_; }

  /// Runs them on an NV21 frame, in place: through the pipeline those that it runs, the others on
  /// the frame's pixels; without `mix`. Throws UserError.
  /// @param pixels  of the frame's size, for these; left in any state. Empty when not needed.
  void applyTo(const Frame& frame, Photo& pixels);
  /// Whether a pixel may come from anywhere in the photo.
  bool movesPixels() const;
  /// Whether a frame's pixels are needed.
  bool needsPixels() const;

 private:
  struct Step {
    const Operation* operation;
    Call call;
  };

  std::vector<Step> steps_;
  std::string title_;
  int weight_;  ///< of the result, of kWholeWeight
  Way way_;
  EffectPictures pictures_;
};

}  // namespace alg::tool
