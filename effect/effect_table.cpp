#include "effect/effect_table.h"

#include <android/log.h>

#include <algorithm>
#include <string_view>

#include "libalgorithm/effect_pipeline.h"
#include "libalgorithm/pretty_filters.h"
#include "platform/bitmap.h"
#include "platform/picture_cache.h"

namespace alg {
namespace {

constexpr char kTag[] = "KAVRO_Effect_Function";
using OnMissing = EffectTableEntry::OnMissingPicture;

/// It has a picture, but doesn't look at it.
void beautiful(unsigned char* src, unsigned char* dst, int width, int height) {
  PrettyBeautiful(src, dst, width, height, nullptr, 0, 0);
}

constexpr EffectTableEntry kTable[] = {
    {"LOMO_effect", 0, 4, "effect_lomo.png", "effect_lomo.png", OnMissing::kLog},
    {"cross-process", 1, 4},
    {"fill-light", 2, 1},
    {"temperature", 3, 4},
    {"gray-scale", 4, 4},
    {.name = "miniature", .effectId = 5, .stripCount = 4, .flagsLandscape = true},
    {"nature", 6, 4},
    {"fish-eye", 7, 1},
    {"sepia", 8, 4},
    {"pink", 9, 4},
    {"summer_effect", 10, 4},
    {"Ocean_effect", 11, 4},
    {"negative-effect", 12, 4},
    {"sketch", 13, 4},
    {"newsketch_effect", 14, 4, "red2green.png", "red2green_r.png", OnMissing::kKeepLastPicture},
    {"area_effect", 15, 1},
    {"rotate_effect", 16, 1},
    {"mosaic_effect", 17, 4},
    {"emboss_effect", 18, 1},
    {"colorpaint_effect", 19, 1},
    {.name = "PrettySweet", .effectId = 20, .stripCount = 4, .filter = PrettySweet},
    {.name = "PrettyNature", .effectId = 21, .stripCount = 4, .filter = PrettyNature},
    {.name = "PrettyBlue", .effectId = 22, .stripCount = 4, .filter = PrettyBlue},
    {.name = "PrettyMoonlight", .effectId = 23, .stripCount = 4, .filter = PrettyMoonlight},
    {.name = "PrettyWhiteDew", .effectId = 24, .stripCount = 4, .filter = PrettyWhiteDew},
    {.name = "PrettyBeautiful",
     .effectId = 25,
     .stripCount = 4,
     .portraitPicture = "sucai0.png",
     .landscapePicture = "sucai0_r.png",
     .filter = beautiful},
    {.name = "PrettyPink",
     .effectId = 26,
     .stripCount = 4,
     .portraitPicture = "sucai0.png",
     .landscapePicture = "sucai0_r.png",
     .softLight = pinkEffect},
    {.name = "PrettyJapan",
     .effectId = 27,
     .stripCount = 4,
     .portraitPicture = "sucai3.png",
     .landscapePicture = "sucai3.png",
     .softLight = japanEffect},
};

PictureCache pictures;

void reportPicture(EffectTypeInfo& info) {
  info.overlay = bitmap_effect.pixels.get();
  info.overlayWidth = bitmap_effect.width;
  info.overlayHeight = bitmap_effect.height;
}

/// Returns whether the picture was decoded.
bool loadPicture(const EffectTableEntry& entry, bool landscape, PictureUse use,
                 EffectTypeInfo& info) {
  const char* name = landscape ? entry.landscapePicture : entry.portraitPicture;
  const bool decoded = pictures.load(name, use, bitmap_effect);
  // Each strip gets a band of whole picture rows: a picture with fewer rows than that is of no use.
  if (decoded && bitmap_effect.height >= entry.stripCount) {
    if (bitmap_effect.pixels) {
      reportPicture(info);
    }
    return true;
  }
  info.effectId = kNoEffect;
  if (entry.onMissing == OnMissing::kLog) {
    __android_log_print(ANDROID_LOG_VERBOSE, kTag,
                        "brennix  cannot get the  %d effect picture     ", kNoEffect);
  } else if (entry.onMissing == OnMissing::kKeepLastPicture) {
    reportPicture(info);
  }
  return decoded;
}

/// Looks a name up, for an outside caller or for a run; says whether a picture was decoded for it.
EffectTypeInfo lookUp(const char* name, int width, int height, bool forRun, bool& hasPicture) {
  __android_log_print(ANDROID_LOG_VERBOSE, kTag, " brennix process  effect %s ", name);
  hasPicture = false;
  EffectTypeInfo info{nullptr, 0, 0, kNoEffect, 4, 0};
  const auto* entry = std::ranges::find(kTable, std::string_view(name),
                                        [](const auto& e) { return std::string_view(e.name); });
  if (entry == std::end(kTable)) {
    return info;
  }
  const bool landscape = width > height;
  info.effectId = entry->effectId;
  info.stripCount = entry->stripCount;
  info.effectFlag = entry->flagsLandscape && landscape ? -1 : 0;
  if (entry->portraitPicture != nullptr) {
    const auto inRun = entry->softLight != nullptr ? PictureUse::kRun : PictureUse::kVerdict;
    hasPicture = loadPicture(*entry, landscape, forRun ? inRun : PictureUse::kKeep, info);
  }
  return info;
}

}  // namespace

std::span<const EffectTableEntry> effectTable() { return kTable; }

EffectOfRun::EffectOfRun(const char* name, int width, int height)
    : info_(lookUp(name, width, height, true, hasPicture_)) {}

EffectOfRun::~EffectOfRun() {
  if (hasPicture_ && PictureCache::isLarge(bitmap_effect)) {
    bitmap_effect = {};
  }
}

}  // namespace alg

EffectTypeInfo effectTypeInit(const char* name, int width, int height) {
  bool hasPicture = false;
  return alg::lookUp(name, width, height, false, hasPicture);
}
