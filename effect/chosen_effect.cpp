#include "effect/chosen_effect.h"

#include <android/log.h>

#include "platform/bitmap.h"
#include "platform/picture_cache.h"

namespace alg {
namespace {

constexpr char kTag[] = "KAVRO_Effect_Function";

PictureCache pictures;

const Operation* lookUp(const EffectRequest& request) {
  if (request.name == nullptr) {
    return request.operation;
  }
  __android_log_print(ANDROID_LOG_VERBOSE, kTag, " brennix process  effect %s ", request.name);
  return findPipelineName(request.name);
}

PictureView lastPicture() {
  return {bitmap_effect.pixels.get(), bitmap_effect.width, bitmap_effect.height};
}

}  // namespace

ChosenEffect::ChosenEffect(const EffectRequest& request, int width, int height, Purpose purpose)
    : operation_(lookUp(request)) {
  if (operation_ == nullptr) {
    return;
  }
  const bool landscape = width > height;
  const PipelineName& pipeline = operation_->pipeline;
  runs_ = pipeline.runs;
  flag_ = pipeline.flagsLandscape && landscape;
  if (!pipeline.loadsPicture) {
    return;
  }
  if (request.picture == nullptr) {
    loadPicture(landscape, purpose);
  } else if (request.picture->height >= pipeline.strips) {
    picture_ = *request.picture;
  } else {
    missPicture();
  }
}

ChosenEffect::~ChosenEffect() {
  if (ownsLargePicture_) {
    bitmap_effect = {};
  }
}

void ChosenEffect::loadPicture(bool landscape, Purpose purpose) {
  const PictureRole& role = operation_->pictures[0];
  const bool looksAtIt = runs_ && role.read;
  const auto use = purpose == Purpose::kReport ? PictureUse::kKeep
                   : looksAtIt                 ? PictureUse::kRun
                                               : PictureUse::kVerdict;
  const bool decoded = pictures.load(role.fileFor(landscape), use, bitmap_effect);
  ownsLargePicture_ = decoded && purpose == Purpose::kRun && PictureCache::isLarge(bitmap_effect);
  // Each strip gets a band of whole picture rows: a picture with fewer rows than strips is useless.
  if (!decoded || bitmap_effect.height < operation_->pipeline.strips) {
    missPicture();
  } else if (bitmap_effect.pixels) {
    picture_ = lastPicture();
  }
}

void ChosenEffect::missPicture() {
  using OnMissing = PipelineName::OnMissing;
  runs_ = false;
  lacksPicture_ = true;
  if (operation_->pipeline.onMissing == OnMissing::kLog) {
    __android_log_print(ANDROID_LOG_VERBOSE, kTag,
                        "brennix  cannot get the  %d effect picture     ", kNoEffect);
  } else if (operation_->pipeline.onMissing == OnMissing::kKeepLastPicture) {
    picture_ = lastPicture();
  }
}

EffectTypeInfo ChosenEffect::record() const {
  const bool known = operation_ != nullptr && !lacksPicture_;
  return {const_cast<uint8_t*>(picture_.pixels),  // the record's type lacks the const
          picture_.width,
          picture_.height,
          known ? operation_->pipeline.identifier : kNoEffect,
          strips(),
          flag_ ? -1 : 0};
}

}  // namespace alg
