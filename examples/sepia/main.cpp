// sepia IN.ppm OUT.ppm: halves a picture and tones it sepia. Without CMake:
//   c++ main.cpp $(pkg-config --cflags --libs Algorithm) -o sepia
//       -Wl,-rpath,$(pkg-config --variable=libdir Algorithm)
#include <libalgorithm/classic_effects.h>
#include <libalgorithm/pretty_filters.h>

#include <cstdint>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

struct Picture {
  int width = 0;
  int height = 0;
  std::vector<uint32_t> words;  // 0xAARRGGBB
};

/// Reads a binary PPM file (P6, 8 bits, no comments). Empty when it is none.
Picture read(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string kind;
  Picture picture;
  int greatest = 0;
  file >> kind >> picture.width >> picture.height >> greatest;
  file.get();  // the one byte between header and pixels
  if (kind != "P6" || greatest != 255 || picture.width < 1 || picture.height < 1) return {};
  const size_t pixels = static_cast<size_t>(picture.width) * static_cast<size_t>(picture.height);
  std::vector<unsigned char> rgb(3 * pixels);
  if (!file.read(reinterpret_cast<char*>(rgb.data()), static_cast<std::streamsize>(rgb.size()))) {
    return {};
  }
  for (size_t i = 0; i < rgb.size(); i += 3) {
    picture.words.push_back(0xFF000000u | uint32_t{rgb[i]} << 16 | uint32_t{rgb[i + 1]} << 8 |
                            rgb[i + 2]);
  }
  return picture;
}

Picture halved(const Picture& picture) {
  Picture half{(picture.width + 1) / 2, (picture.height + 1) / 2, {}};
  half.words.resize(static_cast<size_t>(half.width) * static_cast<size_t>(half.height));
  Resize(half.words.data(), half.width, half.height, picture.words.data(), picture.width,
         picture.height);
  return half;
}

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: sepia IN.ppm OUT.ppm\n";
    return 2;
  }
  const Picture picture = read(argv[1]);
  if (picture.words.empty()) {
    std::cerr << "sepia: " << argv[1] << " can't be read as a binary PPM file\n";
    return 1;
  }
  const Picture half = halved(picture);

  std::vector<unsigned char> packed;  // effects read B, G, R ...
  for (const uint32_t word : half.words) {
    packed.push_back(static_cast<unsigned char>(word));
    packed.push_back(static_cast<unsigned char>(word >> 8));
    packed.push_back(static_cast<unsigned char>(word >> 16));
  }
  Sepia(packed.data(), packed.data(), half.width, half.height);

  std::ofstream file(argv[2], std::ios::binary);
  file << "P6\n" << half.width << ' ' << half.height << "\n255\n";
  file.write(reinterpret_cast<const char*>(packed.data()),  // ... and write R, G, B, as PPM does
             static_cast<std::streamsize>(packed.size()));
  if (!file.flush()) {
    std::cerr << "sepia: cannot write " << argv[2] << '\n';
    return 1;
  }
  return 0;
}
