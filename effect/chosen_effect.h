// The effect of one run, with its picture.
#pragma once

#include <cstdint>

#include "catalogue/operation.h"
#include "effect/pipeline_names.h"
#include "libalgorithm/effect_pipeline.h"

namespace alg {

/// What a caller wants a frame to go through: a name, or an operation that is known already.
struct EffectRequest {
  const char* name = nullptr;            ///< looked up, with the line of the log that says so
  const Operation* operation = nullptr;  ///< when there is no name
  const PictureView* picture = nullptr;  ///< in place of the device's; must outlive the run
};

/// A request that has been looked up for frames of one size; the operation's picture is there. Not
/// for two threads at a time: pictures of the device are process-wide.
class ChosenEffect {
 public:
  enum class Purpose : uint8_t {
    kRun,    ///< pixels that the effect does not look at may be null, and a picture that is too
             ///< large to be kept is freed, with bitmap_effect, when this goes
    kReport  ///< for an outside caller, who may look at the picture
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

  /// The same as the record that outside callers know.
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
