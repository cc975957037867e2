// PNG files, read in steps.
#pragma once

#include <png.h>
#include <sys/types.h>

#include <compare>
#include <cstdint>
#include <cstdio>

#include "base/block.h"
#include "platform/bitmap.h"

namespace alg {

/// A point in the system's time, which others may set.
struct FileTime {
  int64_t seconds = 0;
  int64_t nanoseconds = 0;
  auto operator<=>(const FileTime&) const = default;
};

/// What a file is known by, and what changes with its content.
struct FileState {
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  FileTime modified;
  FileTime changed;  ///< content or anything else about it; programs can't choose this time
  bool operator==(const FileState&) const = default;
};

/// An open PNG file. Each step takes those before it.
///
/// Whatever a file claims, reading it takes some 100 KB beside its pixels: of all chunks only those
/// that pixels depend on are looked into, the others are skipped.
class PngFile {
 public:
  /// Opens a regular file. Anything else (a folder, a fifo, a device) is refused, and not waited
  /// for.
  explicit PngFile(const char* path);
  ~PngFile();
  PngFile(const PngFile&) = delete;
  PngFile& operator=(const PngFile&) = delete;

  bool isOpen() const { return descriptor_ >= 0; }
  /// The file as it was when it was opened.
  const FileState& state() const { return state_; }

  /// Reads up to the pixels. False for a file that isn't open or no PNG, a size that is refused, or
  /// when memory is short.
  bool readSize();
  int width() const { return width_; }
  int height() const { return height_; }

  /// Decodes the pixels into `bitmap`, and reads the file to its end. Returns false, and leaves the
  /// bitmap, when that can't be done. May throw std::bad_alloc, likewise.
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
