// PNG files made chunk by chunk; also such as claim more than they hold, or hold more than they
// need.
#pragma once

#include <zlib.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "guarded.h"

namespace png_file {

inline Bytes bigEndian(std::size_t value) {
  return {uint8_t(value >> 24), uint8_t(value >> 16), uint8_t(value >> 8), uint8_t(value)};
}

inline void append(Bytes& to, const Bytes& more) {
  std::ranges::copy(more, std::back_inserter(to));
}

inline Bytes chunk(const std::string& kind, const Bytes& content) {
  Bytes checked(kind.begin(), kind.end());
  append(checked, content);
  Bytes all = bigEndian(content.size());
  append(all, checked);
  append(all, bigEndian(crc32(0, checked.data(), uInt(checked.size()))));
  return all;
}

/// A chunk's first eight bytes, which are all there is of it.
inline Bytes claim(const std::string& kind, std::size_t length) {
  Bytes all = bigEndian(length);
  append(all, Bytes(kind.begin(), kind.end()));
  return all;
}

inline Bytes deflated(const Bytes& content) {
  uLongf size = compressBound(content.size());
  Bytes packed(size);
  EXPECT_EQ(compress2(packed.data(), &size, content.data(), content.size(), 9), Z_OK);
  packed.resize(size);
  return packed;
}

/// Compressed text: `bytes` of it in a thousandth of that.
inline Bytes text(int bytes) {
  Bytes content{'k', 0, 0};
  append(content, deflated(Bytes(asSize(bytes))));
  return chunk("zTXt", content);
}

/// Signature and header.
inline Bytes start(int width, int height, int bitDepth, int colourType) {
  Bytes file{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'}, header = bigEndian(asSize(width));
  append(header, bigEndian(asSize(height)));
  append(header, {uint8_t(bitDepth), uint8_t(colourType), 0, 0, 0});
  append(file, chunk("IHDR", header));
  return file;
}

inline Bytes end() { return chunk("IEND", {}); }

/// A whole file; `samples` are its rows' one after the other (big-endian), `between` the chunks
/// before its pixels.
inline Bytes file(int width, int height, int bitDepth, int colourType, const Bytes& samples,
                  const Bytes& between = {}) {
  const std::size_t pitch = samples.size() / asSize(height);
  Bytes rows(samples.size() + asSize(height));  // each with its filter, which is none, in front
  for (std::size_t y = 0; y < asSize(height); ++y) {
    std::copy_n(&samples[y * pitch], pitch, &rows[y * (pitch + 1) + 1]);
  }
  Bytes all = start(width, height, bitDepth, colourType);
  for (const Bytes& part : {between, chunk("IDAT", deflated(rows)), end()}) append(all, part);
  return all;
}

/// A black grey picture of one bit a pixel.
inline Bytes black(int width, int height, const Bytes& between = {}) {
  return file(width, height, 1, 0, Bytes(asSize(height) * asSize((width + 7) / 8)), between);
}

/// Files that made the library take gigabytes, or seconds, and what is to become of them.
struct Hostile {
  const char* name;
  Bytes content;
  bool decodes;
};

inline std::vector<Hostile> hostileFiles() {
  constexpr std::size_t kMost = 0x7FFFFFFF;
  std::vector<Hostile> files;
  for (const char* kind :
       {"zTXt", "iTXt", "tEXt", "iCCP", "sPLT", "eXIf", "prVt", "tRNS", "PLTE", "IDAT", "CRIT"}) {
    Bytes file = start(32, 32, 8, 6);
    append(file, claim(kind, kMost));
    files.push_back({kind, file, false});
  }
  Bytes texts;
  for (const Bytes one = text(7'900'000); texts.size() < 400 * one.size();) append(texts, one);
  files.push_back({"400 texts", black(32, 32, texts), true});
  Bytes behind = black(32, 32);
  behind.resize(behind.size() - end().size());
  append(behind, claim("zTXt", kMost));
  files.push_back({"a text behind the pixels", behind, false});
  files.push_back(
      {"metadata of 12 MB", black(32, 32, chunk("tEXt", Bytes(12'000'000, 'k'))), true});
  files.push_back({"16,000 x 16,000", black(16000, 16000), false});
  files.push_back({"64 million and some", black(8001, 8000), false});
  files.push_back({"too wide", black(65536, 4), false});
  files.push_back({"too high", black(4, 65536), false});
  return files;
}

}  // namespace png_file
