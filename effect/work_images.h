// The two work images of a run.
#pragma once

namespace alg {

/// The work images and the pool, for one run. Whatever the globals held before is overwritten; they
/// are null afterwards.
class WorkImages {
 public:
  /// A frame's sizes, at least 1. The images stay untouched here: they cost address space, no time.
  WorkImages(int width, int height);
  ~WorkImages();
  WorkImages(const WorkImages&) = delete;
  WorkImages& operator=(const WorkImages&) = delete;

  /// Whether both could be had, with 2^31 - 1 bytes at most.
  bool ready() const;

 private:
  bool fit_;
};

}  // namespace alg
