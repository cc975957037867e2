// Photos through effects in bands of rows, from JPEG file to JPEG file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

#include "codec/jpeg_bands.h"
#include "tools/effects/effect_chain.h"
#include "tools/files/files.h"
#include "tools/metadata/jpeg_layout.h"
#include "tools/photos/photo_file.h"
#include "tools/photos/photo_options.h"

namespace alg::tool {

class BandChain;
class JpegFile;

/// A photo that is not held as a whole, or if it has to be turned, packed. Its output has the same
/// bytes as on the way through readPhoto() and writePhoto().
class PhotoStream {
 public:
  /// Opens a photo that can be streamed: a JPEG file whose output is a JPEG, too, through effects
  /// that fit bands. Null for any other, among them those that can't be read.
  static std::unique_ptr<PhotoStream> open(const std::filesystem::path& input,
                                           const std::filesystem::path& output,
                                           const EffectChain& effects, const PhotoOptions& options);
  ~PhotoStream();
  PhotoStream(const PhotoStream&) = delete;
  PhotoStream& operator=(const PhotoStream&) = delete;

  /// An estimate, rather too high, of the bytes that run() takes.
  std::size_t memory() const;

  /// Throws UserError; the output is then as it was.
  /// @param overlap  decodes and encodes on two threads
  void run(EffectChain& effects, const std::filesystem::path& output, const PhotoOptions& options,
           const WriteOptions& how, bool overlap);

 private:
  explicit PhotoStream(const std::filesystem::path& path);

  bool fits(const PhotoOptions& options);
  bool readHead();
  void checkFault(JpegFault fault) const;
  PhotoFile description() const;
  JpegDamage transcode(const std::function<void(Bytes)>& write, const JpegBandOptions& bands,
                       BandChain& chain);

  std::filesystem::path path_;
  std::unique_ptr<JpegFile> file_;
  std::vector<uint8_t> head_;   ///< up to the first scan
  std::vector<uint8_t> bytes_;  ///< the whole file where something follows the picture; else empty
  JpegLayout layout_;           ///< points into one of these
  JpegInfo info_;
  int orientation_ = 1;
};

}  // namespace alg::tool
