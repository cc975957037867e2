#include "tools/photos/jpeg_photo.h"

#include <fmt/format.h>

#include <new>

#include "base/image_size.h"
#include "platform/jpeg_reader.h"
#include "platform/jpeg_writer.h"
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

void decodeRows(JpegReader& reader, const std::filesystem::path& path, const JpegLayout& layout,
                Photo& photo) {
  const auto stride = static_cast<std::size_t>(photo.width) * kArgbBytes;
  reader.read(photo.pixels.get(), stride, photo.height);
  if (const JpegFault fault = reader.finish(); fault != JpegFault::kNone) {
    if (fault == JpegFault::kNoMemory) {
      throw std::bad_alloc();
    }
    throw BadInput(whyRefused(path, fault, reader.info(), layout));
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
  const int side = keepSide ? keepSide(info.width, info.height) : 0;
  reader.start({.reduction = info.reductionFor(side)});
  if (reader.fault() == JpegFault::kNoMemory) {
    throw std::bad_alloc();
  }
  if (reader.fault() != JpegFault::kNone) {
    throw BadInput(whyRefused(path, reader.fault(), reader.info(), layout));
  }
  Photo photo = blankPhoto(reader.width(), reader.height());
  decodeRows(reader, path, layout, photo);
  const JpegDamage damage = reader.damage();
  if (damage) {
    refuseOrNote(path, options,
                 whatIsLost(inWhole(damage, photo.height, info.height), info.height));
  }
  return {.photo = std::move(photo),
          .metadata = Metadata(layout, path),
          .origin = {.path = path,
                     .quality = reader.info().quality,
                     .sampling = reader.info().sampling,
                     .damaged = static_cast<bool>(damage),
                     .width = info.width,
                     .height = info.height},
          .followers = Followers(file, layout)};
}

std::vector<uint8_t> encodeJpegPhoto(const Photo& photo, int quality, JpegSampling sampling,
                                     Bytes segments) {
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
                .quality = quality,
                .sampling = sampling,
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
