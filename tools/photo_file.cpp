#include "tools/photo_file.h"

#include <fmt/format.h>

#include <utility>

#include "tools/failure.h"
#include "tools/files.h"
#include "tools/jpeg_photo.h"
#include "tools/png_photo.h"
#include "tools/vips_library.h"

namespace alg::tool {
namespace {

PhotoFile decode(Bytes file, const std::filesystem::path& path, const PhotoOptions& options,
                 int keepSide) {
  switch (formatOf(file, path)) {
    case PictureFormat::kJpeg:
      return decodeJpegPhoto(file, path, options, keepSide);
    case PictureFormat::kPng:
      return decodePngPhoto(file, path, options);
    case PictureFormat::kWebp:
    case PictureFormat::kTiff:
    case PictureFormat::kHeic:
    case PictureFormat::kAvif:
      return decodeWithVips(formatOf(file, path), file, path, options);
    default:
      throw BadInput(fmt::format("{}: {}not a JPEG, PNG, WebP, TIFF, HEIC or AVIF file",
                                 path.string(), describeOther(file, path)));
  }
}

}  // namespace

PhotoFile readPhoto(const std::filesystem::path& path, const PhotoOptions& options, int keepSide) {
  const std::vector<uint8_t> bytes = readFile(path);
  PhotoFile file = decode(bytes, path, options, keepSide);
  file.photo = upright(std::move(file.photo), file.metadata.orientation());
  return file;
}

std::vector<uint8_t> encodeFor(const std::filesystem::path& path, const PhotoFile& file,
                               const PhotoOptions& options) {
  const Origin& origin = file.origin;
  const Photo& photo = file.photo;
  std::error_code ignored;  // of an output that does not exist yet
  if (origin.damaged && std::filesystem::equivalent(path, origin.path, ignored)) {
    throw BadInput(
        fmt::format("{}: damaged, and never replaced by what is left of it; name "
                    "another output",
                    path.string()));
  }
  const PictureFormat format = formatToWrite(path);
  const int quality = options.quality.value_or(origin.quality);
  const auto blocks = [&](const Metadata::Place& place) {
    return file.metadata.blocks(photo.width, photo.height, origin.path, place);
  };
  switch (format) {
    case PictureFormat::kPng:
      return encodePngPhoto(photo, blocks({.format = "PNG", .exif = true, .comment = true}), path);
    case PictureFormat::kWebp:
      return encodeWithVips(format, photo, quality, blocks({.format = "WebP", .exif = true}), path);
    case PictureFormat::kTiff:
      return encodeWithVips(format, photo, quality, blocks({.format = "TIFF", .photoshop = true}),
                            path);
    default:
      return encodeJpegPhoto(photo, quality, options.sampling.value_or(origin.sampling),
                             file.metadata.segments(photo.width, photo.height, origin.path));
  }
}

void writePhoto(const std::filesystem::path& path, const PhotoFile& file,
                const PhotoOptions& options, WriteOptions how) {
  if (how.source.empty()) {
    how.source = file.origin.path;
  }
  writeFile(path, encodeFor(path, file, options), how);
}

}  // namespace alg::tool
