// A device folder of its own for a test, with PNG pictures written by libpng.
#pragma once

#include <png.h>

#include <cstdlib>
#include <filesystem>
#include <map>

#include "guarded.h"

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
                Bytes rows) const {
    std::FILE* file = std::fopen(path(name).c_str(), "wb");
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_set_IHDR(png, info, png_uint_32(width), png_uint_32(height), bitDepth, colourType, 0, 0, 0);
    png_set_gAMA(png, info, 1.0);  // which nobody may apply
    const png_color palette[] = {{200, 100, 50}, {10, 20, 30}};
    const uint8_t alpha[] = {100, 255};
    if (colourType == PNG_COLOR_TYPE_PALETTE) png_set_PLTE(png, info, palette, 2);
    if (colourType == PNG_COLOR_TYPE_PALETTE) png_set_tRNS(png, info, alpha, 2, nullptr);
    png_write_info(png, info);
    for (int y = 0; y < height; ++y)
      png_write_row(png, &rows[asSize(y) * rows.size() / asSize(height)]);
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    std::fclose(file);
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
