// The second opinion: one plain definition per routine, as loops over one pixel at a time.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

using Bytes = std::vector<uint8_t>;

/// An int as a size.
constexpr std::size_t asSize(int value) { return static_cast<std::size_t>(value); }

namespace ref {

inline int clamp255(int v) { return std::clamp(v, 0, 255); }
inline int trunc(double v) { return static_cast<int>(v); }

// Conversion -------------------------------------------------------------------------------------

struct Frame {
  int width, height, yStride, uvStride;
  int blocks() const { return (width + 1) / 2; }  // in a block row
};

/// Bytes of the chroma plane.
inline int chromaBytes(const Frame& f) { return f.height * f.uvStride / 2; }

/// Where each block's chroma pair begins: one cursor over the whole plane.
inline std::vector<int> chromaPairs(const Frame& f, bool encoding) {
  std::vector<int> pairs;
  for (int block = 0, p = 0; block < f.blocks() * ((f.height + 1) / 2); ++block, p += 2) {
    pairs.push_back(p);
    const int rem = (p + 1) % f.uvStride;
    if (encoding ? rem > f.width : rem >= f.width) p += f.uvStride - f.width;
  }
  return pairs;
}

/// A weighted sum in wrapping 16.16 fixed point.
inline int weigh(int64_t r, int a, int64_t g, int b, int64_t bl, int c, int offset) {
  return static_cast<int32_t>(a * r + b * g + c * bl + (int64_t{offset} << 16)) >> 16;
}
inline int lumaOf(int r, int g, int b) { return weigh(r, 16830, g, 33036, b, 6416, 16); }
inline int uOf(int r, int g, int b) { return weigh(r, -9712, g, -19071, b, 28783, 128); }
inline int vOf(int r, int g, int b) { return weigh(r, 28783, g, -24104, b, -4679, 128); }

/// B, G, R for each pixel. The U of a chroma pair is its byte `u`. In odd frames a sample behind
/// the plane's end is that of the block above.
inline Bytes decode(const uint8_t* luma, const uint8_t* chroma, const Frame& f, int u) {
  const std::vector<int> pairs = chromaPairs(f, false);
  const auto sample = [&](int block, int byte) {
    while (block >= 0 && pairs[asSize(block)] + byte >= chromaBytes(f)) block -= f.blocks();
    return block < 0 ? 0 : chroma[pairs[asSize(block)] + byte] - 128;
  };
  Bytes bgr;
  for (int i = 0; i < f.width * f.height; ++i) {
    const int y = i / f.width, x = i % f.width, block = y / 2 * f.blocks() + x / 2;
    const int us = sample(block, u), vs = sample(block, 1 - u);
    const int l = 76310 * (luma[y * f.yStride + x] - 16);
    for (const int value : {l + 132199 * us, l - 53281 * vs - 25677 * us, l + 104595 * vs}) {
      bgr.push_back(uint8_t(std::clamp(value, 0, 0xFF0000) >> 16));
    }
  }
  return bgr;
}

/// From R, G, B for each pixel. Samples behind the plane's end are left out.
inline void encode(const uint8_t* rgb, uint8_t* luma, uint8_t* chroma, const Frame& f, int u) {
  const std::vector<int> pairs = chromaPairs(f, true);
  for (int i = 0; i < f.width * f.height; ++i, rgb += 3) {
    const int y = i / f.width, x = i % f.width;
    luma[y * f.yStride + x] = uint8_t(lumaOf(rgb[0], rgb[1], rgb[2]));
    if (x % 2 == 0 && (y % 2 == 1 || y == f.height - 1)) {  // a block's bottom left
      const int pair = pairs[asSize(y / 2 * f.blocks() + x / 2)];
      if (pair + u < chromaBytes(f)) chroma[pair + u] = uint8_t(uOf(rgb[0], rgb[1], rgb[2]));
      if (pair + 1 - u < chromaBytes(f))
        chroma[pair + 1 - u] = uint8_t(vOf(rgb[0], rgb[1], rgb[2]));
    }
  }
}

// Rotation ---------------------------------------------------------------------------------------

/// Fills width x height elements of `bytes` bytes, turned clockwise; the pitches are in bytes.
inline void rotate(const uint8_t* src, int srcPitch, uint8_t* dst, int dstPitch, int width,
                   int height, int bytes, int degrees) {
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      int row = height - 1 - y, column = width - 1 - x;
      if (degrees == 270) row = x, column = height - 1 - y;
      if (degrees == 90) row = width - 1 - x, column = y;
      std::memcpy(dst + y * dstPitch + x * bytes, src + row * srcPitch + column * bytes,
                  asSize(bytes));
    }
  }
}

