#include "tools/metadata.h"

#include <fmt/format.h>

#include <algorithm>
#include <exiv2/exiv2.hpp>
#include <mutex>
#include <string>
#include <string_view>

#include "tools/console.h"

namespace alg::tool {
namespace {

constexpr int kUpright = 1;

// Exiv2 keeps tables and a log handler for the whole process. It has little to do beside the codec,
// so one thread at a time is enough.
std::mutex exiv2Mutex;
std::string firstTrouble;  // that Exiv2 has reported since `withExiv2` began

void keepTrouble(int level, const char* text) {
  const std::string_view line(text);
  // Warnings are about quirks of cameras, except those about a part that is lost.
  if (firstTrouble.empty() && (level >= Exiv2::LogMsg::error || line.starts_with("Failed to"))) {
    firstTrouble = line.substr(0, line.find_last_not_of(" .\n") + 1);
  }
}

/// Does `work`, and notes what went wrong.
template <typename Work>
void withExiv2(const std::filesystem::path& path, const Work& work) {
  const std::lock_guard lock(exiv2Mutex);
  Exiv2::LogMsg::setHandler(keepTrouble);
  firstTrouble.clear();
  try {
    work();
  } catch (const std::exception& error) {  // out of memory, too: a file may claim any size
    firstTrouble = error.what();
  }
  if (!firstTrouble.empty()) {
    note(fmt::format("{}: damaged metadata are left out: {}", path.string(), firstTrouble));
  }
}

template <typename Data>
int orientationIn(const Data& data, std::string_view key) {
  for (const auto& datum : data) {
    if (datum.key() == key && datum.count() > 0) {
      const auto value = static_cast<int>(datum.toLong());
      return value >= 1 && value <= 8 ? value : kUpright;
    }
  }
  return 0;
}

/// Corrects what Exif or XMP data say about the picture, by the names of `prefixes`.
template <typename Data>
void describe(Data& data, std::initializer_list<std::string_view> prefixes, uint32_t width,
              uint32_t height) {
  for (auto& datum : data) {
    const std::string name = datum.tagName();
    const std::string key = datum.key();
    const bool about = std::ranges::any_of(
        prefixes, [&](std::string_view prefix) { return key == std::string(prefix) + name; });
    if (about && name == "Orientation") {
      datum = uint16_t{kUpright};
    } else if (about && (name == "PixelXDimension" || name == "ImageWidth")) {
      datum = width;
    } else if (about && (name == "PixelYDimension" || name == "ImageLength")) {
      datum = height;
    }
  }
}

/// Whether an ICC profile is whole and made for colours as the codec delivers them.
bool isForRgb(const std::vector<uint8_t>& profile) {
  constexpr std::size_t kHeader = 128;  // bytes: first the size, at 16 the colour space
  if (profile.size() < kHeader) {
    return false;
  }
  const auto* text = reinterpret_cast<const char*>(profile.data());
  return Exiv2::getULong(profile.data(), Exiv2::bigEndian) == profile.size() &&
         std::string_view(text + 16, 4) == "RGB ";
}

}  // namespace

struct Metadata::Parts {
  Exiv2::ExifData exif;
  Exiv2::XmpData xmp;
  Exiv2::IptcData iptc;
  Exiv2::ByteOrder byteOrder = Exiv2::invalidByteOrder;
  std::string comment;
  std::vector<uint8_t> profile;
  int orientation = kUpright;

  void read(Exiv2::Image& image);
  void dropOldPictures();
  /// The JPEG file with these. What Exiv2 writes anew may no longer fit a segment: unless `all`,
  /// XMP and the comment, which are the largest then, are left out. Throws Exiv2::Error.
  std::vector<uint8_t> addedTo(std::span<const uint8_t> jpeg, int width, int height,
                               bool all) const;
};

void Metadata::Parts::read(Exiv2::Image& image) {
  image.readMetadata();
  exif = image.exifData();
  xmp = image.xmpData();
  iptc = image.iptcData();
  byteOrder = image.byteOrder();
  comment = image.comment();
  if (const Exiv2::DataBuf& bytes = *image.iccProfile(); bytes.size_ > 0) {
    profile.assign(bytes.pData_, bytes.pData_ + bytes.size_);
  }
  const int exifs = orientationIn(exif, "Exif.Image.Orientation");
  orientation = exifs != 0 ? exifs : std::max(kUpright, orientationIn(xmp, "Xmp.tiff.Orientation"));
}

/// Takes out thumbnails, and what refers to XMP beyond the first packet.
void Metadata::Parts::dropOldPictures() {
  Exiv2::ExifThumb(exif).erase();
  for (auto datum = xmp.begin(); datum != xmp.end();) {
    const std::string key = datum->key();
    const bool old = key.starts_with("Xmp.xmp.Thumbnails") || key == "Xmp.xmpNote.HasExtendedXMP";
    datum = old ? xmp.erase(datum) : datum + 1;
  }
}

std::vector<uint8_t> Metadata::Parts::addedTo(std::span<const uint8_t> jpeg, int width, int height,
                                              bool all) const {
  const auto image = Exiv2::ImageFactory::open(jpeg.data(), static_cast<long>(jpeg.size()));
  Exiv2::ExifData newExif = exif;
  describe(newExif, {"Exif.Image.", "Exif.Photo."}, static_cast<uint32_t>(width),
           static_cast<uint32_t>(height));
  image->setByteOrder(byteOrder);
  image->setExifData(newExif);
  image->setIptcData(iptc);
  if (all) {
    Exiv2::XmpData newXmp = xmp;
    describe(newXmp, {"Xmp.tiff.", "Xmp.exif."}, static_cast<uint32_t>(width),
             static_cast<uint32_t>(height));
    image->setXmpData(newXmp);
    image->setComment(comment);
  }
  if (!profile.empty()) {
    Exiv2::DataBuf bytes(profile.data(), static_cast<long>(profile.size()));
    image->setIccProfile(bytes);
  }
  image->writeMetadata();
  Exiv2::BasicIo& io = image->io();
  const auto size = static_cast<std::size_t>(io.size());
  const Exiv2::byte* bytes = io.mmap();
  return {bytes, bytes + size};
}

Metadata::Metadata(std::span<const uint8_t> jpeg, const std::filesystem::path& path) {
  const auto parts = std::make_shared<Parts>();
  withExiv2(path, [&] {
    const auto image = Exiv2::ImageFactory::open(jpeg.data(), static_cast<long>(jpeg.size()));
    parts->read(*image);
    parts->dropOldPictures();
  });
  if (!parts->profile.empty() && !isForRgb(parts->profile)) {
    note(fmt::format("{}: its colour profile is left out: damaged or not for RGB", path.string()));
    parts->profile.clear();
  }
  parts_ = parts;
}

int Metadata::orientation() const { return parts_ ? parts_->orientation : kUpright; }

std::vector<uint8_t> Metadata::addedTo(std::span<const uint8_t> jpeg, int width, int height,
                                       const std::filesystem::path& path) const {
  std::vector<uint8_t> result;
  if (!parts_ || (parts_->exif.empty() && parts_->xmp.empty() && parts_->iptc.empty() &&
                  parts_->comment.empty() && parts_->profile.empty())) {
    return result;
  }
  withExiv2(path, [&] {
    try {
      result = parts_->addedTo(jpeg, width, height, true);
    } catch (const Exiv2::Error& error) {
      keepTrouble(Exiv2::LogMsg::error, error.what());
      result = parts_->addedTo(jpeg, width, height, false);
    }
  });
  return result;
}

}  // namespace alg::tool
