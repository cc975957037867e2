#include "tools/metadata/metadata.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "tools/metadata/exif_block.h"
#include "tools/metadata/photoshop_block.h"
#include "tools/metadata/xmp_packet.h"
#include "tools/shell/console.h"

namespace alg::tool {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kJfifBegin = "JFIF\0"sv;
constexpr std::string_view kJfifExtension = "JFXX\0"sv;
constexpr std::string_view kExifBegin = "Exif\0\0"sv;
constexpr std::string_view kXmpBegin = "http://ns.adobe.com/xap/1.0/\0"sv;
constexpr std::string_view kProfileBegin = "ICC_PROFILE\0"sv;
constexpr std::string_view kPhotoshopBegin = "Photoshop 3.0\0"sv;
constexpr std::string_view kMultiPicture = "MPF\0"sv;
constexpr std::string_view kGainMapBegin = "urn:iso:std:iso:ts:21496:-1\0"sv;
constexpr std::string_view kAdobe = "Adobe"sv;

constexpr uint8_t kApp0 = 0xE0, kApp1 = 0xE1, kApp2 = 0xE2, kApp13 = 0xED, kApp14 = 0xEE;
constexpr uint8_t kComment = 0xFE;
constexpr std::size_t kJfifBytes = 14;  // without a thumbnail

enum class Kind : uint8_t { kJfif, kExif, kXmp, kProfile, kPhotoshop, kOther };

struct Piece {
  Kind kind;
  uint8_t marker;
  std::vector<uint8_t> content;  ///< of kJfif, kOther: the segment's; else without what begins it
};

std::vector<uint8_t> toVector(Bytes bytes) { return {bytes.begin(), bytes.end()}; }

/// Whether a segment describes the pictures and not the coding, for which the writer has its own.
bool isCarried(const JpegSegment& segment) {
  const bool app = segment.marker >= kApp0 && segment.marker <= 0xEF;
  return (app && !segment.is(kApp0, kJfifExtension) && !segment.is(kApp14, kAdobe) &&
          !segment.is(kApp2, kMultiPicture)) ||
         segment.marker == kComment;
}

/// A profile is cut into segments, which say their number and how many there are.
constexpr std::size_t kProfilePart = 65533 - kProfileBegin.size() - 2;

/// Whether an ICC profile is whole and made for colours as the codec delivers them.
bool isForRgb(const std::vector<uint8_t>& profile) {
  constexpr std::size_t kHeader = 128;  // bytes: first the size, at 16 the colour space
  if (profile.size() < kHeader) {
    return false;
  }
  const std::size_t size = std::size_t{profile[0]} << 24U | std::size_t{profile[1]} << 16U |
                           std::size_t{profile[2]} << 8U | profile[3];
  return size == profile.size() && asText(profile).substr(16, 4) == "RGB ";
}

void noteLoss(const std::filesystem::path& path, std::string_view what) {
  if (!path.empty()) {
    note(fmt::format("{}: {}", path.string(), what));
  }
}

}  // namespace

struct Metadata::Parts {
  std::vector<Piece> pieces;  ///< in the file's order; of a profile's and Photoshop's segments, all
                              ///< in the place of the first
  std::optional<ExifBlock> exif;
  std::string xmp;
  std::vector<uint8_t> profile;
  int orientation = 1;

  void addJpeg(const JpegLayout& jpeg, const std::filesystem::path& path);
  void add(Kind kind, uint8_t marker, Bytes content);
  void addProfilePart(Bytes content, std::size_t& expected);
  void understand(const std::filesystem::path& path);
  std::string xmpFor(int width, int height, const Behind& behind) const;
  void append(std::vector<uint8_t>& to, const Piece& piece, int width, int height,
              const std::filesystem::path& path, const Behind& behind) const;
};

void Metadata::Parts::add(Kind kind, uint8_t marker, Bytes content) {
  const auto earlier = std::ranges::find(pieces, kind, &Piece::kind);
  const bool joined = kind == Kind::kPhotoshop || kind == Kind::kProfile;
  if (joined && earlier != pieces.end()) {
    earlier->content.insert(earlier->content.end(), content.begin(), content.end());
  } else if (earlier != pieces.end() && (kind == Kind::kExif || kind == Kind::kXmp)) {
    // A second one is not what readers go by.
    pieces.push_back({Kind::kOther, marker,
                      toVector(kind == Kind::kExif ? asBytes(kExifBegin) : asBytes(kXmpBegin))});
    auto& whole = pieces.back().content;
    whole.insert(whole.end(), content.begin(), content.end());
  } else {
    pieces.push_back({kind, marker, toVector(content)});
  }
}

void Metadata::Parts::addProfilePart(Bytes content, std::size_t& expected) {
  // Out of order or incomplete: then it does not have the size that it says.
  if (content.size() > 2 && content[0] == expected + 1) {
    ++expected;
    add(Kind::kProfile, kApp2, content.subspan(2));
  } else {
    add(Kind::kProfile, kApp2, {});
  }
}

