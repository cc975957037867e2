// JPEG files of each kind, made by the codec library.
#pragma once

#include <cstdio>
// jpeglib.h needs the types above.
#include <jpeglib.h>

#include <cstdlib>
#include <string>

#include "reference.h"

constexpr int kWidth = 96, kHeight = 64;  // unless others are asked for

/// A smooth picture whose channels all differ; the fourth is the key of CMYK files, 255 = no ink.
inline int sample(int x, int y, int c) {
  const int values[] = {x * 255 / kWidth, y * 255 / kHeight, (x + y) * 4 / 5 + 64, 255 - x};
  return values[c];
}

struct Fixture {
  const char* name;
  J_COLOR_SPACE input, file;
  bool progressive, adobe;
};

constexpr Fixture kFixtures[] = {{"baseline", JCS_RGB, JCS_YCbCr, false, false},
                                 {"rgb", JCS_RGB, JCS_RGB, false, true},
                                 {"grey", JCS_GRAYSCALE, JCS_GRAYSCALE, false, false},
                                 {"progressive", JCS_RGB, JCS_YCbCr, true, false},
                                 {"progressive grey", JCS_GRAYSCALE, JCS_GRAYSCALE, true, false},
                                 {"inverted cmyk", JCS_CMYK, JCS_CMYK, false, true},
                                 {"plain cmyk", JCS_CMYK, JCS_CMYK, false, false},
                                 {"inverted ycck", JCS_CMYK, JCS_YCCK, false, true}};

inline Bytes makeJpeg(const Fixture& fixture, int width = kWidth, int height = kHeight) {
  jpeg_compress_struct codec;
  jpeg_error_mgr errors;
  codec.err = jpeg_std_error(&errors);
  jpeg_create_compress(&codec);
  unsigned char* file = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&codec, &file, &size);
  const int channels = fixture.input == JCS_CMYK ? 4 : fixture.input == JCS_RGB ? 3 : 1;
  codec.image_width = JDIMENSION(width), codec.image_height = JDIMENSION(height);
  codec.in_color_space = fixture.input, codec.input_components = channels;
  jpeg_set_defaults(&codec);
  jpeg_set_colorspace(&codec, fixture.file);
  jpeg_set_quality(&codec, 95, TRUE);
  codec.write_Adobe_marker = fixture.adobe ? TRUE : FALSE;
  if (fixture.progressive) jpeg_simple_progression(&codec);
  jpeg_start_compress(&codec, TRUE);
  for (int y = 0; y < height; ++y) {
    Bytes row(asSize(width * 4));
    uint8_t* line = row.data();
    for (int i = 0; i < width * channels; ++i) {
      const int value = sample(i / channels, y, i % channels);
      row[asSize(i)] = uint8_t(channels == 4 && !fixture.adobe ? 255 - value : value);
    }
    jpeg_write_scanlines(&codec, &line, 1);
  }
  jpeg_finish_compress(&codec);
  jpeg_destroy_compress(&codec);
  Bytes bytes(file, file + size);
  std::free(file);
  return bytes;
}

/// Offset of the first marker of a kind.
inline std::size_t find(const Bytes& file, char kind) {
  return std::string(file.begin(), file.end()).find(std::string{'\xFF', kind});
}

/// Offset of the first byte behind the first scan header.
inline std::size_t scanStart(const Bytes& file) {
  return find(file, '\xDA') + 2 + file[find(file, '\xDA') + 3];
}

/// The file with something in place of some bytes.
inline Bytes with(Bytes file, std::size_t at, std::size_t count, const Bytes& instead) {
  const auto from = file.begin() + Bytes::difference_type(at);
  file.insert(file.erase(from, from + Bytes::difference_type(count)), instead.begin(),
              instead.end());
  return file;
}
