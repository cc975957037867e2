// The device's pictures: one file under all their names.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <span>
#include <string>

#include "fuzz/check.h"

class PictureFolder {
 public:
  PictureFolder() {
    expectThat(mkdtemp(root_.data()) != nullptr, "there is room for temporary files");
    setenv("ALGORITHM_DEVICE_ROOT", root_.c_str(), 1);
    const std::string folder = root_ + "/data/data/com.android.camera/effect/";
    std::filesystem::create_directories(folder);
    for (const char* name :
         {"sucai0.png", "sucai0_r.png", "sucai3.png", "effect_lomo.png", "red2green.png",
          "red2green_r.png", "effect.png", "front.png", "colorpaint.png"}) {
      std::filesystem::create_symlink(file(), folder + name);
    }
  }
  ~PictureFolder() { std::filesystem::remove_all(root_); }
  PictureFolder(const PictureFolder&) = delete;
  PictureFolder& operator=(const PictureFolder&) = delete;

  std::string file() const { return root_ + "/picture"; }
  void remove() const { std::filesystem::remove(file()); }
  void write(std::span<const uint8_t> content) const {
    std::FILE* stream = std::fopen(file().c_str(), "wb");
    expectThat(stream != nullptr, "the picture can be written");
    std::fwrite(content.data(), 1, content.size(), stream);
    std::fclose(stream);
  }

 private:
  std::string root_ = (std::filesystem::temp_directory_path() / "fuzz-XXXXXX").string();
};
