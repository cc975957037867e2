#include "tools/commands/beauty.h"

#include <android/log.h>
#include <fmt/format.h>

#include <string>
#include <string_view>
#include <system_error>

#include "platform/device_path.h"
#include "sfb/beauty_engine.h"
#include "tools/effects/photo_pipeline.h"
#include "tools/photos/photo_file.h"
#include "tools/shell/console.h"

namespace fs = std::filesystem;

namespace alg::tool {
namespace {

/// The engine library's path with its folder: the loader would search the system for a bare name.
std::string enginePath(const fs::path& users) {
  if (users.empty()) {
    return devicePath(kSfbLibrary);
  }
  std::error_code error;
  const fs::path path = fs::canonical(users, error);
  if (error) {
    throw UserError(fmt::format("{}: {}", users.string(), error.message()));
  }
  return path.string();
}

SfbRun runEngine(const std::string& engine, const SfbLevels& levels, Photo& photo) {
  SfbRun run;
  throughFrame(photo, [&](const Frame& frame) {
    GtImage image;
    vfb_init_gtimage(&image, kGtTwoPlanes, frame.width, frame.height, frame.yStride, frame.height,
                     frame.y);
    run = processWithEngineOfHost(engine.c_str(), &image, levels);
  });
  return run;
}

[[noreturn]] void failToLoad(const fs::path& users, const std::string& engine,
                             std::string_view reason) {
  const std::string prefix = engine + ": ";  // which the loader's text begins with
  reason.remove_prefix(reason.starts_with(prefix) ? prefix.size() : 0);
  throw UserError(
      users.empty()
          ? fmt::format("no face-beauty engine at {}: {}; name one with --engine", engine, reason)
          : fmt::format("{}: not usable as a face-beauty engine: {}", users.string(), reason));
}

/// Drops the library's log: the tool says what matters in its own words.
void dropLogLine(const __android_logger_data*, const char*) {}

}  // namespace

void beautifyPhoto(const BeautyRequest& request) {
  const SfbLevels levels = sfbLevels(request.smooth, request.toning, request.slimming);
  if (levels.mode == 0) {
    note("all levels are 0: the photo stays as it is, up to rounding");
  }
  const std::string engine = enginePath(request.engine);
  PhotoFile file = readPhoto(request.input, request.options);
  cropToEven(file.photo, request.input);
  __android_log_set_logger(dropLogLine);
  const SfbRun run = runEngine(engine, levels, file.photo);
  if (run.whyNotLoaded != nullptr) {
    failToLoad(request.engine, engine, run.whyNotLoaded);
  }
  if (run.result != 0) {
    throw UserError(fmt::format("{}: the face-beauty engine failed with code {}",
                                request.input.string(), run.result));
  }
  file.change.moved = request.slimming > 0;
  writePhoto(request.output, file, request.options);
}

}  // namespace alg::tool
