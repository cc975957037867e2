#include "tools/photos/followers.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <optional>

#include "platform/jpeg_reader.h"
#include "tools/photos/jpeg_photo.h"

namespace alg::tool {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kIndexBegin = "MPF\0"sv;
constexpr std::size_t kEntryBytes = 16;
constexpr std::size_t kDirectoryAt = 8;
constexpr std::size_t kEntriesAt = kDirectoryAt + 2 + 3 * 12 + 4;  // behind three tags
constexpr uint16_t kVersionTag = 0xB000, kCountTag = 0xB001, kEntriesTag = 0xB002;
constexpr uint32_t kTypeBits = 0xFFFFFF;
constexpr uint32_t kThumbnails = 0x010000, kViews = 0x020000, kTypeClass = 0xFF0000;

/// Numbers in the byte order of an index.
class Reader {
 public:
  explicit Reader(Bytes bytes) : bytes_(bytes), big_(!bytes.empty() && bytes[0] == 'M') {}
  /// 0 beyond the end.
  uint32_t at(std::size_t place, std::size_t size) const {
    uint32_t value = 0;
    for (std::size_t i = 0; i < size && place + size <= bytes_.size(); ++i) {
      value = value << 8U | bytes_[big_ ? place + i : place + size - 1 - i];
    }
    return value;
  }

 private:
  Bytes bytes_;
  bool big_;
};

void put(std::vector<uint8_t>& bytes, std::size_t at, uint32_t value, int size) {
  for (int i = size - 1; i >= 0; --i, value >>= 8U) {
    bytes[at + static_cast<std::size_t>(i)] = static_cast<uint8_t>(value);
  }
}

bool isGainMap(Bytes picture) {
  const std::string_view text = asText(picture.first(std::min<std::size_t>(picture.size(), 65536)));
  return text.find("hdr-gain-map"sv) != std::string_view::npos ||
         text.find("hdrgainmap"sv) != std::string_view::npos ||
         text.find("urn:iso:std:iso:ts:21496:-1"sv) != std::string_view::npos;
}

/// A gain map turned and cropped as its picture was; empty when it can't be decoded.
std::vector<uint8_t> changed(Bytes jpeg, const PictureChange& change) {
  JpegBytes input(jpeg);
  JpegReader reader(input);
  if (reader.start({}) != JpegFault::kNone) {
    return {};
  }
  Photo map = decodeUpright(reader, change.orientation);
  if (reader.finish() != JpegFault::kNone || reader.damage()) {
    return {};
  }
  const Area part = {change.shown.x * map.width, change.shown.y * map.height,
                     change.shown.width * map.width, change.shown.height * map.height};
  const auto side = [](double pixels) {
    return std::max(1, static_cast<int>(std::lround(pixels)));
  };
  if (part.width < map.width || part.height < map.height) {
    map = resample(map, part, side(part.width), side(part.height));
  }
  std::vector<uint8_t> segments;
  for (const JpegSegment& segment : layoutOf(jpeg).segments) {
    if ((segment.marker >= 0xE0 && segment.marker <= 0xED) || segment.marker == 0xFE) {
      appendSegment(segments, segment.marker, {}, segment.content);
    }
  }
  JpegCoding coding = codingOf(reader.info());
  coding.sampling = JpegSampling::k444;
  return encodeJpegPhoto(map, coding, segments);
}

}  // namespace

Followers::Followers(Bytes file, const JpegLayout& layout) {
  const Bytes behind = layout.behind;
  rest_.assign(behind.begin(), behind.end());
  for (const JpegSegment& segment : layout.segments) {
    if (segment.is(0xE2, kIndexBegin) && pictures_.empty()) {
      readIndex(file, segment.content.subspan(kIndexBegin.size()), behind);
    }
  }
  // Without an index, a gain map may follow at once.
  if (pictures_.empty() && asText(behind).starts_with("\xFF\xD8"sv) && isGainMap(behind)) {
    const Bytes next = layoutOf(behind).behind;
    const Bytes map = behind.first(behind.size() - next.size());
    pictures_.push_back({0, {map.begin(), map.end()}, false});
    rest_.assign(next.begin(), next.end());
  }
}

