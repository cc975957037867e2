#include "tools/metadata/tiff_view.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace alg::tool {

std::size_t tiffTypeBytes(uint16_t type) {
  constexpr uint8_t kBytes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};
  constexpr uint16_t kUtf8 = 129;
  return type < std::size(kBytes) ? kBytes[type] : type == kUtf8 ? 1 : 0;
}

std::optional<TiffView> TiffView::of(Bytes bytes) {
  constexpr std::size_t kHeader = 8;
  constexpr uint32_t kTiff = 42;
  if (bytes.size() < kHeader || bytes[0] != bytes[1] || (bytes[0] != 'I' && bytes[0] != 'M')) {
    return std::nullopt;
  }
  const TiffView view(bytes, bytes[0] == 'M');
  return view.number(2, 2) == kTiff ? std::optional(view) : std::nullopt;
}

uint32_t TiffView::number(std::size_t at, std::size_t size) const {
  uint32_t value = 0;
  for (std::size_t i = 0; i < size; ++i) {
    value = value << 8U | bytes_[bigEndian_ ? at + i : at + size - 1 - i];
  }
  return value;
}

TiffEntry TiffView::entryAt(std::size_t at) const {
  TiffEntry entry{at,
                  static_cast<uint16_t>(number(at, 2)),
                  static_cast<uint16_t>(number(at + 2, 2)),
                  number(at + 4, 4),
                  at + 8,
                  0};
  const uint64_t size = uint64_t{tiffTypeBytes(entry.type)} * entry.count;
  if (size > 4) {
    entry.valueAt = number(at + 8, 4);
  }
  if (entry.valueAt <= bytes_.size() && size <= bytes_.size() - entry.valueAt) {
    entry.valueSize = static_cast<std::size_t>(size);
  }
  return entry;
}

std::optional<TiffDirectory> TiffView::directoryAt(std::size_t at) const {
  if (at < 8 || at > bytes_.size() - 2) {
    return std::nullopt;
  }
  TiffDirectory directory{at, {}};
  const std::size_t count = number(at, 2);
  const std::size_t end = at + 2 + TiffEntry::kBytes * count;
  if (count == 0 || end > bytes_.size()) {
    return std::nullopt;
  }
  for (std::size_t entry = at + 2; entry != end; entry += TiffEntry::kBytes) {
    directory.entries.push_back(entryAt(entry));
  }
  if (end + 4 <= bytes_.size()) {  // some cameras end the block here
    directory.next = number(end, 4);
  }
  return directory;
}

std::optional<TiffDirectory> TiffView::below(const TiffDirectory& parent, uint16_t pointer) const {
  const auto entry = std::ranges::find(parent.entries, pointer, &TiffEntry::tag);
  return entry == parent.entries.end() ? std::nullopt : directoryAt(number(entry->at + 8, 4));
}

void TiffView::forEachDirectory(std::size_t at,
                                const std::function<void(const TiffDirectory&)>& use) const {
  constexpr int kDeepest = 4;  // directories below each other: first, Exif, interoperability
  std::vector<TiffDirectory> level;
  if (auto first = directoryAt(at)) {
    level.push_back(std::move(*first));
  }
  for (int depth = 0; depth < kDeepest && !level.empty(); ++depth) {
    std::vector<TiffDirectory> next;
    for (const TiffDirectory& directory : level) {
      use(directory);
      for (const uint16_t pointer : {kExif, kGps, kInteroperability}) {
        if (auto found = below(directory, pointer)) {
          next.push_back(std::move(*found));
        }
      }
    }
    level = std::move(next);
  }
}

void putTiffNumber(uint8_t* to, std::size_t size, bool bigEndian, uint32_t value) {
  for (std::size_t i = 0; i < size; ++i, value >>= 8U) {
    to[bigEndian ? size - 1 - i : i] = static_cast<uint8_t>(value);
  }
}

}  // namespace alg::tool
