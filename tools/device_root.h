// Where the tool finds the device's files on a Linux machine.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "tools/console.h"
#include "tools/files.h"

namespace alg::tool {

/// Points ALGORITHM_DEVICE_ROOT at the sample pictures that come with the tool, unless the user has
/// set it. The folder is found relative to the executable, in the build tree and when installed.
void useSamplePictures();

/// A device root with nothing but the user's files, from construction to the end of the process;
/// its files go with the object.
class UserDevice {
 public:
  UserDevice();
  /// Takes a PNG file as the effects' picture `name`. Throws UserError.
  void addPicture(const std::filesystem::path& file, std::string_view name);
  /// Puts a file in the place of a library of the device. Throws UserError.
  void addLibrary(const std::filesystem::path& file, std::string_view devicePath);

 private:
  TemporaryFolder root_;
};

/// The device path of a picture of the effects.
std::string picturePath(std::string_view name);

/// An effect can't run: a picture of the device is missing or does not go with another.
class PictureError : public UserError {
 public:
  using UserError::UserError;
};

PictureError missingPicture(std::string_view effect, std::string_view picture);

}  // namespace alg::tool
