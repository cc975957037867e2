// PNG files, read in steps.
#pragma once

#include <png.h>
#include <sys/types.h>

#include <cstdint>
#include <cstdio>

#include "base/block.h"
#include "platform/bitmap.h"

namespace alg {

/// A point in the system's time, which other programs may set.
struct FileTime {
  int64_t seconds = 0;
  int64_t nanoseconds = 0;
  bool operator==(const FileTime&) const = default;
  bool operator<(const FileTime& other) const {
    return seconds != other.seconds ? seconds < other.seconds : nanoseconds < other.nanoseconds;
  }
};

/// What identifies a file, and what changes with its content.
struct FileState {
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  FileTime modified;
  FileTime changed;  ///< of its content or metadata; programs can't choose this time
  bool operator==(const FileState&) const = default;
};

/// An open PNG file. Each step requires those before it.
///
/// Whatever a file claims, reading it takes some 100 KB in addition to its pixels: only the chunks
/// that pixels depend on are parsed, the others are skipped.
class PngFile {
 public:
  /// Opens a regular file. Anything else (a folder, a fifo, a device) is refused without waiting.
  explicit PngFile(const char* path);
  ~PngFile();
  PngFile(const PngFile&) = delete;
  PngFile& operator=(const PngFile&) = delete;

  bool isOpen() const { return descriptor_ >= 0; }
  /// The file as it was when it was opened.
  const FileState& state() const { return state_; }

  /// Reads everything before the pixels. False for a file that isn't open or isn't a PNG file, for
  /// a size that is refused, and when memory is short.
  bool readSize();
  int width() const { return width_; }
  int height() const { return height_; }

  /// Decodes the pixels into `bitmap`, and reads the file to its end. When that can't be done,
  /// returns false or throws std::bad_alloc, and leaves the bitmap as it was.
  bool decode(Bitmap& bitmap);

 private:
  bool start();
  bool readRows();

  int descriptor_ = -1;
  FileState state_;
  std::FILE* stream_ = nullptr;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
  int width_ = 0;
  int height_ = 0;
  bool hasAlpha_ = false;
  Block pixels_;
};

}  // namespace alg
