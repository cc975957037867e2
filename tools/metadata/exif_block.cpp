#include "tools/metadata/exif_block.h"

#include <algorithm>
#include <functional>
#include <span>
#include <utility>

namespace alg::tool {
namespace {

constexpr std::size_t kEntryBytes = 12;
constexpr int kDeepest = 4;  // directories below each other: first, Exif, interoperability

enum Tag : uint16_t {
  kImageWidth = 0x100,
  kImageLength = 0x101,
  kStripOffsets = 0x111,
  kOrientation = 0x112,
  kStripByteCounts = 0x117,
  kThumbnailOffset = 0x201,
  kThumbnailBytes = 0x202,
  kExif = 0x8769,
  kGps = 0x8825,
  kPixelXDimension = 0xA002,
  kPixelYDimension = 0xA003,
  kInteroperability = 0xA005,
};
constexpr uint16_t kShort = 3;
constexpr uint16_t kLong = 4;

/// Bytes of a value; 0 for types that there are not.
std::size_t bytesOfType(uint16_t type) {
  constexpr uint8_t kBytes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};
  constexpr uint16_t kUtf8 = 129;
  return type < std::size(kBytes) ? kBytes[type] : type == kUtf8 ? 1 : 0;
}

struct Extent {
  std::size_t begin;
  std::size_t end;
  bool overlaps(const Extent& other) const { return begin < other.end && other.begin < end; }
};

}  // namespace

std::optional<ExifBlock> ExifBlock::parse(std::vector<uint8_t> bytes) {
  ExifBlock block(std::move(bytes));
  if (!block.readHeader() || !block.directoryAt(block.first_)) {
    return std::nullopt;
  }
  std::vector<std::size_t> places;
  block.forEachDirectory(block.first_,
                         [&](const Directory& directory) { places.push_back(directory.at); });
  if (const auto second = block.directoryAt(block.directoryAt(block.first_)->next)) {
    places.push_back(second->at);
  }
  std::ranges::sort(places);  // a broken block may name a directory twice
  places.erase(std::unique(places.begin(), places.end()), places.end());
  std::ranges::for_each(places, [&](std::size_t at) { block.dropInvalidEntries(at); });
  return block;
}

bool ExifBlock::readHeader() {
  constexpr std::size_t kHeader = 8;
  if (bytes_.size() < kHeader || bytes_[0] != bytes_[1] || (bytes_[0] != 'I' && bytes_[0] != 'M')) {
    return false;
  }
  bigEndian_ = bytes_[0] == 'M';
  first_ = number(4, 4);
  return number(2, 2) == 42;
}

uint32_t ExifBlock::number(std::size_t at, std::size_t size) const {
  uint32_t value = 0;
  for (std::size_t i = 0; i < size; ++i) {
    value = value << 8U | bytes_[bigEndian_ ? at + i : at + size - 1 - i];
  }
  return value;
}

void ExifBlock::setNumber(std::size_t at, std::size_t size, uint32_t value) {
  for (std::size_t i = 0; i < size; ++i, value >>= 8U) {
    bytes_[bigEndian_ ? at + size - 1 - i : at + i] = static_cast<uint8_t>(value);
  }
}

ExifBlock::Entry ExifBlock::entryAt(std::size_t at) const {
  Entry entry{at,
              static_cast<uint16_t>(number(at, 2)),
              static_cast<uint16_t>(number(at + 2, 2)),
              number(at + 4, 4),
              at + 8,
              0};
  const uint64_t size = uint64_t{bytesOfType(entry.type)} * entry.count;
  if (size > 4) {
    entry.valueAt = number(at + 8, 4);
  }
  if (entry.valueAt <= bytes_.size() && size <= bytes_.size() - entry.valueAt) {
    entry.valueSize = static_cast<std::size_t>(size);
  }
  return entry;
}

std::optional<ExifBlock::Directory> ExifBlock::directoryAt(std::size_t at) const {
  if (at < 8 || at > bytes_.size() - 2) {
    return std::nullopt;
  }
  Directory directory{at, {}};
  const std::size_t count = number(at, 2);
  const std::size_t end = at + 2 + kEntryBytes * count;
  if (count == 0 || end > bytes_.size()) {
    return std::nullopt;
  }
  for (std::size_t entry = at + 2; entry != end; entry += kEntryBytes) {
    directory.entries.push_back(entryAt(entry));
  }
  if (end + 4 <= bytes_.size()) {  // some cameras end the block here
    directory.next = number(end, 4);
  }
  return directory;
}

