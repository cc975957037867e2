#include "tools/metadata/tiff_exif.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include "tools/metadata/tiff_view.h"

namespace alg::tool {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t kHeader = 8;
constexpr std::size_t kMostBytes = 65000;  // of a block, so that a JPEG's segment holds it

/// Whether a tag of a picture's directory tells how it is stored, or what stands elsewhere in an
/// Exif block or beside it.
bool isStructure(uint16_t tag) {
  constexpr std::pair<uint16_t, uint16_t> kRanges[] = {
      {254, 266},  // sizes, bits, compression, photometric interpretation
      {273, 273},     {277, 281},     {284, 284},      // strips, samples, planes
      {288, 293},     {297, 297},     {301, 301},      // free space, codings, page, curves
      {317, 317},     {320, 347},                      // predictor, colours, tiles, inks, tables
      {512, 521},     {529, 532},                      // JPEG's old ones, YCbCr
      {700, 700},     {33723, 33723}, {34377, 34377},  // XMP, IPTC, Photoshop's resources
      {34665, 34665}, {34675, 34675}, {34853, 34853},  // Exif's place, ICC profile, GPS's place
      {37724, 37724}};                                 // layers
  return std::ranges::any_of(
      kRanges, [tag](const auto& range) { return range.first <= tag && tag <= range.second; });
}

/// An entry to be written, with its value in the file's byte order.
struct NewEntry {
  uint16_t tag;
  uint16_t type;
  uint32_t count;
  std::vector<uint8_t> value;
};

/// Appends to a TIFF structure.
class TiffWriter {
 public:
  TiffWriter(std::vector<uint8_t>& to, bool bigEndian) : to_(to), bigEndian_(bigEndian) {}

  NewEntry pointer(uint16_t tag, std::size_t at) const {
    NewEntry entry{tag, kLong, 1, std::vector<uint8_t>(4)};
    putTiffNumber(entry.value.data(), 4, bigEndian_, static_cast<uint32_t>(at));
    return entry;
  }
  /// Appends a directory behind those of its values that it can't hold. Returns where it is.
  std::size_t append(std::vector<NewEntry> entries) {
    std::ranges::sort(entries, {}, &NewEntry::tag);
    for (NewEntry& entry : entries) {
      if (entry.value.size() > 4) {
        align();
        const std::size_t at = to_.size();
        to_.insert(to_.end(), entry.value.begin(), entry.value.end());
        entry.value = pointer(entry.tag, at).value;
      }
      entry.value.resize(4);
    }
    align();
    const std::size_t at = to_.size();
    append(2, static_cast<uint32_t>(entries.size()));
    for (const NewEntry& entry : entries) {
      append(2, entry.tag);
      append(2, entry.type);
      append(4, entry.count);
      to_.insert(to_.end(), entry.value.begin(), entry.value.end());
    }
    append(4, 0);
    return at;
  }
  void beginAt(std::size_t directory) {
    putTiffNumber(&to_[4], 4, bigEndian_, static_cast<uint32_t>(directory));
  }

 private:
  void align() { to_.resize((to_.size() + 1) / 2 * 2); }
  void append(std::size_t size, uint32_t value) {
    to_.resize(to_.size() + size);
    putTiffNumber(&to_[to_.size() - size], size, bigEndian_, value);
  }

