#include "tools/photos/photo_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "tools/files/files.h"
#include "tools/photos/colour.h"
#include "tools/photos/jpeg_photo.h"
#include "tools/photos/photo_faults.h"
#include "tools/photos/png_photo.h"
#include "tools/photos/vips_library.h"
#include "tools/shell/console.h"
#include "tools/shell/failure.h"

namespace alg::tool {
namespace {

PhotoFile decode(Bytes file, const std::filesystem::path& path, const PhotoOptions& options,
                 const KeepSide& keepSide) {
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

/// What of a file goes on behind the picture, with a note of what does not.
Followers followersOf(const PhotoFile& file, const PhotoOptions& options) {
  if (options.plain) {
    return {};
  }
  Followers followers = file.followers;
  const bool hadMap = followers.hasGainMap();
  const std::string path = file.origin.path.string();
  if (followers.hasViews()) {
    note(fmt::format("{}: its other views are left out", path));
  }
  followers.follow(file.change);
  if (hadMap && !followers.hasGainMap()) {
    note(fmt::format("{}: its gain map (HDR) is left out: {}", path,
                     file.change.moved ? "the pixels have moved" : "it can't be decoded"));
  }
  return followers;
}

std::vector<uint8_t> encodeWithFollowers(const PhotoFile& file, const PhotoOptions& options,
                                         int quality) {
  const Photo& photo = file.photo;
  const Followers followers = followersOf(file, options);
  std::vector<uint8_t> segments = file.metadata.segments(
      photo.width, photo.height, file.origin.path, {followers.gainMapBytes(), followers.hasRest()});
  const std::vector<uint8_t> index = followers.index();
  segments.insert(segments.end(), index.begin(), index.end());
  std::vector<uint8_t> bytes =
      encodeJpegPhoto(photo, quality, options.sampling.value_or(file.origin.sampling), segments);
  const auto place = index.empty()
                         ? bytes.begin()
                         : std::search(bytes.begin(), bytes.end(), index.begin(), index.end());
  followers.appendTo(bytes, static_cast<std::size_t>(place - bytes.begin()));
  return bytes;
}

}  // namespace

PhotoFile readPhoto(const std::filesystem::path& path, const PhotoOptions& options,
                    const KeepSide& keepSide) {
  const std::vector<uint8_t> bytes = readFile(path);
  PhotoFile file = decode(bytes, path, options, keepSide);
  const int orientation = file.metadata.orientation();
  Origin& origin = file.origin;
  if (origin.width == 0) {
    origin.width = file.photo.width;
    origin.height = file.photo.height;
  }
  if (isOnItsSide(orientation)) {
    std::swap(origin.width, origin.height);
  }
  file.photo = upright(std::move(file.photo), orientation);
  file.change.orientation = orientation;
  if (options.toSrgb && !file.metadata.profile().empty()) {
    if (!convertColours(file.photo, file.metadata.profile(), {})) {
      throw BadInput(fmt::format("{}: its colour profile can't be used", path.string()));
    }
    file.metadata = file.metadata.withProfile({});
  }
  return file;
}

std::vector<uint8_t> encodeFor(const std::filesystem::path& path, const PhotoFile& file,
                               const PhotoOptions& options) {
  const Origin& origin = file.origin;
  const Photo& photo = file.photo;
  if (origin.damaged) {
    neverOverDamaged(origin.path, path);
  }
  const PictureFormat format = formatToWrite(path);
  const int quality = options.quality.value_or(origin.quality);
  const auto blocks = [&](const Metadata::Place& place) {
    return file.metadata.blocks(photo.width, photo.height, origin.path, place);
  };
  if (format != PictureFormat::kJpeg && !file.followers.empty() && !options.plain) {
    note(fmt::format("{}: a {} file has no place for its gain map, video or other pictures",
                     origin.path.string(), nameOf(format)));
  }
  switch (format) {
    case PictureFormat::kPng:
      return encodePngPhoto(photo, blocks({.format = "PNG", .exif = true, .comment = true}), path);
    case PictureFormat::kWebp:
      return encodeWithVips(format, photo, quality, blocks({.format = "WebP", .exif = true}), path);
    case PictureFormat::kTiff:
      return encodeWithVips(format, photo, quality, blocks({.format = "TIFF", .photoshop = true}),
                            path);
    default:
      return encodeWithFollowers(file, options, quality);
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