void Metadata::Parts::addJpeg(const JpegLayout& jpeg, const std::filesystem::path& path) {
  std::size_t profileParts = 0;
  for (const JpegSegment& segment : jpeg.segments) {
    const Bytes content = segment.content;
    if (!isCarried(segment)) {
      continue;
    }
    if (segment.is(kApp0, kJfifBegin) && content.size() >= kJfifBytes) {
      add(Kind::kJfif, kApp0, content.first(kJfifBytes));
    } else if (segment.is(kApp1, kExifBegin)) {
      add(Kind::kExif, kApp1, content.subspan(kExifBegin.size()));
    } else if (segment.is(kApp1, kXmpBegin)) {
      add(Kind::kXmp, kApp1, content.subspan(kXmpBegin.size()));
    } else if (segment.is(kApp2, kProfileBegin)) {
      addProfilePart(content.subspan(kProfileBegin.size()), profileParts);
    } else if (segment.is(kApp13, kPhotoshopBegin)) {
      add(Kind::kPhotoshop, kApp13, content.subspan(kPhotoshopBegin.size()));
    } else {
      add(Kind::kOther, segment.marker, content);
    }
  }
  understand(path);
}

/// Takes from the pieces what has to be known of them, and drops those that are broken.
void Metadata::Parts::understand(const std::filesystem::path& path) {
  std::erase_if(pieces, [&](Piece& piece) {
    if (piece.kind == Kind::kExif) {
      exif = ExifBlock::parse(piece.content);
      if (!exif) {
        noteLoss(path, "its Exif is left out: damaged");
        return true;
      }
      orientation = std::max(orientation, exif->orientation());
      exif->dropThumbnail();
    } else if (piece.kind == Kind::kXmp) {
      const auto packet = XmpPacket::parse(asText(piece.content));
      if (!packet) {
        noteLoss(path, "its XMP is left out: damaged");
        return true;
      }
      xmp = asText(piece.content);
    } else if (piece.kind == Kind::kProfile) {
      if (!isForRgb(piece.content)) {
        noteLoss(path, "its colour profile is left out: damaged or not for RGB");
        return true;
      }
      profile = std::move(piece.content);
    } else if (piece.kind == Kind::kJfif) {
      piece.content[kJfifBytes - 2] = piece.content[kJfifBytes - 1] = 0;  // no thumbnail
    } else if (piece.kind == Kind::kPhotoshop) {
      dropThumbnails(piece.content);
    }
    return false;
  });
  if ((!exif || exif->orientation() == 0) && !xmp.empty()) {
    orientation = std::max(1, XmpPacket::parse(xmp)->orientation());
  }
}

std::string Metadata::Parts::xmpFor(int width, int height, const Behind& behind) const {
  if (xmp.empty()) {
    return {};
  }
  std::optional<XmpPacket> packet = XmpPacket::parse(xmp);
  packet->describe(static_cast<uint32_t>(width), static_cast<uint32_t>(height));
  packet->dropThumbnails();
  packet->describeFollowers(behind.gainMapBytes, behind.others);
  return packet->changed() ? packet->text() : xmp;
}

void Metadata::Parts::append(std::vector<uint8_t>& to, const Piece& piece, int width, int height,
                             const std::filesystem::path& path, const Behind& behind) const {
  const auto inParts = [&](std::string_view begin, Bytes content, std::size_t most) {
    const std::size_t parts = (content.size() + most - 1) / most;
    for (std::size_t i = 0; i < parts; ++i) {
      std::string head(begin);
      if (piece.kind == Kind::kProfile) {
        head += {static_cast<char>(i + 1), static_cast<char>(parts)};
      }
      const std::size_t at = i * most;
      appendSegment(to, piece.marker, head,
                    content.subspan(at, std::min(most, content.size() - at)));
    }
  };
  bool fits = true;
  if (piece.kind == Kind::kExif) {
    ExifBlock block = *exif;
    block.describe(static_cast<uint32_t>(width), static_cast<uint32_t>(height));
    fits = appendSegment(to, kApp1, kExifBegin, block.bytes());
  } else if (piece.kind == Kind::kXmp) {
    fits = appendSegment(to, kApp1, kXmpBegin, asBytes(xmpFor(width, height, behind)));
  } else if (piece.kind == Kind::kProfile) {
    inParts(kProfileBegin, profile, kProfilePart);
  } else if (piece.kind == Kind::kPhotoshop) {
    inParts(kPhotoshopBegin, piece.content, 65533 - kPhotoshopBegin.size());
  } else {
    fits = appendSegment(to, piece.marker, {}, piece.content);
  }
  if (!fits) {
    noteLoss(path, fmt::format("its {} is left out: larger than a JPEG segment",
                               piece.kind == Kind::kExif  ? "Exif"
                               : piece.kind == Kind::kXmp ? "XMP"
                                                          : "comment"));
  }
}

