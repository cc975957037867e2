// A device folder of its own for a test, with PNG pictures.
#pragma once

#include <png.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>

#include "made_png.h"

inline void writeFile(const std::string& path, const Bytes& content) {
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(content.data()), std::streamsize(content.size()));
}

inline Bytes readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// While it lives, device paths lie in a new, empty folder.
class DeviceRoot {
 public:
  DeviceRoot() {
    EXPECT_NE(mkdtemp(root_.data()), nullptr);
    setenv("ALGORITHM_DEVICE_ROOT", root_.c_str(), 1);
    std::filesystem::create_directories(path(""));
  }
  ~DeviceRoot() { std::filesystem::remove_all(root_); }
  DeviceRoot(const DeviceRoot&) = delete;
  DeviceRoot& operator=(const DeviceRoot&) = delete;

  const std::string& root() const { return root_; }
  std::string path(const std::string& name) const {
    return root_ + "/data/data/com.android.camera/effect/" + name;
  }

  /// Writes a PNG file of any kind; `rows` holds its samples as the file does (big-endian). Palette
  /// files get the two colours below.
  void writePng(const std::string& name, int width, int height, int colourType, int bitDepth,
                const Bytes& rows) const {
    Bytes between = png_file::chunk("gAMA", png_file::bigEndian(100000));  // nobody may apply it
    if (colourType == PNG_COLOR_TYPE_PALETTE) {
      png_file::append(between, png_file::chunk("PLTE", {200, 100, 50, 10, 20, 30}));
      png_file::append(between, png_file::chunk("tRNS", {100, 255}));
    }
    writeFile(path(name), png_file::file(width, height, bitDepth, colourType, rows, between));
  }

  /// Writes an opaque picture of noise.
  ref::Picture writePicture(const std::string& name, int width, int height) const {
    ref::Picture picture{width, height, noise(width * height * 4, int(name.size()))};
    for (std::size_t i = 3; i < picture.rgba.size(); i += 4) picture.rgba[i] = 255;
    writePng(name, width, height, PNG_COLOR_TYPE_RGBA, 8, picture.rgba);
    return picture;
  }

  /// Writes all pictures of the effect pipeline, each under its name.
  std::map<std::string, ref::Picture> writePictures(int width, int height) const {
    std::map<std::string, ref::Picture> pictures;
    for (const ref::Effect& effect : ref::kEffects) {
      for (const std::string& name : {effect.picture, effect.landscapePicture}) {
        if (!name.empty()) pictures[name] = writePicture(name, width, height);
      }
    }
    return pictures;
  }

  /// Puts a library in the engine's place.
  void putEngine(const std::string& library) const {
    std::filesystem::create_directories(root_ + "/system/lib64");
    std::filesystem::copy_file(library, root_ + "/system/lib64/libSFB.so");
  }

 private:
  std::string root_ = (std::filesystem::temp_directory_path() / "device-XXXXXX").string();
};