/// Places are counted from the index's byte order on; the first entry is the picture itself.
void Followers::readIndex(Bytes file, Bytes index, Bytes behind) {
  const Reader reader(index);
  const std::size_t directory = reader.at(4, 4);
  std::size_t entries = 0;
  std::size_t count = 0;
  for (std::size_t i = 0; i < reader.at(directory, 2); ++i) {
    const std::size_t tag = directory + 2 + 12 * i;
    if (reader.at(tag, 2) == kEntriesTag) {
      count = reader.at(tag + 4, 4) / kEntryBytes;
      entries = reader.at(tag + 8, 4);
    }
  }
  const auto origin = static_cast<std::size_t>(index.data() - file.data());
  const std::size_t start = file.size() - behind.size();
  std::size_t end = start;
  attributes_ = reader.at(entries, 4);
  for (std::size_t i = 1; i < count && i < 64; ++i) {
    const std::size_t entry = entries + kEntryBytes * i;
    const std::size_t size = reader.at(entry + 4, 4);
    const std::size_t at = origin + reader.at(entry + 8, 4);
    if (size == 0 || at < end || at > file.size() || size > file.size() - at) {
      continue;  // not behind the others
    }
    const Bytes bytes = file.subspan(at, size);
    pictures_.push_back({reader.at(entry, 4), {bytes.begin(), bytes.end()}});
    end = at + size;
  }
  rest_.assign(file.begin() + static_cast<std::ptrdiff_t>(end), file.end());
}

bool Followers::hasGainMap() const { return gainMapBytes() > 0; }

bool Followers::hasViews() const {
  return std::ranges::any_of(
      pictures_, [](const Picture& p) { return (p.attributes & kTypeClass) == kViews; });
}

std::size_t Followers::gainMapBytes() const {
  const auto map = std::ranges::find_if(
      pictures_, [](const Picture& picture) { return isGainMap(picture.bytes); });
  return map == pictures_.end() ? 0 : map->bytes.size();
}

void Followers::follow(const PictureChange& change) {
  const bool asItWas =
      change.orientation == 1 && change.shown.width >= 1 && change.shown.height >= 1;
  for (Picture& picture : pictures_) {
    const bool map = isGainMap(picture.bytes);
    if (!map || change.moved) {
      picture.bytes.clear();  // a preview, another view: not of this picture any more
    } else if (!asItWas) {
      picture.bytes = changed(picture.bytes, change);
    }
  }
  std::erase_if(pictures_, [](const Picture& picture) { return picture.bytes.empty(); });
}

std::vector<uint8_t> Followers::index() const {
  const auto listed =
      static_cast<std::size_t>(std::ranges::count(pictures_, true, &Picture::listed));
  if (listed == 0) {
    return {};
  }
  std::vector<uint8_t> block(kEntriesAt + kEntryBytes * (listed + 1));
  put(block, 0, 0x4D4D002A, 4);
  put(block, 4, kDirectoryAt, 4);
  put(block, kDirectoryAt, 3, 2);
  const auto tag = [&](std::size_t number, uint16_t name, uint32_t type, std::size_t count,
                       std::size_t value) {
    const std::size_t at = kDirectoryAt + 2 + 12 * number;
    put(block, at, name, 2);
    put(block, at + 2, type, 2);
    put(block, at + 4, static_cast<uint32_t>(count), 4);
    put(block, at + 8, static_cast<uint32_t>(value), 4);
  };
  constexpr uint32_t kUndefined = 7, kLong = 4;
  tag(0, kVersionTag, kUndefined, 4, 0x30313030);  // "0100"
  tag(1, kCountTag, kLong, 1, listed + 1);
  tag(2, kEntriesTag, kUndefined, kEntryBytes * (listed + 1), kEntriesAt);
  put(block, kEntriesAt, attributes_, 4);
  std::size_t at = kEntriesAt + kEntryBytes;
  for (const Picture& picture : pictures_) {
    if (picture.listed) {
      put(block, at, picture.attributes, 4);
      at += kEntryBytes;
    }
  }
  std::vector<uint8_t> segment;
  appendSegment(segment, 0xE2, kIndexBegin, block);
  return segment;
}

void Followers::appendTo(std::vector<uint8_t>& file, std::size_t indexAt) const {
  const std::size_t origin = indexAt + 4 + kIndexBegin.size();
  std::size_t entry = origin + kEntriesAt;
  if (indexAt != 0) {
    put(file, entry + 4, static_cast<uint32_t>(file.size()), 4);
  }
  for (const Picture& picture : pictures_) {
    if (indexAt != 0 && picture.listed) {
      entry += kEntryBytes;
      put(file, entry + 4, static_cast<uint32_t>(picture.bytes.size()), 4);
      put(file, entry + 8, static_cast<uint32_t>(file.size() - origin), 4);
    }
    file.insert(file.end(), picture.bytes.begin(), picture.bytes.end());
  }
  file.insert(file.end(), rest_.begin(), rest_.end());
}

}  // namespace alg::tool