// Filters ----------------------------------------------------------------------------------------

inline int contrast(int v) { return clamp255(trunc(std::fma(v - 127, 1.25, 127.0))); }
inline int dim(int v) { return ((255 - v) * (255 - v)) >> 8; }
inline int screen(int v) { return 255 - dim(v); }

inline int sweet(int v, int t, int lift) {
  const int u = t + lift, s = trunc(std::fma(u * 1.05, 255 - u, u * 255));
  return clamp255(trunc(std::fma(s >> 8, 0.75, v * 0.25)));
}

inline int nature(int v, bool green) {
  const double f = float(v) * 0.0007843137f * float(v - 255);
  const int n = clamp255(trunc(std::fma(v, 1.2, -f)));
  return clamp255(trunc(green ? std::fma(n, 0.97, (255 - n) * 0.05) : std::fma(255 - n, 0.05, n)));
}

inline int moonlight(int v) {
  const int s = dim(contrast(v));
  return clamp255(trunc(std::fma(255 - s, 0.9, s * 0.1)));
}

constexpr float kKnee = 0.64705884f;
inline int knee(int v, int dark) {
  return v < 85 ? dark : v > 170 ? trunc(float(v - 170) * kKnee) + 170 : v;
}
inline double unit(int v) { return float(v / 255.0); }
inline int times255(double v) { return trunc(float(v) * 255.0f); }

inline int beautiful(int v, bool blue) {
  const int m = knee(v, trunc(std::fma(float(v), kKnee, 30.0f)));
  const double b = unit(blue ? ((m * 205) >> 8) + 20 : m);
  return times255(1.0 - std::exp(b * b * -5.0));
}

/// Share `weight` of a rising curve, the rest straight.
inline int rise(int v, double weight) {
  const double b = unit(v);
  return times255(std::fma(weight, 1.0 - std::exp(-5.0 * std::pow(b, 1.75)), (1.0 - weight) * b));
}
inline int tone(int v) { return rise(knee(v, trunc(float(v) * kKnee) + 30), 0.75); }
inline int twist(int v) { return ((v - 128) * v * (v - 255)) >> 16; }

/// A filter's curve for byte k of a pixel, before the overlay if there is one.
inline int curve(int effectId, int k, int v) {
  const bool red = k == 0, green = k == 1, blue = k == 2;
  switch (effectId) {
    case 20:
      return red     ? sweet(v, (v * 225) >> 8, 30)
             : green ? sweet(v, v, 0)
                     : sweet(v, (v * 250) >> 8, 50);
    case 21:
      return nature(v, green);
    case 22:
      if (blue) return screen(clamp255(v + 20));
      return red ? clamp255(trunc(screen(contrast(v)) * 0.8)) : screen(contrast(v));
    case 23:
      return blue ? screen(v) : moonlight(v);
    case 24:
      if (red && v < 128) v = trunc(std::fma(v, 0.85, 20.0));
      if (blue && v < 128) v = trunc(std::fma(v, 0.765, 30.0));
      return screen(contrast(v));
    case 25:
      return beautiful(v, blue);
    case 26:
      return red ? v + twist(v) : v - twist(v);
    case 27:
      return red ? trunc((tone(v) - 20.0) * 1.085) : tone(v);
    default:
      return v;  // no filter: bytes 0 and 2 are exchanged
  }
}

inline int softLight(int c, int o) {
  const float x = float(c / 255.0);
  const int lowGain = c * (256 - c), highGain = trunc((std::sqrt(x) - x) * 255.0);
  return c + (o <= 127 ? ((2 * o - 255) * lowGain) >> 16 : ((2 * o - 255) * highGain) >> 8);
}

struct Picture {
  int width = 1, height = 1;
  Bytes rgba = Bytes(4);
};

