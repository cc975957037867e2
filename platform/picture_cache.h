// Decoded pictures of the effects, kept from one effect run to the next.
//
//   Kept          up to 8 pictures with up to 32 MB of pixels in all, the most recently used; of a
//                 larger picture only the fact that it decodes, and its size
//   Used again    when the same path still opens the same regular file (device, inode) and its size
//                 and its times of modification and change are the same, to the nanosecond
//   Not trusted   a file that was modified or changed less than two seconds ago by the system's
//                 clock, or in the future: a further change might get the same times. It is decoded
//                 each time, and anything kept of it is dropped
//   Not kept      failures: the next call tries again
//   Costs         opening the file and querying its state: microseconds
//   Memory short  never an error beyond that of decoding: keeping takes no memory of its own
//   Threads       one at a time
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/bitmap.h"
#include "platform/png_file.h"

namespace alg {

/// What a picture is loaded for.
enum class PictureUse : uint8_t {
  kKeep,    ///< its pixels, for as long as the caller likes
  kRun,     ///< its pixels, for an effect run, which holds at most one large picture at a time
  kVerdict  ///< the same, when it is enough to know that there is a picture, and its size
};

class PictureCache {
 public:
  /// The most bytes of pixels that are kept, of all pictures together. A picture with more is
  /// large.
  static constexpr std::size_t kMostBytes = std::size_t{32} << 20;
  static bool isLarge(const Bitmap& bitmap) { return bitmap.bytes() > kMostBytes; }

  /// Sets `bitmap` to the picture of that file name, as decodeEffectPicture() does, sharing its
  /// pixels. kVerdict may leave those of a large picture null. For a run, a large picture in
  /// `bitmap` is freed before another large one is decoded; otherwise `bitmap` keeps its picture
  /// when decoding fails.
  bool load(std::string_view name, PictureUse use, Bitmap& bitmap);

 private:
  struct Kept {
    std::string path;  // empty: a free slot
    FileState file;
    Bitmap picture;  // a large one without its pixels
    uint64_t lastUse = 0;
  };

  Kept* find(const std::string& path);
  void keep(std::string&& path, const FileState& file, const Bitmap& picture);

  std::array<Kept, 8> kept_;
  uint64_t uses_ = 0;
};

}  // namespace alg
