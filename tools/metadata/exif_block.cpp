#include "tools/metadata/exif_block.h"

#include <algorithm>
#include <functional>
#include <span>
#include <utility>

namespace alg::tool {
namespace {

struct Extent {
  std::size_t begin;
  std::size_t end;
  bool overlaps(const Extent& other) const { return begin < other.end && other.begin < end; }
};

}  // namespace

std::optional<ExifBlock> ExifBlock::parse(std::vector<uint8_t> bytes) {
  ExifBlock block(std::move(bytes));
  if (!TiffView::of(block.bytes_) || !block.view().directoryAt(block.view().first())) {
    return std::nullopt;
  }
  std::vector<std::size_t> places;
  block.view().forEachDirectory(block.view().first(), [&](const TiffDirectory& directory) {
    places.push_back(directory.at);
  });
  if (const auto second =
          block.view().directoryAt(block.view().directoryAt(block.view().first())->next)) {
    places.push_back(second->at);
  }
  std::ranges::sort(places);  // a broken block may name a directory twice
  places.erase(std::unique(places.begin(), places.end()), places.end());
  std::ranges::for_each(places, [&](std::size_t at) { block.dropInvalidEntries(at); });
  // One that overlaps the first may have taken its entries with it.
  return block.view().directoryAt(block.view().first()) ? std::optional(std::move(block))
                                                        : std::nullopt;
}

void ExifBlock::setNumber(std::size_t at, std::size_t size, uint32_t value) {
  putTiffNumber(&bytes_[at], size, view().bigEndian(), value);
}

void ExifBlock::dropInvalidEntries(std::size_t at) {
  const std::optional<TiffDirectory> directory = view().directoryAt(at);
  if (!directory) {
    return;
  }
  const auto invalid = [](const TiffEntry& entry) { return tiffTypeBytes(entry.type) == 0; };
  const auto dropped = static_cast<std::size_t>(std::ranges::count_if(directory->entries, invalid));
  // One without any valid entry would be left empty, which no reader expects.
  if (dropped == 0 || dropped == directory->entries.size()) {
    return;
  }
  std::size_t to = at + 2;
  for (const TiffEntry& entry : directory->entries) {
    if (!invalid(entry)) {
      std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(entry.at), TiffEntry::kBytes,
                  bytes_.begin() + static_cast<std::ptrdiff_t>(to));
      to += TiffEntry::kBytes;
    }
  }
  setNumber(at, 2, static_cast<uint32_t>(directory->entries.size() - dropped));
  setNumber(to, 4, directory->next);
  const auto unused = std::min(bytes_.size(), at + directory->size());
  std::fill(bytes_.begin() + static_cast<std::ptrdiff_t>(to) + 4,
            bytes_.begin() + static_cast<std::ptrdiff_t>(unused), 0);
}

int ExifBlock::orientation() const {
  const std::optional<TiffDirectory> directory = view().directoryAt(view().first());
  const auto entry = std::ranges::find(directory->entries, kOrientation, &TiffEntry::tag);
  if (entry == directory->entries.end() || entry->valueSize == 0) {
    return 0;
  }
  const uint32_t value = view().number(entry->valueAt, entry->type == kLong ? 4 : 2);
  return value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
}

void ExifBlock::setEntry(const TiffEntry& entry, uint32_t value) {
  if (entry.count == 1 && (entry.type == kShort || entry.type == kLong)) {
    setNumber(entry.valueAt, tiffTypeBytes(entry.type), value);
  }
}

void ExifBlock::setNext(const TiffDirectory& directory, uint32_t next) {
  const std::size_t at = directory.at + directory.size() - 4;
  if (at + 4 <= bytes_.size()) {
    setNumber(at, 4, next);
  }
}

void ExifBlock::describe(uint32_t width, uint32_t height) {
  const std::optional<TiffDirectory> first = view().directoryAt(view().first());
  if (!first) {
    return;  // describeSrgb() has written over it: broken directories overlap
  }
  for (const TiffEntry& entry : first->entries) {
    if (entry.tag == kOrientation) {
      setEntry(entry, 1);
    } else if (entry.tag == kImageWidth || entry.tag == kImageLength) {
      setEntry(entry, entry.tag == kImageWidth ? width : height);
    }
  }
  if (const auto exif = view().below(*first, kExif)) {
    for (const TiffEntry& entry : exif->entries) {
      if (entry.tag == kPixelXDimension || entry.tag == kPixelYDimension) {
        setEntry(entry, entry.tag == kPixelXDimension ? width : height);
      }
    }
  }
}

void ExifBlock::describeSrgb() {
  constexpr uint32_t kSrgb = 1;
  if (const auto exif = view().below(*view().directoryAt(view().first()), kExif)) {
    for (const TiffEntry& entry : exif->entries) {
      if (entry.tag == kColorSpace) {
        setEntry(entry, kSrgb);
      }
    }
  }
}

void ExifBlock::dropThumbnail() {
  const std::optional<TiffDirectory> first = view().directoryAt(view().first());
  const std::optional<TiffDirectory> second = view().directoryAt(first->next);
  setNext(*first, 0);
  if (!second) {
    return;
  }
  // What else the block holds, which a broken directory may claim, too.
  std::vector<Extent> others = {{0, 8}};
  view().forEachDirectory(view().first(), [&](const TiffDirectory& directory) {
    others.push_back({directory.at, directory.at + directory.size()});
    for (const TiffEntry& entry : directory.entries) {
      others.push_back({entry.valueAt, entry.valueAt + entry.valueSize});
    }
  });
  std::vector<Extent> unused = {{second->at, second->at + second->size()}};
  const auto valueOf = [&](TiffTag tag) {
    const auto entry = std::ranges::find(second->entries, tag, &TiffEntry::tag);
    return entry == second->entries.end() || entry->count != 1
               ? 0U
               : view().number(entry->at + 8, entry->type == kShort ? 2 : 4);
  };
  for (const auto& [offset, size] :
       {std::pair(kThumbnailOffset, kThumbnailBytes), std::pair(kStripOffsets, kStripByteCounts)}) {
    unused.push_back({valueOf(offset), std::size_t{valueOf(offset)} + valueOf(size)});
  }
  for (const TiffEntry& entry : second->entries) {
    unused.push_back({entry.valueAt, entry.valueAt + entry.valueSize});
  }
  std::ranges::sort(unused, std::greater(), &Extent::end);
  for (Extent extent : unused) {
    extent.end = std::min(extent.end, bytes_.size());
    if (extent.begin < extent.end &&
        std::ranges::none_of(others, [&](const Extent& o) { return o.overlaps(extent); })) {
      std::fill(bytes_.begin() + static_cast<std::ptrdiff_t>(extent.begin),
                bytes_.begin() + static_cast<std::ptrdiff_t>(extent.end), 0);
    }
  }
  // The thumbnail usually ends the block.
  for (const Extent& extent : unused) {
    if (extent.begin < bytes_.size() && extent.end >= bytes_.size() &&
        std::ranges::none_of(others, [&](const Extent& o) { return o.overlaps(extent); })) {
      bytes_.resize(extent.begin);
    }
  }
}

}  // namespace alg::tool
