// The pictures that effects take beside a photo.
#pragma once

#include <array>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>

#include "catalogue/operation.h"
#include "platform/bitmap.h"
#include "tools/shell/console.h"

namespace alg::tool {

/// An effect can't run: one of its pictures is missing or does not go with another.
class PictureError : public UserError {
 public:
  using UserError::UserError;
};

/// Files by the names of the pictures that they stand for: "paper".
using PictureFiles = std::map<std::string, std::filesystem::path>;

/// Each file is decoded once, when the first photo needs it. Thread-safe.
class EffectPictures {
 public:
  using Views = std::array<PictureView, kMostPictures>;

  /// @param users  in place of the device's
  explicit EffectPictures(PictureFiles users = {}) : users_(std::move(users)) {}

  /// What an operation needs for a photo of that size; views of pictures that it does not need are
  /// empty. They stay valid as long as this object. Throws PictureError, and UserError for a user's
  /// file.
  Views of(const Operation& operation, int width, int height);

 private:
  PictureView find(const Operation& operation, const PictureRole& role, bool landscape);
  const Bitmap& decoded(const std::string& path);

  PictureFiles users_;
  std::mutex mutex_;
  std::map<std::string, Bitmap> decoded_;  ///< by path; empty where there is no usable picture
};

}  // namespace alg::tool
