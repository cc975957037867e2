#include "tools/batch/photo_memory.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <system_error>

namespace alg::tool {
namespace {

/// Pixels, a turned or blended copy and the effect's work; with several scans, the coefficients.
constexpr std::size_t kBytesPerPixel = 12;
constexpr std::size_t kCoefficientBytesPerPixel = 6;
constexpr std::size_t kFixedBytes = std::size_t{16} << 20U;
/// What a byte of another format may stand for.
constexpr std::size_t kMostPerFileByte = 48;

/// The start of a JPEG segment: FF, marker, length.
bool isFrameHeader(uint8_t marker) {  // and no table: C4, C8, CC
  return marker >= 0xc0 && marker <= 0xcf && marker != 0xc4 && marker != 0xc8 && marker != 0xcc;
}

/// What the pixels of a JPEG file take; 0 when it has no frame header.
std::size_t pixelBytesOfJpeg(std::ifstream& file) {
  std::array<unsigned char, 9> head{};
  const auto read = [&](std::size_t count) {
    return static_cast<bool>(
        file.read(reinterpret_cast<char*>(head.data()), static_cast<std::streamsize>(count)));
  };
  if (!read(2) || head[0] != 0xff || head[1] != 0xd8) {
    return 0;
  }
  while (read(4) && head[0] == 0xff) {
    const uint8_t marker = head[1];
    const int length = head[2] * 256 + head[3];
    if (isFrameHeader(marker)) {
      if (!read(5)) {
        return 0;
      }
      const std::size_t pixels =
          static_cast<std::size_t>(head[1] * 256 + head[2]) * (head[3] * 256U + head[4]);
      const bool severalScans = (marker & 3U) == 2;
      return pixels * (kBytesPerPixel + (severalScans ? kCoefficientBytesPerPixel : 0));
    }
    file.seekg(length - 2, std::ios::cur);
  }
  return 0;
}

}  // namespace

std::size_t memoryFor(const std::filesystem::path& path) {
  std::error_code error;
  const std::uintmax_t length = std::filesystem::file_size(path, error);
  if (error) {
    return kFixedBytes;
  }
  std::ifstream file(path, std::ios::binary);
  const std::size_t pixels = pixelBytesOfJpeg(file);
  return kFixedBytes + 2 * length + (pixels != 0 ? pixels : length * kMostPerFileByte);
}

}  // namespace alg::tool
