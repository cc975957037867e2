// The table of effect names.
#pragma once

#include <cstdint>
#include <span>

#include "libalgorithm/effect_pipeline.h"
#include "pretty/soft_light.h"

namespace alg {

using SimpleFilter = void(unsigned char* src, unsigned char* dst, int width, int height);

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
  const char* portraitPicture = nullptr;   ///< file name; null for an effect without a picture
  const char* landscapePicture = nullptr;  ///< for frames wider than tall
  OnMissingPicture onMissing = OnMissingPicture::kSilent;
  bool flagsLandscape = false;  ///< effectFlag is -1 on a landscape frame
  // What the road runs; a name with neither passes the frame through.
  SimpleFilter* filter = nullptr;
  const SoftLightEffect& (*softLight)() = nullptr;  // of an effect that looks at its picture

  bool changesFrame() const { return filter != nullptr || softLight != nullptr; }
};

/// The identifier of unknown names and missing pictures.
inline constexpr int32_t kNoEffect = 1000;

/// All names, in the order of their identifiers.
std::span<const EffectTableEntry> effectTable();

/// An effect looked up for one run, as effectTypeInit() does it, but for two things: the overlay of
/// an effect that never looks at it may be null, and a picture that is too large to be kept is
/// freed, with bitmap_effect, when this goes.
class EffectOfRun {
 public:
  EffectOfRun(const char* name, int width, int height);
  ~EffectOfRun();
  EffectOfRun(const EffectOfRun&) = delete;
  EffectOfRun& operator=(const EffectOfRun&) = delete;

  const EffectTypeInfo& info() const { return info_; }

 private:
  bool hasPicture_ = false;  // set when info_ is
  EffectTypeInfo info_;
};

}  // namespace alg