  std::vector<uint8_t>& to_;
  bool bigEndian_;
};

std::vector<NewEntry> entriesOf(const TiffView& tiff, const std::optional<TiffDirectory>& directory,
                                bool (*leaveOut)(uint16_t tag)) {
  std::vector<NewEntry> entries;
  std::size_t room = kMostBytes / 4;  // for each of the four directories
  if (!directory) {
    return entries;
  }
  for (const TiffEntry& entry : directory->entries) {
    const std::size_t bytes = TiffEntry::kBytes + entry.valueSize;
    if (entry.valueSize > 0 && bytes <= room && !leaveOut(entry.tag)) {
      room -= bytes;
      const Bytes value = tiff.bytes().subspan(entry.valueAt, entry.valueSize);
      entries.push_back({entry.tag, entry.type, entry.count, {value.begin(), value.end()}});
    }
  }
  return entries;
}

/// Makes a maker note readable in another place. False when its maker's way is not known.
/// @param from  where it was; `to`: where it will be
bool moveMakerNote(std::vector<uint8_t>& note, bool bigEndian, std::size_t from, std::size_t to) {
  constexpr std::string_view kOwnOffsets[] = {"Nikon\0\2"sv,   "FUJIFILM"sv,  "OLYMPUS\0"sv,
                                              "OM SYSTEM\0"sv, "PENTAX \0"sv, "Apple iOS\0"sv};
  constexpr std::string_view kBegins[] = {"SONY DSC \0\0\0"sv, "SONY CAM \0\0\0"sv,
                                          "Panasonic\0\0\0"sv};
  const auto begins = [&](std::string_view with) { return asText(note).starts_with(with); };
  if (from == to || std::ranges::any_of(kOwnOffsets, begins)) {
    return true;
  }
  const auto* const known = std::ranges::find_if(kBegins, begins);
  std::size_t at = known == std::end(kBegins) ? 0 : known->size();
  const auto number = [&](std::size_t place, std::size_t size) {
    uint32_t value = 0;
    for (std::size_t i = 0; i < size; ++i) {
      value = value << 8U | note[bigEndian ? place + i : place + size - 1 - i];
    }
    return value;
  };
  const std::size_t count = note.size() >= at + 2 ? number(at, 2) : 0;
  at += 2;
  if (count == 0 || note.size() < at + count * TiffEntry::kBytes) {
    return false;
  }
  // A directory whose values all lie in the note, by offsets from where the block begins.
  std::vector<uint8_t> moved = note;
  for (const std::size_t end = at + count * TiffEntry::kBytes; at < end; at += TiffEntry::kBytes) {
    const std::size_t bytes = tiffTypeBytes(static_cast<uint16_t>(number(at + 2, 2)));
    const uint64_t size = uint64_t{bytes} * number(at + 4, 4);
    const std::size_t value = number(at + 8, 4);
    if (bytes == 0 || (size > 4 && (value < from || value - from + size > note.size()))) {
      return false;
    }
    if (size > 4) {
      putTiffNumber(&moved[at + 8], 4, bigEndian, static_cast<uint32_t>(value - from + to));
    }
  }
  note = std::move(moved);
  return true;
}

/// The block but for its maker note, from `base` on.
/// @param maker  its entry, with the place of its value; null for none
std::vector<uint8_t> assemble(const TiffView& tiff, std::size_t base, const NewEntry* maker) {
  std::vector<uint8_t> block(tiff.bytes().begin(), tiff.bytes().begin() + 4);
  block.resize(base);
  TiffWriter writer(block, tiff.bigEndian());
  const auto first = tiff.directoryAt(tiff.first());
  auto entries = entriesOf(tiff, first, isStructure);
  const auto nothing = [](uint16_t) { return false; };
  if (const auto gps = entriesOf(tiff, tiff.below(*first, kGps), nothing); !gps.empty()) {
    entries.push_back(writer.pointer(kGps, writer.append(gps)));
  }
  if (const auto exif = tiff.below(*first, kExif)) {
    auto inner = entriesOf(
        tiff, exif, [](uint16_t tag) { return tag == kMakerNote || tag == kInteroperability; });
    const auto interoperability = entriesOf(tiff, tiff.below(*exif, kInteroperability), nothing);
    if (!interoperability.empty()) {
      inner.push_back(writer.pointer(kInteroperability, writer.append(interoperability)));
    }
    if (maker != nullptr) {
      inner.push_back(*maker);
    }
    if (!inner.empty()) {
      entries.push_back(writer.pointer(kExif, writer.append(std::move(inner))));
    }
  }
  if (entries.empty()) {
    return {};
  }
  writer.beginAt(writer.append(std::move(entries)));
  return block;
}

/// Turns the bytes of each element around.
void exchangeBytes(uint8_t* value, std::size_t bytes, std::size_t element) {
  for (std::size_t i = 0; element > 1 && i + element <= bytes; i += element) {
    std::reverse(value + i, value + i + element);
  }
}

/// Elements of a value that have an order of bytes.
std::size_t orderedBytes(uint16_t type) {
  constexpr uint16_t kRational = 5, kSignedRational = 10;
  return type == kRational || type == kSignedRational ? 4 : tiffTypeBytes(type);
}

/// The entries of a picture's directory whose file now stands behind `shift` other bytes, as they
/// are in another byte order. Those of their values that stand elsewhere are changed in `file`.
std::vector<NewEntry> shiftedEntries(const TiffView& tiff, std::size_t shift, bool bigEndian,
                                     std::vector<uint8_t>& file) {
  std::vector<NewEntry> entries;
  const auto directory = tiff.directoryAt(tiff.first());
  for (const TiffEntry& entry : directory->entries) {
    const std::size_t element = orderedBytes(entry.type);
    if (entry.valueSize == 0) {
      continue;
    }
    uint8_t* const value = &file[entry.valueAt + shift];
    if (tiff.bigEndian() != bigEndian) {
      exchangeBytes(value, entry.valueSize, element);
    }
    if (entry.tag == kStripOffsets || entry.tag == kTileOffsets) {
      for (std::size_t i = 0; i < entry.valueSize; i += element) {
        const uint32_t place = tiff.number(entry.valueAt + i, element);
        putTiffNumber(value + i, element, bigEndian, static_cast<uint32_t>(place + shift));
      }
    }
    NewEntry made{entry.tag,
                  entry.type,
                  entry.count,
                  {value, value + std::min<std::size_t>(4, entry.valueSize)}};
    if (!entry.holdsValue()) {
      made.value.resize(4);
      putTiffNumber(made.value.data(), 4, bigEndian, static_cast<uint32_t>(entry.valueAt + shift));
    }
    entries.push_back(std::move(made));
  }
  return entries;
}

}  // namespace

