// What JPEG files hold, and what can go wrong with them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace alg {

/// The bytes of a pixel in memory. Decoding sets alpha to 255, encoding ignores it.
enum class JpegPixels : uint8_t { kBgra, kRgba, kBgr, kRgb };

constexpr std::size_t bytesPerPixel(JpegPixels pixels) {
  return pixels == JpegPixels::kBgra || pixels == JpegPixels::kRgba ? 4 : 3;
}

/// Why a JPEG call has failed.
enum class JpegFault : uint8_t {
  kNone,
  kNotJpeg,      ///< the bytes do not begin as a JPEG file does
  kDamaged,      ///< they do, but no part of an image can be had from them
  kUnsupported,  ///< 12 bits a sample, lossless, hierarchical, or colours without a conversion
  kTooLarge,     ///< over kMaxPictureSide or kMaxPicturePixels, or what the caller allows
  kTooComplex,   ///< more scans or coefficients than kMostJpegScans... and kMostJpegWorkBytes
  kNoMemory,
  kBadSize,       ///< the caller's pixels: a side below 1, over kMostJpegSide, or not the image's
  kOutputFull,    ///< the file does not fit; the output knows how many bytes it needs
  kOutputFailed,  ///< the output has refused bytes
  kCancelled,     ///< the caller's work has asked to stop
};

/// The longest side that can be encoded, in pixels.
inline constexpr int kMostJpegSide = 65500;

/// Pixels that share a sample of each chroma component: 2 x 2, 2 x 1 or 1.
enum class JpegSampling : uint8_t { k420, k422, k444 };

enum class JpegColours : uint8_t { kGrey, kRgb, kCmyk };

/// By what the coefficients of Y, Cb and Cr are divided, row by row of a block.
struct JpegTables {
  int count = 0;  ///< of those below that are known: 0, 1 (of a grey file) or 3
  std::array<std::array<uint8_t, 64>, 3> values{};
};

/// What a file's header says.
struct JpegInfo {
  int width = 0;
  int height = 0;
  JpegColours colours = JpegColours::kRgb;
  JpegSampling sampling = JpegSampling::k420;  ///< the nearest that has no less chroma; grey: k420
  bool wholeImage = false;  ///< progressive, or several scans: the codec holds all coefficients
  int quality = 0;    ///< 1..100: whose luma table comes nearest to the file's; 0: it has none
  JpegTables tables;  ///< of grey and YCbCr files

  /// The sides at a reduction of 1, 2, 4 or 8.
  int reducedWidth(int reduction) const { return (width + reduction - 1) / reduction; }
  int reducedHeight(int reduction) const { return (height + reduction - 1) / reduction; }
  /// The strongest reduction that leaves the longer side at least `keepSide` pixels; 1 if that is
  /// 0.
  int reductionFor(int keepSide) const;
};

/// What the codec has gone on over. A decoded image without damage has all its pixels.
struct JpegDamage {
  int warnings = 0;        ///< times that data could not be read; 0: nothing is lost
  bool truncated = false;  ///< the file ends before the image does
  /// Of the decoded rows, the first that is lost, to within a few rows, where the file just ends
  /// early; 0 where it can't be told; -1: nothing is lost.
  int firstRow = -1;

  explicit operator bool() const { return warnings > 0; }
};

/// The most memory that a decoder may take in addition to the result, in bytes. Files in several
/// scans keep the coefficients of the whole image, two bytes a sample: 6 bytes a pixel at full
/// chroma resolution, 3 at half of it in both directions, 8 with four colours (sides rounded up to
/// whole blocks; the result has 4). That is enough for 116 million pixels of the first kind and 233
/// million of the second. Files in one scan take a few rows.
inline constexpr long kMostJpegWorkBytes = 700'000'000;

/// The most scans that a file may have: from 17 million pixels on, and up to 5 million; in between,
/// scans times pixels may reach 2^29. A file of a few kilobytes can demand that many passes over
/// all coefficients. On a desktop machine each pass costs up to 0.15 ms of CPU per megabyte of the
/// result, with arithmetic coding 0.6 ms; on top of that, a file in several scans costs 3 ms per
/// megabyte.
inline constexpr int kMostJpegScansLarge = 32;
inline constexpr int kMostJpegScansSmall = 100;

/// The most bytes of APPn and COM segments that are carried from one file to another.
inline constexpr std::size_t kMostJpegSegmentBytes = 16'000'000;

}  // namespace alg