/// The filter of an identifier on packed pixels. src and dst may overlap.
inline void filter(int effectId, const uint8_t* src, uint8_t* dst, int width, int height,
                   const uint8_t* overlay, int overlayWidth, int overlayHeight) {
  int curves[3][256], finish[256];
  for (int i = 0; i < 3 * 256; ++i) curves[i / 256][i % 256] = curve(effectId, i / 256, i % 256);
  for (int v = 0; v < 256; ++v) finish[v] = effectId == 26 ? rise(v, 0.5) : v;
  for (int i = 0; i < width * height; ++i, src += 3, dst += 3) {
    const int row = i / width * overlayHeight / height, column = i % width * overlayWidth / width;
    int out[3];
    for (int k = 0; k < 3; ++k) {
      out[k] = curves[k][src[k]];
      if (effectId == 26 || effectId == 27) {
        out[k] = softLight(out[k], overlay[(row * overlayWidth + column) * 4 + k]);
      }
    }
    for (int k = 0; k < 3; ++k) dst[2 - k] = uint8_t(finish[out[k]]);
  }
}

// The pipeline -----------------------------------------------------------------------------------

struct Effect {
  std::string name;
  int id, strips;
  std::string picture, landscapePicture;  // file names, empty without one
};

/// The names in order of their identifiers, then some unknown ones, from the empty one on.
inline const std::vector<Effect> kEffects = [] {
  std::istringstream names(
      "LOMO_effect,cross-process,fill-light,temperature,gray-scale,miniature,nature,fish-eye,sepia,"
      "pink,summer_effect,Ocean_effect,negative-effect,sketch,newsketch_effect,area_effect,"
      "rotate_effect,mosaic_effect,emboss_effect,colorpaint_effect,PrettySweet,PrettyNature,"
      "PrettyBlue,PrettyMoonlight,PrettyWhiteDew,PrettyBeautiful,PrettyPink,PrettyJapan,"
      ",lomo_effect,PRETTYBLUE,PrettyBlue , sepia,fish-eyes");
  std::vector<Effect> effects;
  bool known = true;
  for (std::string name; std::getline(names, name, ',');) {
    known = known && !name.empty();
    effects.push_back({name, known ? int(effects.size()) : 1000, 4, "", ""});
  }
  for (const int id : {2, 7, 15, 16, 18, 19}) effects[asSize(id)].strips = 1;
  effects[0].picture = effects[0].landscapePicture = "effect_lomo.png";
  effects[14].picture = "red2green.png";
  effects[14].landscapePicture = "red2green_r.png";
  effects[25].picture = effects[26].picture = "sucai0.png";
  effects[25].landscapePicture = effects[26].landscapePicture = "sucai0_r.png";
  effects[27].picture = effects[27].landscapePicture = "sucai3.png";
  return effects;
}();
inline const int kKnownNames =
    int(std::ranges::find(kEffects, 1000, &Effect::id) - kEffects.begin());

/// First row and number of rows of each strip, clipped to the frame.
inline std::vector<std::pair<int, int>> strips(int height, int count) {
  std::vector<std::pair<int, int>> result;
  const bool odd = height / count % 2 != 0;
  const int rows = height / count + odd;
  for (int i = 0; i < count; ++i) {
    const int first = std::min(i * rows, height), rest = height - first;
    result.emplace_back(first, odd && i == count - 1 ? rest : std::min(rows, rest));
  }
  return result;
}

/// The whole pipeline on a frame, in place. `picture` is null without one.
inline void pipeline(const Effect& effect, const Picture* picture, uint8_t* luma, uint8_t* chroma,
                     const Frame& f) {
  const bool shows = picture != nullptr && picture->height >= effect.strips;
  const Picture none, &overlay = shows ? *picture : none;
  const int id = effect.picture.empty() || shows ? effect.id : 1000, pitch = f.width * 3;
  Bytes in(asSize(f.height * pitch)), out(in.size());
  for (const auto& [row, rows] : strips(f.height, 4)) {
    const Frame strip{f.width, rows, f.yStride, f.uvStride};
    const Bytes bgr = decode(luma + row * f.yStride, chroma + row / 2 * f.uvStride, strip, 0);
    std::copy(bgr.begin(), bgr.end(), in.begin() + row * pitch);
  }
  const uint8_t* band = overlay.rgba.data();
  for (const auto& [row, rows] : strips(f.height, effect.strips)) {
    filter(id, in.data() + row * pitch, out.data() + row * pitch, f.width, rows, band,
           overlay.width, overlay.height / effect.strips);
    band += overlay.rgba.size() / asSize(effect.strips);
  }
  for (const auto& [row, rows] : strips(f.height, 4)) {
    const Frame strip{f.width, rows, f.yStride, f.uvStride};
    encode(out.data() + row * pitch, luma + row * f.yStride, chroma + row / 2 * f.uvStride, strip,
           0);
  }
}

}  // namespace ref
