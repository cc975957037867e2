// Where the parts of a JPEG file lie: its segments, its frame, its end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace alg::tool {

using Bytes = std::span<const uint8_t>;

inline constexpr uint8_t kEndOfImage = 0xD9;

/// A segment before the image data.
struct JpegSegment {
  uint8_t marker;  ///< 0xE1 for APP1
  Bytes content;   ///< without marker and length

  bool is(uint8_t wanted, std::string_view begin) const;
};

struct JpegLayout {
  std::vector<JpegSegment> segments;  ///< all before the first scan, in the file's order
  uint8_t frameMarker = 0;            ///< 0xC0 for a baseline frame; 0: none
  int precision = 0;                  ///< bits a sample
  int components = 0;
  std::size_t scan = 0;  ///< where the first scan's data begin; 0: none
  Bytes behind;          ///< what follows the image's end marker: a gain map, a video
};

/// Follows a file's markers, as far as they go. Everything points into `file`.
JpegLayout layoutOf(Bytes file);

/// The position of the next marker's code from `at` on; the size when there is none.
std::size_t nextMarker(Bytes file, std::size_t at);

/// Appends a whole segment. False, and nothing appended, when the content is too long for one.
bool appendSegment(std::vector<uint8_t>& to, uint8_t marker, std::string_view begin, Bytes content);

inline std::string_view asText(Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}
inline Bytes asBytes(std::string_view text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

}  // namespace alg::tool