Metadata::Metadata(const JpegLayout& jpeg, const std::filesystem::path& path) {
  const auto parts = std::make_shared<Parts>();
  parts->addJpeg(jpeg, path);
  parts_ = parts;
}

Metadata::Metadata(const MetadataBlocks& blocks, const std::filesystem::path& path) {
  const auto parts = std::make_shared<Parts>();
  const auto add = [&](Kind kind, uint8_t marker, Bytes content) {
    if (!content.empty()) {
      parts->add(kind, marker, content);
    }
  };
  add(Kind::kExif, kApp1, blocks.exif);
  add(Kind::kXmp, kApp1, asBytes(blocks.xmp));
  add(Kind::kProfile, kApp2, blocks.profile);
  add(Kind::kPhotoshop, kApp13, blocks.photoshop);
  add(Kind::kOther, kComment, asBytes(blocks.comment));
  parts->understand(path);
  parts_ = parts;
}

int Metadata::orientation() const { return parts_ ? parts_->orientation : 1; }

const std::vector<uint8_t>& Metadata::profile() const {
  static const std::vector<uint8_t> kNone;
  return parts_ ? parts_->profile : kNone;
}

Metadata Metadata::withOrientation(int orientation) const {
  const auto parts = parts_ ? std::make_shared<Parts>(*parts_) : std::make_shared<Parts>();
  parts->orientation = orientation;
  Metadata result;
  result.parts_ = parts;
  return result;
}

Metadata Metadata::withProfile(std::vector<uint8_t> profile) const {
  const auto parts = parts_ ? std::make_shared<Parts>(*parts_) : std::make_shared<Parts>();
  std::erase_if(parts->pieces, [](const Piece& piece) { return piece.kind == Kind::kProfile; });
  if (!profile.empty()) {
    parts->pieces.push_back({Kind::kProfile, kApp2, {}});
  }
  parts->profile = std::move(profile);
  Metadata result;
  result.parts_ = parts;
  return result;
}

std::vector<uint8_t> Metadata::segments(int width, int height, const std::filesystem::path& path,
                                        const Behind& behind) const {
  std::vector<uint8_t> result;
  if (parts_ == nullptr || parts_->pieces.empty()) {
    return result;
  }
  const Kind first = parts_->pieces.front().kind;
  if (first != Kind::kJfif && first != Kind::kExif) {
    constexpr uint8_t kOnePixelIsSquare[] = {'J', 'F', 'I', 'F', 0, 1, 1, 0, 0, 1, 0, 1, 0, 0};
    appendSegment(result, kApp0, {}, kOnePixelIsSquare);
  }
  for (const Piece& piece : parts_->pieces) {
    const bool claim = asText(piece.content).starts_with(kGainMapBegin);
    if (!claim || behind.gainMapBytes > 0) {
      parts_->append(result, piece, width, height, path, behind);
    }
  }
  return result;
}

MetadataBlocks Metadata::blocks(int width, int height, const std::filesystem::path& path,
                                const Place& place) const {
  MetadataBlocks blocks;
  if (!parts_) {
    return blocks;
  }
  std::vector<std::string_view> lost;
  const auto loses = [&](bool has, const char* what) {
    if (has && std::ranges::count(lost, what) == 0) {
      lost.emplace_back(what);
    }
  };
  for (const Piece& piece : parts_->pieces) {
    if (piece.kind == Kind::kExif && place.exif) {
      ExifBlock block = *parts_->exif;
      block.describe(static_cast<uint32_t>(width), static_cast<uint32_t>(height));
      blocks.exif = block.bytes();
    } else if (piece.kind == Kind::kXmp) {
      blocks.xmp = parts_->xmpFor(width, height, {});
    } else if (piece.kind == Kind::kProfile) {
      blocks.profile = parts_->profile;
    } else if (piece.kind == Kind::kPhotoshop) {
      blocks.photoshop = place.photoshop ? piece.content : std::vector<uint8_t>();
      loses(!place.photoshop, "IPTC and Photoshop's data");
    } else if (piece.marker == kComment && place.comment) {
      blocks.comment = asText(piece.content);
    } else if (piece.kind != Kind::kJfif) {
      loses(piece.kind == Kind::kExif, "Exif");
      loses(piece.marker == kComment, "comment");
      loses(piece.kind == Kind::kOther && piece.marker != kComment, "segments of its maker's");
    }
  }
  if (!lost.empty()) {
    noteLoss(path,
             fmt::format("a {} file has no place for its {}", place.format, fmt::join(lost, ", ")));
  }
  return blocks;
}

}  // namespace alg::tool
