#include "tools/beauty.h"

#include <android/log.h>
#include <fmt/format.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "effect/pipeline.h"
#include "platform/device_path.h"
#include "sfb/beauty_engine.h"
#include "tools/console.h"
#include "tools/device_root.h"
#include "tools/photo.h"
#include "tools/road.h"

namespace alg::tool {
namespace {

/// What the adapter logs, instead of the platform's log: it tells why an engine can't be had.
std::vector<std::string>& logLines() {
  static std::vector<std::string> lines;
  return lines;
}

void keepLogLine(const __android_logger_data*, const char* line) { logLines().emplace_back(line); }

/// Why there is no engine. Its path, which the loader's text begins with, is left out.
std::string whyNotLoaded() {
  const std::vector<std::string>& lines = logLines();
  const bool loadFailed = lines.size() > 1 && lines.back() == "loadSFBFunc failed...";
  const std::string_view reason = loadFailed ? lines[lines.size() - 2] : lines.back();
  const std::string prefix = devicePath(kSfbLibrary) + ": ";
  return std::string(reason.starts_with(prefix) ? reason.substr(prefix.size()) : reason);
}

int runEngine(const SfbLevels& levels, Photo& photo) {
  int result = 0;
  throughFrame(photo, [&](const Frame& frame) {
    GtImage image;
    vfb_init_gtimage(&image, kGtTwoPlanes, frame.width, frame.height, frame.yStride, frame.height,
                     frame.y);
    result = SFBProcess(&image, &levels);
  });
  return result;
}

}  // namespace

void beautifyPhoto(const BeautyRequest& request) {
  const SfbLevels levels = sfbLevels(request.smooth, request.toning, request.slimming);
  if (levels.mode == 0) {
    note("all levels are 0: the photo stays as it is, up to rounding");
  }
  std::unique_ptr<UserDevice> device;
  if (!request.engine.empty()) {
    device = std::make_unique<UserDevice>();
    device->addLibrary(request.engine, kSfbLibrary);
  }
  auto [photo, metadata] = readPhoto(request.input);
  cropToEven(photo, request.input);
  __android_log_set_logger(keepLogLine);
  const int result = runEngine(levels, photo);
  if (result == kSfbNotLoaded) {
    throw UserError(request.engine.empty()
                        ? fmt::format("no face-beauty engine at {}: {}; name one with --engine",
                                      devicePath(kSfbLibrary), whyNotLoaded())
                        : fmt::format("{}: not usable as a face-beauty engine: {}",
                                      request.engine.string(), whyNotLoaded()));
  }
  if (result != 0) {
    throw UserError(fmt::format("{}: the face-beauty engine failed with code {}",
                                request.input.string(), result));
  }
  writePhoto(request.output, photo, metadata, request.quality);
}

}  // namespace alg::tool
