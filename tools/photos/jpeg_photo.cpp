#include "tools/photos/jpeg_photo.h"

#include <fmt/core.h>

#include <new>
#include <utility>

#include "base/image_size.h"
#include "platform/jpeg_reader.h"
#include "platform/jpeg_writer.h"
#include "tools/photos/colour.h"
#include "tools/photos/photo_faults.h"
#include "tools/shell/console.h"

namespace alg::tool {
namespace {

std::string whyUnsupported(const JpegLayout& layout) {
  constexpr uint8_t kLossless = 0xC3;
  constexpr uint8_t kFirstHierarchical = 0xC5;
  if (layout.precision != 8 && layout.frameMarker != kLossless) {
    return fmt::format("a JPEG of {} bits a sample; only those of 8 can be read", layout.precision);
  }
  if (layout.frameMarker == kLossless) {
    return "a lossless JPEG, of a kind that only raw files have; it can't be read";
  }
  if (layout.frameMarker >= kFirstHierarchical && layout.frameMarker <= 0xC7) {
    return "a hierarchical JPEG, which can't be read";
  }
  return fmt::format("a JPEG of {} colour components in a way that can't be read",
                     layout.components);
}

void refuseFault(const JpegReader& reader, const std::filesystem::path& path,
                 const JpegLayout& layout) {
  if (reader.fault() == JpegFault::kNoMemory) {
    throw std::bad_alloc();
  }
  if (reader.fault() != JpegFault::kNone) {
    throw BadInput(whyRefused(path, reader.fault(), reader.info(), layout));
  }
}

/// Damage of a photo that was decoded reduced, in rows of the whole one.
JpegDamage inWhole(JpegDamage damage, int rows, int allRows) {
  if (damage.firstRow > 0) {
    damage.firstRow = static_cast<int>(int64_t{damage.firstRow} * allRows / rows);
  }
  return damage;
}

}  // namespace

Photo decodeUpright(JpegReader& reader, int orientation) {
  constexpr int kRows = 32;
  const int width = reader.width();
  const int height = reader.height();
  const auto rowBytes = static_cast<std::size_t>(width) * kArgbBytes;
  const bool onItsSide = isOnItsSide(orientation);
  Photo photo = blankPhoto(onItsSide ? height : width, onItsSide ? width : height);
  if (orientation == 1) {
    reader.read(photo.pixels.get(), rowBytes, height);
    return photo;
  }
  const Photo band = blankPhoto(width, kRows);
  for (int y = 0; y < height;) {
    const int count = reader.read(band.pixels.get(), rowBytes, kRows);
    if (count == 0) {
      break;  // after a fault
    }
    const Place place = placeUpright(orientation, {0, y, width, count}, width, height);
    uint32_t* const to = wordsOf(photo) + std::ptrdiff_t{place.y} * photo.width + place.x;
    turnUpright(orientation, {band.pixels.get(), static_cast<std::ptrdiff_t>(rowBytes)},
                {reinterpret_cast<uint8_t*>(to), std::ptrdiff_t{kArgbBytes} * photo.width}, width,
                count);
    y += count;
  }
  return photo;
}

std::string whyRefused(const std::filesystem::path& path, JpegFault fault, const JpegInfo& info,
                       const JpegLayout& layout) {
  switch (fault) {
    case JpegFault::kUnsupported:
      return fmt::format("{}: {}", path.string(), whyUnsupported(layout));
    case JpegFault::kTooLarge:
      return tooLarge(path, info.width, info.height);
    case JpegFault::kTooComplex:
      return fmt::format(
          "{}: its {}x{} pixels in several scans would take more than {} MB to decode, or there "
          "are "
          "more than {} scans",
          path.string(), info.width, info.height, kMostJpegWorkBytes / 1'000'000,
          kMostJpegScansLarge);
    default:
      return fmt::format("{}: damaged beyond decoding: no part of the picture is left",
                         path.string());
  }
}

std::string whatIsLost(const JpegDamage& damage, int rows) {
  const std::string why = damage.truncated ? " (the file ends early)" : "";
  if (damage.firstRow > 0) {
    return fmt::format("damaged: {} of {} rows may be lost{}", rows - damage.firstRow, rows, why);
  }
  return fmt::format("damaged: some or all of its {} rows are lost{}", rows, why);
}

PhotoFile decodeJpegPhoto(Bytes file, const std::filesystem::path& path,
                          const PhotoOptions& options, const KeepSide& keepSide) {
  const JpegLayout layout = layoutOf(file);
  JpegBytes input(file);
  JpegReader reader(input);
  const JpegInfo& info = reader.info();
  refuseFault(reader, path, layout);
  Metadata metadata(layout, path);
  const auto transform = transformFor(info.colours, metadata, options, path);
  const JpegRowWork work = rowWork(transform);
  const int side = keepSide ? keepSide(info.width, info.height) : 0;
  reader.start({.reduction = info.reductionFor(side), .rowWork = transform ? &work : nullptr});
  refuseFault(reader, path, layout);
  const int rows = reader.height();
  Photo photo = decodeUpright(reader, metadata.orientation());
  reader.finish();
  refuseFault(reader, path, layout);
  const JpegDamage damage = reader.damage();
  if (damage) {
    refuseOrNote(path, options, whatIsLost(inWhole(damage, rows, info.height), info.height));
  }
  return {.photo = std::move(photo),
          .metadata = std::move(metadata),
          .origin = {.path = path,
                     .coding = codingOf(info),
                     .partial = static_cast<bool>(damage),
                     .width = info.width,
                     .height = info.height},
          .followers = Followers(file, layout)};
}

std::vector<uint8_t> encodeJpegPhoto(const Photo& photo, const JpegCoding& coding, Bytes segments) {
  std::vector<uint8_t> file;
  JpegSink sink([&file](std::span<const uint8_t> bytes) {
    try {
      file.insert(file.end(), bytes.begin(), bytes.end());
      return true;
    } catch (const std::bad_alloc&) {
      return false;
    }
  });
  JpegWriter writer(sink);
  writer.start({.width = photo.width,
                .height = photo.height,
                .quality = coding.quality,
                .tables = coding.tables,
                .sampling = coding.sampling,
                .segments = segments});
  writer.write(photo.pixels.get(), static_cast<std::size_t>(photo.width) * kArgbBytes,
               photo.height);
  const JpegFault fault = writer.finish();
  if (fault == JpegFault::kBadSize) {
    throw UserError(fmt::format("a JPEG has at most {} pixels on a side, not {}x{}", kMostJpegSide,
                                photo.width, photo.height));
  }
  if (fault != JpegFault::kNone) {
    throw std::bad_alloc();  // the one thing that is left
  }
  return file;
}

}  // namespace alg::tool
