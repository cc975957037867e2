// The table of effect names.
#pragma once

#include <cstdint>
#include <span>

namespace alg {

struct EffectTableEntry {
  /// What a missing or undecodable picture does, beside turning the effect into kNoEffect.
  enum class OnMissingPicture {
    kSilent,
    kLog,             ///< says so in the log
    kKeepLastPicture  ///< reports the picture that was decoded last, if there is one
  };

  const char* name;
  int32_t effectId;
  int32_t stripCount;
  const char* portraitPicture;   ///< file name; null for an effect without a picture
  const char* landscapePicture;  ///< for frames wider than tall
  OnMissingPicture onMissing = OnMissingPicture::kSilent;
  bool flagsLandscape = false;  ///< effectFlag is -1 on a landscape frame
};

/// The identifier of unknown names and missing pictures.
inline constexpr int32_t kNoEffect = 1000;

/// Where the application installs the pictures, on the device.
inline constexpr char kPictureFolder[] = "/data/data/com.android.camera/effect/";

/// All names, in the order of their identifiers.
std::span<const EffectTableEntry> effectTable();

}  // namespace alg
