// Conversions and resize beside libswscale.
extern "C" {
#include <libswscale/swscale.h>
}

#include <array>
#include <memory>

#include "bench/peers/duel.h"
#include "libalgorithm/pretty_filters.h"
#include "libalgorithm/yuv_convert.h"

namespace alg::bench {
namespace {

struct Picture {
  AVPixelFormat format;
  int width, height;

  bool isFrame() const { return format != AV_PIX_FMT_BGRA; }
  int pitch() const { return isFrame() ? width : 4 * width; }
  std::size_t bytes() const {
    return isFrame() ? pixelsOf(width, height) * 3 / 2 : 4 * pixelsOf(width, height);
  }
};

using Planes = std::array<uint8_t*, 4>;

Planes planesOf(const Picture& picture, const Bytes& bytes) {
  auto* first = const_cast<uint8_t*>(bytes.data());
  return {first, picture.isFrame() ? first + pixelsOf(picture.width, picture.height) : nullptr};
}

/// BT.601 in video range is what libswscale takes for small and unnamed pictures.
std::function<void()> scaling(const Picture& from, const Bytes& source, const Picture& to,
                              Bytes& target, int flags) {
  const std::shared_ptr<SwsContext> context(
      sws_getContext(from.width, from.height, from.format, to.width, to.height, to.format, flags,
                     nullptr, nullptr, nullptr),
      sws_freeContext);
  return [=, &source, &target] {
    const int fromPitches[4] = {from.pitch(), from.pitch()};
    const int toPitches[4] = {to.pitch(), to.pitch()};
    sws_scale(context.get(), planesOf(from, source).data(), fromPitches, 0, from.height,
              planesOf(to, target).data(), toPitches);
  };
}

Duel duelOf(Scene& s, const char* work, const Picture& from, const Bytes& source, const Picture& to,
            double tolerance, double operations, std::function<void()> ours,
            std::initializer_list<std::pair<const char*, int>> ways) {
  Duel duel{.work = work,
            .required = 1.0,
            .moved = from.bytes() + to.bytes(),
            .result = to.bytes(),
            .tolerance = tolerance,
            .ours = std::move(ours),
            .peers = {},
            .operations = operations};
  for (const auto& [name, flags] : ways) {
    duel.peers.push_back(
        {std::string("libswscale, ") + name, scaling(from, source, to, s.theirs, flags)});
  }
  return duel;
}

uint32_t* asWords(Bytes& bytes) { return reinterpret_cast<uint32_t*>(bytes.data()); }

Duel decoding(Scene& s, const char* work, decltype(decodeYUV2ARGB_LUT)* ours,
              AVPixelFormat format) {
  const uint8_t* y = s.frame.data();
  return duelOf(s, work, {format, kWidth, kHeight}, s.frame, {AV_PIX_FMT_BGRA, kWidth, kHeight}, 2,
                per_pixel::kDecode,
                [=, &s] { ours(asWords(s.ours), y, y + kPixels, kWidth, kHeight, kWidth, kWidth); },
                {{"point", SWS_POINT}, {"fast bilinear", SWS_FAST_BILINEAR}});
}

Duel encoding(Scene& s, const char* work, decltype(decodeARGB2YUV_OpenGL)* ours,
              AVPixelFormat format) {
  return duelOf(s, work, {AV_PIX_FMT_BGRA, kWidth, kHeight}, s.words, {format, kWidth, kHeight}, 2,
                per_pixel::kEncode,
                [=, &s] {
                  ours(asWords(s.words), s.ours.data(), s.ours.data() + kPixels, kWidth, kHeight,
                       kWidth, kWidth);
                },
                {{"point", SWS_POINT}, {"fast bilinear", SWS_FAST_BILINEAR}});
}

Duel resizing(Scene& s, const char* work, Bytes& source, const Picture& from, const Picture& to) {
  return duelOf(s, work, from, source, to, 2.5, to.width > from.width ? per_pixel::kDoubled : 0,
                [=, &s, &source] {
                  Resize(asWords(s.ours), to.width, to.height, asWords(source), from.width,
                         from.height);
                },
                {{"bilinear", SWS_BILINEAR}, {"fast bilinear", SWS_FAST_BILINEAR}});
}

}  // namespace

std::vector<Duel> swscaleDuels(Scene& s) {
  constexpr Picture kWhole{AV_PIX_FMT_BGRA, kWidth, kHeight};
  constexpr Picture kHalf{AV_PIX_FMT_BGRA, kWidth / 2, kHeight / 2};
  static Bytes half = picture(kHalf.width, kHalf.height, 4);
  return {
      decoding(s, "NV12 -> ARGB", decodeYUV2ARGB_LUT, AV_PIX_FMT_NV12),
      decoding(s, "NV21 -> ARGB", decodeYVU2ARGB_OpenGL, AV_PIX_FMT_NV21),
      encoding(s, "ARGB -> NV12", decodeARGB2YUV_OpenGL, AV_PIX_FMT_NV12),
      encoding(s, "ARGB -> NV21", decodeARGB2YVU_OpenGL, AV_PIX_FMT_NV21),
      resizing(s, "Resize to half", s.words, kWhole, kHalf),
      resizing(s, "Resize to double", half, kHalf, kWhole),
  };
}

}  // namespace alg::bench
