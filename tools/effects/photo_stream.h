// Photos through effects in bands of rows, from JPEG file to JPEG file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

#include "platform/jpeg_format.h"
#include "tools/effects/effect_chain.h"
#include "tools/files/files.h"
#include "tools/metadata/jpeg_layout.h"
#include "tools/photos/photo_options.h"

namespace alg::tool {

class JpegFile;

/// A photo that is never held as a whole. Its output has the same bytes as on the way through
/// readPhoto() and writePhoto().
class PhotoStream {
 public:
  /// Opens a photo that can be streamed: an upright JPEG file in one scan, grey or RGB, with
  /// nothing behind the picture and colours that stay, whose output is a JPEG, too, through effects
  /// that fit bands. Null for any other, among them those that can't be read.
  static std::unique_ptr<PhotoStream> open(const std::filesystem::path& input,
                                           const std::filesystem::path& output,
                                           const EffectChain& effects, const PhotoOptions& options);
  ~PhotoStream();
  PhotoStream(const PhotoStream&) = delete;
  PhotoStream& operator=(const PhotoStream&) = delete;

  /// An estimate, rather too high, of what run() takes.
  static constexpr std::size_t kMemory = std::size_t{24} << 20U;

  /// Throws UserError; the output is then as it was.
  /// @param overlap  decodes and encodes on two threads
  void run(EffectChain& effects, const std::filesystem::path& output, const PhotoOptions& options,
           const WriteOptions& how, bool overlap);

 private:
  explicit PhotoStream(const std::filesystem::path& path);

  bool fits();
  void checkFault(JpegFault fault) const;

  std::filesystem::path path_;
  std::unique_ptr<JpegFile> file_;
  std::vector<uint8_t> head_;  ///< up to the first scan
  JpegLayout layout_;          ///< points into it
  JpegInfo info_;
};

}  // namespace alg::tool
