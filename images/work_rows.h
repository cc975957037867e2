// Work memory for some rows of an image, and an operation's way through it.
#pragma once

#include <optional>

#include "base/block.h"
#include "images/job_pictures.h"
#include "pretty/soft_light.h"

namespace alg {

/// Rows of one image at a time; one thread at a time.
class JobRows {
 public:
  /// @param job       must outlive this, like the pictures
  /// @param mostRows  that are loaded at once
  JobRows(const Job& job, const JobPictures& pictures, int width, int imageHeight, int mostRows);

  /// Whether work memory was allocated.
  bool ready() const;

  /// Forgets what is loaded; rows are now loaded from `firstRow` of the image on.
  void begin(int firstRow);
  /// Packs the rows that follow. For blends `dst` has the destination's, else it is not looked at.
  void load(const Image& src, const Image& dst);
  /// Runs the operation on all loaded rows.
  void run();
  /// Writes the image's rows from `firstRow` on to dst. They must be loaded.
  /// @param src  the same rows as they were; may be dst
  void store(int firstRow, const Image& src, const Image& dst);

 private:
  bool isBlend() const { return !isEffect(*job_.operation); }
  std::size_t bytesOf(int rows) const;
  uint8_t* at(uint8_t* block, int row) const { return block + bytesOf(row - firstRow_); }
  void loadRow(int y, const uint8_t* pixels, ByteOrder order);
  void loadPictures(const Image& src, int rows);
  const uint8_t* resultRow(int y);

  const Job& job_;
  const JobPictures& pictures_;
  const int width_, imageHeight_;
  bool apart_;            // whether the result has memory of its own
  std::size_t capacity_;  // bytes of the loaded rows
  Block memory_;
  uint8_t* source_ = nullptr;
  uint8_t* result_ = nullptr;
  uint8_t* sameSize_[kMostPictures] = {};
  uint8_t* row_ = nullptr;  // one row of 4-byte pixels
  std::optional<SoftLightImage> softLight_;
  int firstRow_ = 0, loaded_ = 0;
};

}  // namespace alg