std::optional<ExifBlock::Directory> ExifBlock::below(const Directory& parent,
                                                     uint16_t pointer) const {
  const auto entry = std::ranges::find(parent.entries, pointer, &Entry::tag);
  return entry == parent.entries.end() ? std::nullopt : directoryAt(number(entry->at + 8, 4));
}

void ExifBlock::forEachDirectory(std::size_t at,
                                 const std::function<void(const Directory&)>& use) const {
  std::vector<Directory> level;
  if (auto first = directoryAt(at)) {
    level.push_back(std::move(*first));
  }
  for (int depth = 0; depth < kDeepest && !level.empty(); ++depth) {
    std::vector<Directory> next;
    for (const Directory& directory : level) {
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

void ExifBlock::dropInvalidEntries(std::size_t at) {
  const std::optional<Directory> directory = directoryAt(at);
  if (!directory) {
    return;
  }
  const auto invalid = [](const Entry& entry) { return bytesOfType(entry.type) == 0; };
  const auto dropped = static_cast<std::size_t>(std::ranges::count_if(directory->entries, invalid));
  // One without any valid entry would be left empty, which no reader expects.
  if (dropped == 0 || dropped == directory->entries.size()) {
    return;
  }
  std::size_t to = at + 2;
  for (const Entry& entry : directory->entries) {
    if (!invalid(entry)) {
      std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(entry.at), kEntryBytes,
                  bytes_.begin() + static_cast<std::ptrdiff_t>(to));
      to += kEntryBytes;
    }
  }
  setNumber(at, 2, static_cast<uint32_t>(directory->entries.size() - dropped));
  setNumber(to, 4, directory->next);
  const auto unused = std::min(bytes_.size(), at + directory->size());
  std::fill(bytes_.begin() + static_cast<std::ptrdiff_t>(to) + 4,
            bytes_.begin() + static_cast<std::ptrdiff_t>(unused), 0);
}

int ExifBlock::orientation() const {
  const std::optional<Directory> directory = directoryAt(first_);
  const auto entry = std::ranges::find(directory->entries, kOrientation, &Entry::tag);
  if (entry == directory->entries.end() || entry->count == 0) {
    return 0;
  }
  const uint32_t value = number(entry->valueAt, entry->type == kLong ? 4 : 2);
  return value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
}

void ExifBlock::setEntry(const Entry& entry, uint32_t value) {
  if (entry.count == 1 && (entry.type == kShort || entry.type == kLong)) {
    setNumber(entry.valueAt, bytesOfType(entry.type), value);
  }
}

void ExifBlock::setNext(const Directory& directory, uint32_t next) {
  const std::size_t at = directory.at + directory.size() - 4;
  if (at + 4 <= bytes_.size()) {
    setNumber(at, 4, next);
  }
}

void ExifBlock::describe(uint32_t width, uint32_t height) {
  const std::optional<Directory> first = directoryAt(first_);
  for (const Entry& entry : first->entries) {
    if (entry.tag == kOrientation) {
      setEntry(entry, 1);
    } else if (entry.tag == kImageWidth || entry.tag == kImageLength) {
      setEntry(entry, entry.tag == kImageWidth ? width : height);
    }
  }
  if (const auto exif = below(*first, kExif)) {
    for (const Entry& entry : exif->entries) {
      if (entry.tag == kPixelXDimension || entry.tag == kPixelYDimension) {
        setEntry(entry, entry.tag == kPixelXDimension ? width : height);
      }
    }
  }
}

void ExifBlock::dropThumbnail() {
  const std::optional<Directory> first = directoryAt(first_);
  const std::optional<Directory> second = directoryAt(first->next);
  setNext(*first, 0);
  if (!second) {
    return;
  }
  // What else the block holds, which a broken directory may claim, too.
  std::vector<Extent> others = {{0, 8}};
  forEachDirectory(first_, [&](const Directory& directory) {
    others.push_back({directory.at, directory.at + directory.size()});
    for (const Entry& entry : directory.entries) {
      others.push_back({entry.valueAt, entry.valueAt + entry.valueSize});
    }
  });
  std::vector<Extent> unused = {{second->at, second->at + second->size()}};
  const auto valueOf = [&](Tag tag) {
    const auto entry = std::ranges::find(second->entries, tag, &Entry::tag);
    return entry == second->entries.end() || entry->count != 1
               ? 0U
               : number(entry->at + 8, entry->type == kShort ? 2 : 4);
  };
  for (const auto& [offset, size] :
       {std::pair(kThumbnailOffset, kThumbnailBytes), std::pair(kStripOffsets, kStripByteCounts)}) {
    unused.push_back({valueOf(offset), std::size_t{valueOf(offset)} + valueOf(size)});
  }
  for (const Entry& entry : second->entries) {
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