TiffExif exifOfTiff(Bytes file) {
  const auto tiff = TiffView::of(file);
  const auto first = tiff ? tiff->directoryAt(tiff->first()) : std::nullopt;
  if (!first) {
    return {};
  }
  const auto exif = tiff->below(*first, kExif);
  const auto found = exif ? std::ranges::find(exif->entries, kMakerNote, &TiffEntry::tag)
                          : std::vector<TiffEntry>::const_iterator();
  if (!exif || found == exif->entries.end() || found->valueSize == 0) {
    return {assemble(*tiff, kHeader, nullptr)};
  }
  const std::size_t begin = found->valueAt;
  const std::size_t end = begin + found->valueSize;
  std::vector<uint8_t> note(file.begin() + static_cast<std::ptrdiff_t>(begin),
                            file.begin() + static_cast<std::ptrdiff_t>(end));
  NewEntry maker{kMakerNote, found->type, found->count, {}};
  const auto placed = [&](std::size_t at) {
    maker.value.resize(4);
    putTiffNumber(maker.value.data(), 4, tiff->bigEndian(), static_cast<uint32_t>(at));
    return &maker;
  };
  std::vector<uint8_t> block = assemble(*tiff, kHeader, placed(begin));
  std::size_t at = begin;
  if (begin < block.size() && begin >= kHeader && end + block.size() <= kMostBytes) {
    block = assemble(*tiff, (end + 1) / 2 * 2, &maker);
  } else if (begin < block.size() || end > kMostBytes) {
    at = (block.size() + 1) / 2 * 2;
    if (at + note.size() > kMostBytes || found->holdsValue() ||
        !moveMakerNote(note, tiff->bigEndian(), begin, at)) {
      return {assemble(*tiff, kHeader, nullptr), true};
    }
    block = assemble(*tiff, kHeader, placed(at));
  }
  block.resize(std::max(block.size(), at + note.size()));
  std::ranges::copy(note, block.begin() + static_cast<std::ptrdiff_t>(at));
  return {std::move(block)};
}

std::vector<uint8_t> tiffWithExif(Bytes file, Bytes exif) {
  const auto picture = TiffView::of(file);
  const auto block = TiffView::of(exif);
  const auto first = block ? block->directoryAt(block->first()) : std::nullopt;
  if (!picture || !picture->directoryAt(picture->first()) || !first) {
    return {file.begin(), file.end()};
  }
  std::vector<uint8_t> result(exif.begin(), exif.end());
  result.resize((result.size() + 1) / 2 * 2);
  const std::size_t shift = result.size() - kHeader;
  result.insert(result.end(), file.begin() + kHeader, file.end());

  std::vector<NewEntry> entries = shiftedEntries(*picture, shift, block->bigEndian(), result);
  for (const TiffEntry& entry : first->entries) {
    const bool pointer = entry.tag == kExif || entry.tag == kGps;
    if (entry.valueSize > 0 && (pointer || !isStructure(entry.tag))) {
      std::erase_if(entries, [&](const NewEntry& own) { return own.tag == entry.tag; });
      const Bytes value = exif.subspan(entry.at + 8, 4);
      entries.push_back({entry.tag, entry.type, entry.count, {value.begin(), value.end()}});
    }
  }
  TiffWriter writer(result, block->bigEndian());
  writer.beginAt(writer.append(std::move(entries)));
  return result;
}

}  // namespace alg::tool
