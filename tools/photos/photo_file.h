// Photos from and to files of several formats.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <vector>

#include "platform/jpeg_format.h"
#include "tools/files/files.h"
#include "tools/metadata/metadata.h"
#include "tools/photos/followers.h"
#include "tools/photos/photo.h"
#include "tools/photos/photo_options.h"
#include "tools/photos/picture_format.h"

namespace alg::tool {

/// What of its file has a say in how a photo is written.
struct Origin {
  std::filesystem::path path;
  PictureFormat format = PictureFormat::kJpeg;
  int quality = kDefaultQuality;               ///< of a JPEG: near the one it was written with
  JpegSampling sampling = JpegSampling::k444;  ///< of a JPEG; others have all colours
  bool damaged = false;                        ///< the photo is not all there
  int width = 0;  ///< of the whole photo, upright; the pixels may come reduced
  int height = 0;
};

struct PhotoFile {
  Photo photo;
  Metadata metadata;
  Origin origin;
  Followers followers{};   ///< what the file holds behind the picture
  PictureChange change{};  ///< what has been done to the picture since
};

/// Tells from the size of a photo, as it lies in its file, to which longer side decoding may reduce
/// it; 0: not at all.
using KeepSide = std::function<int(int width, int height)>;

/// Decodes a file of any format that is known and turns the photo upright. Throws UserError.
PhotoFile readPhoto(const std::filesystem::path& path, const PhotoOptions& options = {},
                    const KeepSide& keepSide = {});

/// The bytes of a file in the format that its name asks for. Throws UserError.
/// @param path  of the output; what is left of a damaged photo never replaces it
std::vector<uint8_t> encodeFor(const std::filesystem::path& path, const PhotoFile& file,
                               const PhotoOptions& options);
/// Encodes and writes. Throws UserError.
/// @param how  made from the photo's own file unless it names another
void writePhoto(const std::filesystem::path& path, const PhotoFile& file,
                const PhotoOptions& options, WriteOptions how = {});

}  // namespace alg::tool
