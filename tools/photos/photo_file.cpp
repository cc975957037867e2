#include "tools/photos/photo_file.h"

#include <fmt/core.h>

#include <algorithm>
#include <utility>

#include "tools/files/files.h"
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

std::vector<uint8_t> encodeWithFollowers(const PhotoFile& file, const PhotoOptions& options) {
  const JpegSurroundings around = surroundingsOf(file, options);
  std::vector<uint8_t> bytes =
      encodeJpegPhoto(file.photo, options.coding(file.origin.coding), around.segments);
  around.complete(bytes);
  return bytes;
}

}  // namespace

void JpegSurroundings::complete(std::vector<uint8_t>& file) const {
  const auto place = index.empty()
                         ? file.begin()
                         : std::search(file.begin(), file.end(), index.begin(), index.end());
  followers.appendTo(file, static_cast<std::size_t>(place - file.begin()));
}

JpegSurroundings surroundingsOf(const PhotoFile& file, const PhotoOptions& options) {
  JpegSurroundings around{.segments = {}, .index = {}, .followers = followersOf(file, options)};
  const Followers& followers = around.followers;
  around.segments = file.metadata.segments(file.photo.width, file.photo.height, file.origin.path,
                                           {followers.gainMapBytes(), followers.hasRest()});
  around.index = followers.index();
  around.segments.insert(around.segments.end(), around.index.begin(), around.index.end());
  return around;
}

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
  if (file.origin.format != PictureFormat::kJpeg) {
    file.photo = upright(std::move(file.photo), orientation);
  }
  file.change.orientation = orientation;
  return file;
}

std::vector<uint8_t> encodeFor(const std::filesystem::path& path, const PhotoFile& file,
                               const PhotoOptions& options) {
  const Origin& origin = file.origin;
  const Photo& photo = file.photo;
  if (origin.partial) {
    neverOverWhole(origin.path, path);
  }
  const PictureFormat format = formatToWrite(path);
  const int quality = options.coding(origin.coding).quality;
  const auto blocks = [&](const Metadata::Place& place) {
    return file.metadata.blocks(photo.width, photo.height, origin.path, place);
  };
  if (format != PictureFormat::kJpeg && !file.followers.empty() && !options.plain) {
    note(fmt::format("{}: a {} file has no place for its gain map, video or other pictures",
                     origin.path.string(), nameOf(format)));
  }
  switch (format) {
    case PictureFormat::kPng:
      return encodePngPhoto(
          photo, blocks({.format = "PNG", .exif = true, .comment = true, .texts = true}), path);
    case PictureFormat::kWebp:
      return encodeWithVips(format, photo, quality, blocks({.format = "WebP", .exif = true}), path);
    case PictureFormat::kTiff:
      return encodeWithVips(format, photo, quality,
                            blocks({.format = "TIFF", .exif = true, .photoshop = true}), path);
    default:
      return encodeWithFollowers(file, options);
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
