#include "tools/photos/colour.h"

#include <lcms2.h>

#include <memory>

namespace alg::tool {
namespace {

struct CloseProfile {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, CloseProfile>;

Profile open(const std::vector<uint8_t>& bytes) {
  return Profile(bytes.empty() ? cmsCreate_sRGBProfile()
                               : cmsOpenProfileFromMem(bytes.data(),
                                                       static_cast<cmsUInt32Number>(bytes.size())));
}

}  // namespace

bool convertColours(Photo& photo, const std::vector<uint8_t>& from,
                    const std::vector<uint8_t>& to) {
  cmsSetLogErrorHandler([](cmsContext, cmsUInt32Number, const char*) {});
  const Profile source = open(from);
  const Profile target = open(to);
  if (!source || !target) {
    return false;
  }
  auto* const transform =
      cmsCreateTransform(source.get(), TYPE_BGRA_8, target.get(), TYPE_BGRA_8,
                         INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_BLACKPOINTCOMPENSATION);
  if (transform == nullptr) {
    return false;
  }
  // Alpha is not part of a transform, and stays.
  const auto bytes = static_cast<cmsUInt32Number>(photo.width) * kArgbBytes;
  for (int y = 0; y < photo.height; ++y) {
    uint8_t* const row = photo.pixels.get() + std::size_t{bytes} * static_cast<std::size_t>(y);
    cmsDoTransform(transform, row, row, static_cast<cmsUInt32Number>(photo.width));
  }
  cmsDeleteTransform(transform);
  return true;
}

}  // namespace alg::tool
