#include "tools/frames/raw_frames.h"

#include <fmt/format.h>

#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include "base/image_size.h"
#include "libalgorithm/camera_util.h"
#include "libalgorithm/yuv_convert.h"
#include "tools/files/files.h"
#include "tools/photos/jpeg_photo.h"
#include "tools/photos/photo.h"
#include "tools/photos/size.h"
#include "tools/shell/console.h"

namespace alg::tool {
namespace {

std::size_t bytesOf(Size size, std::string_view format) {
  return format == "argb" ? size.pixels() * kArgbBytes : size.pixels() * 3 / 2;
}

std::vector<uint8_t> readFrame(const std::filesystem::path& path, Size size,
                               std::string_view format) {
  std::vector<uint8_t> frame = readFile(path);
  if (frame.size() != bytesOf(size, format)) {
    throw BadInput(fmt::format("{}: has {} bytes, but {}x{} {} takes {}", path.string(),
                               frame.size(), size.width, size.height, format,
                               bytesOf(size, format)));
  }
  return frame;
}

std::vector<uint8_t> exchangeChroma(std::vector<uint8_t> frame, Size size) {
  for (std::size_t i = size.pixels(); i + 1 < frame.size(); i += 2) {
    std::swap(frame[i], frame[i + 1]);
  }
  return frame;
}

Photo toArgb(const std::vector<uint8_t>& frame, Size size, std::string_view from) {
  Photo argb = blankPhoto(size.width, size.height);
  if (from == "argb") {
    std::memcpy(argb.pixels.get(), frame.data(), frame.size());
  } else {
    const auto decode = from == "nv12" ? decodeYUV2ARGB_LUT : decodeYVU2ARGB_OpenGL;
    decode(wordsOf(argb), frame.data(), frame.data() + size.pixels(), size.width, size.height,
           size.width, size.width);
  }
  return argb;
}

std::vector<uint8_t> fromArgb(const uint32_t* argb, Size size, std::string_view to) {
  std::vector<uint8_t> frame(bytesOf(size, to));
  if (to == "argb") {
    std::memcpy(frame.data(), argb, frame.size());
  } else {
    const auto encode = to == "nv12" ? decodeARGB2YUV_OpenGL : decodeARGB2YVU_OpenGL;
    encode(argb, frame.data(), frame.data() + size.pixels(), size.width, size.height, size.width,
           size.width);
  }
  return frame;
}

void convertPhoto(const ConvertRequest& request) {
  if (request.to == "jpg" || !request.size.empty()) {
    throw WrongUse("--from jpg makes a raw frame, and goes without --size");
  }
  Photo photo = readPhoto(request.input, request.options).photo;
  cropToEven(photo, request.input);
  const Size size{photo.width, photo.height};
  writeFile(request.output, fromArgb(wordsOf(photo), size, request.to));
  fmt::print("{}x{}\n", size.width, size.height);
}

}  // namespace

void convertFrame(const ConvertRequest& request) {
  if (request.from == "jpg") {
    convertPhoto(request);
    return;
  }
  if (request.size.empty()) {
    throw WrongUse(
        fmt::format("--size is needed: a raw {} file does not contain it", request.from));
  }
  const Size size = request.to == "jpg" ? parseFrameSize(request.size, kLongestJpegSide)
                                        : parseFrameSize(request.size);
  std::vector<uint8_t> frame = readFrame(request.input, size, request.from);
  if (request.to == request.from) {
    writeFile(request.output, frame);
  } else if (request.from != "argb" && (request.to == "nv12" || request.to == "nv21")) {
    writeFile(request.output, exchangeChroma(std::move(frame), size));
  } else {
    const Photo argb = toArgb(frame, size, request.from);
    if (request.to == "jpg") {
      const PhotoOptions& options = request.options;
      writeFile(request.output, encodeJpegPhoto(argb, options.quality.value_or(kDefaultQuality),
                                                options.sampling.value_or(JpegSampling::k420)));
    } else {
      writeFile(request.output, fromArgb(wordsOf(argb), size, request.to));
    }
  }
}

void rotateFrame(const RotateRequest& request) {
  const Size source = parseFrameSize(request.size);
  const Size turned = request.degrees == 180 ? source : Size{source.height, source.width};
  const std::vector<uint8_t> frame = readFrame(request.input, source, request.format);
  std::vector<uint8_t> result(frame.size());
  // The library wants the size of the destination.
  CameraUtil::rotateYUV(frame.data(), result.data(), turned.width, turned.height, request.degrees);
  writeFile(request.output, result);
}

}  // namespace alg::tool
