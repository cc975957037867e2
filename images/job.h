// Operations of the catalogue on images and frames of any layout.
//
//   image rows --pack--> work rows --operation--> work rows --unpack, mix--> image rows
//
// Bands of rows go through this on the process-wide pool, four at a time; its lock is given back
// after each four, and previews go first (threadpool/global_pool.h). Bands of operations whose rows
// depend on none but near ones take work memory for a few rows. Fish-eye, nature and fill light
// (Bands::kWholeImage) take 6 bytes for each pixel of the image. Images of a few thousand pixels
// are done on the calling thread, without the pool.
#pragma once

#include <cstdint>

#include "catalogue/operation.h"
#include "images/image.h"

namespace alg {

/// What to do to an image. Everything that it points at must outlive the run.
struct Job {
  const Operation* operation = nullptr;  ///< an effect or a blend; not paste
  double values[kMostParameters] = {};   ///< in their ranges
  Image pictures[kMostPictures];  ///< as the roles demand; those that are not read may be empty
  int weight = kWholeWeight;      ///< of an effect, 0 to 256: how much of it is mixed in
  const uint8_t* cancelled = nullptr;  ///< stops the run when it becomes other than 0; or null
  bool onPool =
      true;  ///< false: on the calling thread alone, for callers with many images at a time
  int pieceRows = 0;  ///< rows that a thread does before the lock is given back; 0: a good number
};

inline bool isCancelled(const Job& job) {
  return job.cancelled != nullptr && __atomic_load_n(job.cancelled, __ATOMIC_RELAXED) != 0;
}

/// Why the job's values don't go with images of a size; null when they do.
const char* misfitOf(const Job& job, int width, int height);

enum class JobOutcome : uint8_t {
  kDone,
  kCancelled,  ///< some bands of the destination are written
  kNoMemory    ///< nothing is written
};

/// Runs a job from one image to another of the same size, which may be the same image; otherwise
/// neither they nor the pictures overlap.
/// Effects: the colours are those that the routine makes of packed rows; alpha is the source's.
/// What the routine leaves alone shows the source, or the operation's backdrop. Blends: all four
/// bytes are the routine's, of src and what dst has held.
JobOutcome runJob(const Job& job, const Image& src, const Image& dst);

/// Runs an effect on a frame, in place: decoded, run and encoded in bands.
JobOutcome runJob(const Job& job, const FrameImage& frame);

}  // namespace alg
