// The effect of one run, with its picture.
#pragma once

#include <cstdint>

#include "catalogue/operation.h"
#include "effect/pipeline_names.h"
#include "libalgorithm/effect_pipeline.h"

namespace alg {

/// The effect that a caller wants on a frame: by name, or as an operation.
struct EffectRequest {
  const char* name = nullptr;            ///< looked up, which logs a line
  const Operation* operation = nullptr;  ///< used when there is no name
  const PictureView* picture = nullptr;  ///< used instead of the device's; must outlive the run
  bool truePadding = false;   ///< the frame's chroma rows begin at their stride (frames.md)
  bool needsPicture = false;  ///< a frame whose picture is missing stays untouched
};

/// A request resolved for frames of one size, with the operation's picture loaded. One thread at a
/// time: the device's pictures are process-wide.
class ChosenEffect {
 public:
  enum class Purpose : uint8_t {
    kRun,    ///< pixels that the effect never reads may be null, and a picture too large to be
             ///< kept is freed, together with bitmap_effect, by the destructor
    kReport  ///< for an outside caller, who may read the picture
  };

  ChosenEffect(const EffectRequest& request, int width, int height,
               Purpose purpose = Purpose::kRun);
  ~ChosenEffect();
  ChosenEffect(const ChosenEffect&) = delete;
  ChosenEffect& operator=(const ChosenEffect&) = delete;

  /// What to do to the frame; null: let it pass through.
  const Operation* operation() const { return runs_ ? operation_ : nullptr; }
  const PictureView& picture() const { return picture_; }
  /// Whether the frame passes through because a picture is missing.
  bool lacksPicture() const { return lacksPicture_; }
  int strips() const { return operation_ != nullptr ? operation_->pipeline.strips : 4; }

  /// The same, as the record that outside callers get.
  EffectTypeInfo record() const;

 private:
  void loadPicture(bool landscape, Purpose purpose);
  void missPicture();

  const Operation* operation_;
  PictureView picture_;
  bool runs_ = false;
  bool lacksPicture_ = false;
  bool flag_ = false;
  bool ownsLargePicture_ = false;
};

}  // namespace alg
