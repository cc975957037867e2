#include "tools/photos/webp_container.h"

#include <string_view>

namespace alg::tool {
namespace {

constexpr std::size_t kHeader = 12;  // RIFF, size, WEBP
constexpr std::size_t kChunkHeader = 8;

void appendNumber(std::vector<uint8_t>& to, std::size_t value, int bytes) {
  for (int i = 0; i < bytes; ++i, value >>= 8U) {
    to.push_back(static_cast<uint8_t>(value));
  }
}

void appendChunk(std::vector<uint8_t>& to, std::string_view name, Bytes content) {
  to.insert(to.end(), name.begin(), name.end());
  appendNumber(to, content.size(), 4);
  to.insert(to.end(), content.begin(), content.end());
  if (content.size() % 2 != 0) {
    to.push_back(0);
  }
}

struct Chunk {
  std::string_view name;
  Bytes content;
};

/// The chunk that holds the picture.
Chunk pictureOf(Bytes file) {
  for (std::size_t at = kHeader; at + kChunkHeader <= file.size();) {
    const std::string_view name = asText(file.subspan(at, 4));
    const std::size_t size = file[at + 4] | std::size_t{file[at + 5]} << 8U |
                             std::size_t{file[at + 6]} << 16U | std::size_t{file[at + 7]} << 24U;
    if (name.starts_with("VP8") && name != "VP8X") {
      return {name, file.subspan(at + kChunkHeader, size)};
    }
    at += kChunkHeader + size + size % 2;
  }
  return {};
}

}  // namespace

std::vector<uint8_t> webpWith(Bytes file, int width, int height, const MetadataBlocks& blocks) {
  const Chunk picture = pictureOf(file);
  std::vector<uint8_t> extension;
  constexpr uint8_t kHasProfile = 0x20, kHasExif = 0x08, kHasXmp = 0x04;
  extension.push_back(static_cast<uint8_t>((blocks.profile.empty() ? 0 : kHasProfile) |
                                           (blocks.exif.empty() ? 0 : kHasExif) |
                                           (blocks.xmp.empty() ? 0 : kHasXmp)));
  appendNumber(extension, 0, 3);
  appendNumber(extension, static_cast<std::size_t>(width) - 1, 3);
  appendNumber(extension, static_cast<std::size_t>(height) - 1, 3);

  std::vector<uint8_t> result(file.begin(), file.begin() + kHeader);
  const auto appendIfAny = [&](std::string_view name, Bytes content) {
    if (!content.empty()) {
      appendChunk(result, name, content);
    }
  };
  if (extension[0] != 0) {
    appendChunk(result, "VP8X", extension);
  }
  appendIfAny("ICCP", blocks.profile);
  appendChunk(result, picture.name, picture.content);
  appendIfAny("EXIF", blocks.exif);
  appendIfAny("XMP ", asBytes(blocks.xmp));
  std::vector<uint8_t> size;
  appendNumber(size, result.size() - kChunkHeader, 4);
  std::copy(size.begin(), size.end(), result.begin() + 4);
  return result;
}

}  // namespace alg::tool
