#include "tools/metadata/jpeg_layout.h"

#include <cstring>

namespace alg::tool {
namespace {

constexpr uint8_t kStartOfImage = 0xD8;
constexpr uint8_t kStartOfScan = 0xDA;
constexpr uint8_t kTemporary = 0x01;

bool isRestart(uint8_t marker) { return marker >= 0xD0 && marker <= 0xD7; }
bool isFrame(uint8_t marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

}  // namespace

// Entropy-coded data hold 0xFF only before 0x00 and in restart markers.
std::size_t nextMarker(Bytes file, std::size_t at) {
  while (at + 1 < file.size()) {
    const void* found = std::memchr(file.data() + at, 0xFF, file.size() - at - 1);
    if (found == nullptr) {
      break;
    }
    at = static_cast<std::size_t>(static_cast<const uint8_t*>(found) - file.data()) + 1;
    if (file[at] != 0x00 && file[at] != 0xFF && file[at] != kTemporary && !isRestart(file[at])) {
      return at;
    }
  }
  return file.size();
}

bool JpegSegment::is(uint8_t wanted, std::string_view begin) const {
  return marker == wanted && asText(content).starts_with(begin);
}

JpegLayout layoutOf(Bytes file) {
  JpegLayout layout;
  if (file.size() < 2 || file[0] != 0xFF || file[1] != kStartOfImage) {
    return layout;
  }
  bool inScans = false;
  for (std::size_t at = nextMarker(file, 2); at + 2 < file.size(); at = nextMarker(file, at)) {
    const uint8_t marker = file[at];
    if (marker == kEndOfImage) {
      layout.behind = file.subspan(at + 1);
      break;
    }
    const std::size_t length = std::size_t{file[at + 1]} << 8U | file[at + 2];
    if (length < 2 || at + 1 + length > file.size()) {
      break;
    }
    const JpegSegment segment{marker, file.subspan(at + 3, length - 2)};
    if (marker == kStartOfScan && !inScans) {
      inScans = true;
      layout.scan = at + 1 + length;
    }
    if (!inScans) {
      layout.segments.push_back(segment);
    }
    if (isFrame(marker) && layout.frameMarker == 0 && length >= 8) {
      layout.frameMarker = marker;
      layout.precision = segment.content[0];
      layout.components = segment.content[5];
    }
    at += 1 + length;
  }
  return layout;
}

bool appendSegment(std::vector<uint8_t>& to, uint8_t marker, std::string_view begin,
                   Bytes content) {
  constexpr std::size_t kMost = 65533;
  const std::size_t size = begin.size() + content.size();
  if (size > kMost) {
    return false;
  }
  const auto length = static_cast<uint16_t>(size + 2);
  to.insert(to.end(), {0xFF, marker, static_cast<uint8_t>(length >> 8U),
                       static_cast<uint8_t>(length & 0xFFU)});
  to.insert(to.end(), begin.begin(), begin.end());
  to.insert(to.end(), content.begin(), content.end());
  return true;
}

}  // namespace alg::tool
