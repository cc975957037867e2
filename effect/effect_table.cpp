#include "effect/effect_table.h"

#include <android/log.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "libalgorithm/effect_pipeline.h"
#include "platform/bitmap.h"

namespace alg {
namespace {

constexpr char kTag[] = "KAVRO_Effect_Function";
using OnMissing = EffectTableEntry::OnMissingPicture;

constexpr EffectTableEntry kTable[] = {
    {"LOMO_effect", 0, 4, "effect_lomo.png", "effect_lomo.png", OnMissing::kLog},
    {"cross-process", 1, 4, nullptr, nullptr},
    {"fill-light", 2, 1, nullptr, nullptr},
    {"temperature", 3, 4, nullptr, nullptr},
    {"gray-scale", 4, 4, nullptr, nullptr},
    {"miniature", 5, 4, nullptr, nullptr, OnMissing::kSilent, true},
    {"nature", 6, 4, nullptr, nullptr},
    {"fish-eye", 7, 1, nullptr, nullptr},
    {"sepia", 8, 4, nullptr, nullptr},
    {"pink", 9, 4, nullptr, nullptr},
    {"summer_effect", 10, 4, nullptr, nullptr},
    {"Ocean_effect", 11, 4, nullptr, nullptr},
    {"negative-effect", 12, 4, nullptr, nullptr},
    {"sketch", 13, 4, nullptr, nullptr},
    {"newsketch_effect", 14, 4, "red2green.png", "red2green_r.png", OnMissing::kKeepLastPicture},
    {"area_effect", 15, 1, nullptr, nullptr},
    {"rotate_effect", 16, 1, nullptr, nullptr},
    {"mosaic_effect", 17, 4, nullptr, nullptr},
    {"emboss_effect", 18, 1, nullptr, nullptr},
    {"colorpaint_effect", 19, 1, nullptr, nullptr},
    {"PrettySweet", 20, 4, nullptr, nullptr},
    {"PrettyNature", 21, 4, nullptr, nullptr},
    {"PrettyBlue", 22, 4, nullptr, nullptr},
    {"PrettyMoonlight", 23, 4, nullptr, nullptr},
    {"PrettyWhiteDew", 24, 4, nullptr, nullptr},
    {"PrettyBeautiful", 25, 4, "sucai0.png", "sucai0_r.png"},
    {"PrettyPink", 26, 4, "sucai0.png", "sucai0_r.png"},
    {"PrettyJapan", 27, 4, "sucai3.png", "sucai3.png"},
};

void reportPicture(EffectTypeInfo& info) {
  info.overlay = bitmap_effect.pixels.get();
  info.overlayWidth = bitmap_effect.width;
  info.overlayHeight = bitmap_effect.height;
}

void loadPicture(const EffectTableEntry& entry, bool landscape, EffectTypeInfo& info) {
  const std::string path =
      std::string(kPictureFolder) + (landscape ? entry.landscapePicture : entry.portraitPicture);
  // Each strip gets a band of whole picture rows: a picture with fewer rows than that is of no use.
  if (decodePngFile(path.c_str(), bitmap_effect) && bitmap_effect.height >= entry.stripCount) {
    reportPicture(info);
    return;
  }
  info.effectId = kNoEffect;
  if (entry.onMissing == OnMissing::kLog) {
    __android_log_print(ANDROID_LOG_VERBOSE, kTag,
                        "brennix  cannot get the  %d effect picture     ", kNoEffect);
  } else if (entry.onMissing == OnMissing::kKeepLastPicture) {
    reportPicture(info);
  }
}

}  // namespace

std::span<const EffectTableEntry> effectTable() { return kTable; }

}  // namespace alg

EffectTypeInfo effectTypeInit(const char* name, int width, int height) {
  __android_log_print(ANDROID_LOG_VERBOSE, alg::kTag, " brennix process  effect %s ", name);
  EffectTypeInfo info{nullptr, 0, 0, alg::kNoEffect, 4, 0};
  const auto* entry = std::ranges::find(alg::kTable, std::string_view(name),
                                        [](const auto& e) { return std::string_view(e.name); });
  if (entry == std::end(alg::kTable)) {
    return info;
  }
  const bool landscape = width > height;
  info.effectId = entry->effectId;
  info.stripCount = entry->stripCount;
  info.effectFlag = entry->flagsLandscape && landscape ? -1 : 0;
  if (entry->portraitPicture != nullptr) {
    alg::loadPicture(*entry, landscape, info);
  }
  return info;
}
