// The two work images of a run.
#pragma once

namespace alg {

/// The work images and the pool, for one run. What the globals held before is overwritten; they are
/// null afterwards.
class WorkImages {
 public:
  /// Takes the frame's sizes, at least 1. The images are only allocated: they cost address space,
  /// not time.
  WorkImages(int width, int height);
  ~WorkImages();
  WorkImages(const WorkImages&) = delete;
  WorkImages& operator=(const WorkImages&) = delete;

  /// Whether both were allocated, with 2^31 - 1 bytes each at most.
  bool ready() const;

 private:
  bool fit_;
};

}  // namespace alg
