// A job's pictures as operations take them.
#pragma once

#include "base/block.h"
#include "images/job.h"

namespace alg {

/// Pictures with R, G, B, A pixels in packed rows are used as they are, others are copied. Those of
/// the image's own size (Size::kSameAsImage) are left to whoever packs the image's rows.
class JobPictures {
 public:
  explicit JobPictures(const Job& job);

  /// Whether there was memory for the copies.
  bool ready() const { return ready_; }
  const PictureView& operator[](std::size_t index) const { return views_[index]; }

 private:
  bool copy(const Image& picture, std::size_t index);

  PictureView views_[kMostPictures];
  Block copies_[kMostPictures];
  bool ready_ = true;
};

}  // namespace alg
