// The options of all commands that read or write photos.
#pragma once

#include <optional>

#include "platform/jpeg_format.h"
#include "tools/shell/cli_fwd.h"

namespace alg::tool {

inline constexpr int kDefaultQuality = 92;

/// How a JPEG file is coded.
struct JpegCoding {
  int quality = kDefaultQuality;
  JpegTables tables = {};                      ///< instead of the quality's, if they are known
  JpegSampling sampling = JpegSampling::k444;  ///< formats other than JPEG have all colours
};

inline JpegCoding codingOf(const JpegInfo& info) {
  return {.quality = info.quality, .tables = info.tables, .sampling = info.sampling};
}

struct PhotoOptions {
  bool toSrgb = false;       ///< colours converted from the photo's profile
  bool plain = false;        ///< without gain maps, videos and other pictures behind the photo
  bool keepDamaged = false;  ///< go on with what is left of a damaged photo
  std::optional<int> quality = kDefaultQuality;  ///< 0 to 100; none: the source's
  std::optional<JpegSampling> sampling;          ///< none: the source's

  /// Of the output, from the source's.
  JpegCoding coding(const JpegCoding& source) const {
    const JpegSampling chosen = sampling.value_or(source.sampling);
    return quality ? JpegCoding{.quality = *quality, .sampling = chosen}
                   : JpegCoding{source.quality, source.tables, chosen};
  }
};

/// Adds --damaged and --to-srgb. Parsing fills the options, which must outlive it.
void addReadOptions(CLI::App& command, PhotoOptions& options);
/// Adds --quality, --sampling and --plain.
void addWriteOptions(CLI::App& command, PhotoOptions& options);

}  // namespace alg::tool
