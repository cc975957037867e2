// Vector twins of transpose and mirror, compiled once per vector target.

#define ALG_ALSO_AVX512

#include <algorithm>
#include <cstring>

#include "camerautil/turn_rows.h"
#include "kernels/vector_frame.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "camerautil/turn_rows_simd.cpp"
#include "hwy/cache_control.h"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
#include "kernels/row_blocks-inl.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& transposeVector = transposePlain;
constexpr auto& mirrorVector = mirrorPlain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<uint8_t>;
constexpr int kVectorBytes = hn::MaxLanes(Bytes());
constexpr int kBlockBytes = 16;      // of the blocks that vector instructions shuffle within
constexpr int kLineBytes = 64;       // of a cache line
constexpr int kPrefetchBytes = 128;  // how far ahead in each source row, without tiles
// Whether whole lines are written, past the caches where that is asked for. Arm's processors have
// no such stores and merge those to parts of a line.
constexpr bool kByLines = !ALG_IS_NEON();

/// Visits begin, begin + step, ...; the last step is moved back to end at `end`, so that steps
/// cover the range whole. It isn't shorter than a step.
template <class Visit>
HWY_INLINE void cover(int begin, int end, int step, Visit visit) {
  for (int i = begin; i < end; i += step) {
    visit(std::min(i, end - step));
  }
}

/// Copies a cache line to where one begins, past the caches or not.
HWY_INLINE void copyLine(const uint8_t* from, uint8_t* to, bool stream) {
  const Bytes d;
  HWY_UNROLL(4)
  for (int i = 0; i < kLineBytes; i += kVectorBytes) {
    const auto v = hn::LoadU(d, from + i);
    if (kByLines && stream) {
      hn::Stream(v, d, to + i);
    } else {
      hn::Store(v, d, to + i);
    }
  }
}

// Transposes by way of a tile that stays in the cache: a few cache lines of each of some source
// rows become runs of as many destination rows. Tiles follow each other along a band of the source,
// so that memory is read in long pieces and each page of either image a few times only, whatever
// its pitch. The destination is written by whole cache lines: the bytes at the end of a run that do
// not fill one are kept for the next tile of the rows below.
//
//   source rows  . . [piece] . .     tile  end  a0 b0 c0 ...  --> destination row 0  . . a0 b0 c0
//     a:             a0 a1 a2              end  a1 b1 c1 ...  --> destination row 1  . . a1 b1 c1
//     b:             b0 b1 b2              end  a2 b2 c2 ...
//     c:             c0 c1 c2

// A tile's columns, of words and of other elements, and the bytes of its runs: 16 KB. Where lines
// need not be whole, long runs of few columns cost the fewest instructions.
constexpr int kWordColumns = kByLines ? 64 : 16;
constexpr int kMostColumns = kByLines ? 128 : 64;
constexpr int runBytesOf(int columns) { return kByLines ? 16 * 1024 / columns : 1024; }
// As many pages of the destination are in use at a time: most processors know that many.
constexpr int kBandColumns = 1024;
constexpr int64_t kCachedBytes = 1 << 20;  // of an image likely to be in a second-level cache

struct Tile {
  int elementBytes;
  /// Of the source. A band's last tile has up to kBlockBytes more, where the rest would be less
  /// than a block.
  int columns;
  int runBytes;
  /// Transposes `columns` x `rows` elements from `from` on into runs, and fetches what is at
  /// `next`. When the rows are fewer than a block's, some of those above are done again.
  void (*fill)(const uint8_t* from, std::ptrdiff_t pitch, const uint8_t* next, int columns,
               int rows, uint8_t* runs);
  /// The whole transpose without tiles.
  void (*straight)(Rows<const uint8_t> src, Rows<uint8_t> dst, int columns, int rows);

  constexpr int pitch() const { return kLineBytes + runBytes; }  // not a power of two
  constexpr std::size_t room() const {
    return static_cast<std::size_t>((columns + kBlockBytes) * pitch());
  }
};

/// Of `left` columns, those that are done next: never fewer than a block's.
int pieceOf(int left, int most) { return left < most + kBlockBytes ? left : most; }

/// Writes a run to its place, and before it the end of the one before, as far as that did not fill
/// a line; its own such end only where it is the row's last.
HWY_INLINE void writeRun(const uint8_t* run, uint8_t* to, int bytes, bool isFirst, bool isLast,
                         bool stream) {
  if (!kByLines) {
    std::memcpy(to, run, static_cast<std::size_t>(bytes));
    return;
  }
  int at = -static_cast<int>(reinterpret_cast<uintptr_t>(to) % kLineBytes);
  if (isFirst && at != 0) {
    at += kLineBytes;
    std::memcpy(to, run, static_cast<std::size_t>(std::min(at, bytes)));
  }
  for (; at + kLineBytes <= bytes; at += kLineBytes) {
    copyLine(run + at, to + at, stream);
  }
  if (isLast && at < bytes) {
    std::memcpy(to + at, run + at, static_cast<std::size_t>(bytes - at));
  }
}

void transposeByTiles(const Tile& tile, Rows<const uint8_t> src, Rows<uint8_t> dst, int columns,
                      int rows, bool stream) {
  constexpr Tile kLargest{1, kMostColumns, runBytesOf(kMostColumns), nullptr, nullptr};
  alignas(kLineBytes) uint8_t bytes[kLargest.room()];
  alignas(kLineBytes) uint8_t ends[std::size_t{kBandColumns + kBlockBytes} * kLineBytes];
  uint8_t* const runs = bytes + kLineBytes;  // each with room for the end of the one before
  const std::ptrdiff_t size = tile.elementBytes, pitch = tile.pitch();
  const bool fetchRuns = !ALG_IS_NEON() && !stream && size * columns * rows >= kCachedBytes;
  const int tileRows = tile.runBytes / tile.elementBytes;
  for (int band = 0, bandEnd = 0; band < columns; band = bandEnd) {
    bandEnd = band + pieceOf(columns - band, kBandColumns);
    for (int x = 0; x < rows; x += tileRows) {
      const int count = std::min(tileRows, rows - x);
      const bool isLast = x + count == rows;
      for (int k = band, width = 0; k < bandEnd; k += width) {
        width = pieceOf(bandEnd - k, tile.columns);
        uint8_t* const endsHere = ends + std::ptrdiff_t{kLineBytes} * (k - band);
        const auto place = [&](int c) { return dst.row(k + c) + size * x; };
        for (int c = 0; kByLines && x != 0 && c < width; ++c) {
          copyLine(endsHere + kLineBytes * c, bytes + pitch * c, false);
        }
        for (int c = 0; fetchRuns && c < width; ++c) {
          for (int byte = 0; byte < tile.runBytes; byte += kLineBytes) {
            __builtin_prefetch(place(c) + byte, 1);
          }
        }
        const uint8_t* from = src.row(x) + size * k;
        const uint8_t* next = k + width < bandEnd ? from + size * width
                              : isLast            ? src.row(0) + size * bandEnd
                                                  : src.row(x + count) + size * band;
        tile.fill(from, src.pitch, next, width, count, runs);
        for (int c = 0; c < width; ++c) {
          const uint8_t* run = runs + pitch * c;
          writeRun(run, place(c), tile.elementBytes * count, x == 0, isLast, stream);
          if (kByLines && !isLast)
            copyLine(run + tile.runBytes - kLineBytes, endsHere + kLineBytes * c, false);
        }
      }
    }
  }
  if (kByLines && stream) hwy::FlushStream();
}

template <class Element>
struct Turn {
  using Vector = hn::ScalableTag<Element>;
  using Block = hn::Full128<Element>;
  static constexpr int kSize = sizeof(Element);
  static constexpr int kColumns = kBlockBytes / kSize;  // of source columns a block
  static constexpr int kRows = kVectorBytes / kSize;    // of source rows
  static constexpr int kLine = kLineBytes / kSize;
  static constexpr int kTileColumns = kSize == 4 ? kWordColumns : kMostColumns;

  // Loads a block's row r; a longer vector has rows r + kColumns, r + 2 kColumns, ... in its
  // further parts, so that no step of the transpose crosses them.
  static HWY_INLINE hn::Vec<Vector> load(const uint8_t* src, std::ptrdiff_t pitch, int r) {
    const auto part = [&](int i) HWY_ATTR {
      return hn::LoadU(Block(), reinterpret_cast<const Element*>(src + pitch * (r + kColumns * i)));
    };
#if ALG_IS_AVX512()
    __m512i all = _mm512_castsi128_si512(part(0).raw);
    all = _mm512_inserti32x4(all, part(1).raw, 1);
    all = _mm512_inserti32x4(all, part(2).raw, 2);
    return hn::Vec<Vector>{_mm512_inserti32x4(all, part(3).raw, 3)};
#elif ALG_IS_AVX2()
    return hn::Combine(Vector(), part(1), part(0));
#else
    return part(0);
#endif
  }

  // Interleaving row i with row i + n / 2 rotates the bits of (row, column) by one; log2(n) times
  // exchange row and column.
  static HWY_INLINE void transposeBlock(const uint8_t* src, std::ptrdiff_t pitch, uint8_t* to,
                                        std::ptrdiff_t toPitch) {
    const Vector d;
    hn::Vec<Vector> v[std::size_t{kColumns}];
    hn::Vec<Vector> w[std::size_t{kColumns}];
    HWY_UNROLL(16)
    for (int i = 0; i < kColumns; ++i) {
      v[i] = load(src, pitch, i);
    }
    HWY_UNROLL(4)
    for (int stage = 1; stage < kColumns; stage *= 2) {
      HWY_UNROLL(8)
      for (int i = 0; i < kColumns / 2; ++i) {
        w[2 * i] = hn::InterleaveLower(d, v[i], v[i + kColumns / 2]);
        w[2 * i + 1] = hn::InterleaveUpper(d, v[i], v[i + kColumns / 2]);
      }
      HWY_UNROLL(16)
      for (int i = 0; i < kColumns; ++i) {
        v[i] = w[i];
      }
    }
    HWY_UNROLL(16)
    for (int i = 0; i < kColumns; ++i) {
#if ALG_IS_NEON()  // else clang makes slower stores, of interleaved halves, of the last stage
      v[i].raw = opaque(v[i].raw);
#endif
      hn::StoreU(v[i], d, reinterpret_cast<Element*>(to + toPitch * i));
    }
  }

  static void fillTile(const uint8_t* from, std::ptrdiff_t pitch, const uint8_t* next, int columns,
                       int rows, uint8_t* runs) {
    cover(0, rows, kRows, [&](int r) HWY_ATTR {
      const uint8_t* row = next + pitch * r + kLineBytes - 1;
      for (int i = 0; i < kRows; ++i, row += pitch) {
        for (int byte = 0; byte < kSize * kTileColumns; byte += kLineBytes) {
          __builtin_prefetch(row + byte, 0, 2);
        }
      }
      // Here the first step is the short one, which leaves the others two additions.
      const uint8_t* block = from + pitch * r;
      uint8_t* to = runs + kSize * r;
      const uint8_t* const end = block + std::ptrdiff_t{kSize} * columns;
      std::ptrdiff_t step = (columns - 1) % kColumns + 1;
      for (; block < end; step = kColumns) {
        transposeBlock(block, pitch, to, kTile.pitch());
        block += kSize * step;
        to += kTile.pitch() * step;
      }
    });
  }

  // Without a tile, which costs a store and a load of every byte: one cache line of each of a few
  // destination rows is written at once, from blocks one below the other.
  static void transposeStraight(Rows<const uint8_t> src, Rows<uint8_t> dst, int columns, int rows) {
    const int stripRows = std::min(rows, kLine);
    cover(0, rows, stripRows, [&](int x) HWY_ATTR {
      cover(0, columns, kColumns, [&](int k) HWY_ATTR {
        const uint8_t* from = src.row(x) + std::ptrdiff_t{kSize} * k;
        uint8_t* to = dst.row(k) + std::ptrdiff_t{kSize} * x;
        if (k % kLine == 0) {
          for (int i = 0; i < stripRows; ++i) {
            __builtin_prefetch(from + src.pitch * i + kPrefetchBytes);
          }
        }
        cover(0, stripRows, kRows, [&](int r) HWY_ATTR {
          transposeBlock(from + src.pitch * r, src.pitch, to + kSize * r, dst.pitch);
        });
      });
    });
  }

  static constexpr Tile kTile{kSize, kTileColumns, runBytesOf(kTileColumns), fillTile,
                              ALG_IS_NEON() || kSize < 4 ? transposeStraight : nullptr};
};

// Rows that many bytes apart fall on the same places of a first-level cache.
bool collides(std::ptrdiff_t pitch) { return pitch % 1024 == 0; }

void transposeVector(std::size_t elementBytes, Rows<const uint8_t> src, Rows<uint8_t> dst,
                     int columns, int rows, bool stream) {
  const Tile& tile = elementBytes == 1   ? Turn<uint8_t>::kTile
                     : elementBytes == 2 ? Turn<uint16_t>::kTile
                                         : Turn<uint32_t>::kTile;
  if (columns * tile.elementBytes < kBlockBytes || rows * tile.elementBytes < kVectorBytes) {
    return transposePlain(elementBytes, src, dst, columns, rows);
  }
  const bool isSmall = int64_t{columns} * rows * tile.elementBytes < kCachedBytes;
  const bool wantsTiles = collides(src.pitch) || collides(dst.pitch) || tile.straight == nullptr;
  if ((ALG_IS_NEON() || isSmall) && !wantsTiles) {
    return tile.straight(src, dst, columns, rows);
  }
  transposeByTiles(tile, src, dst, columns, rows, stream);
}

// Vectors from the end: reverses the elements of each block, then the blocks. Four at a time, so
// that in-order cores need not wait for each.
void mirrorVector(std::size_t elementBytes, const uint8_t* src, uint8_t* dst, std::size_t count,
                  bool stream) {
  const Bytes d;
  constexpr std::size_t kStep = kVectorBytes, kSteps = 4 * kStep;
  HWY_ALIGN uint8_t order[kBlockBytes];
  for (unsigned i = 0; i < kBlockBytes; ++i) {
    order[i] = static_cast<uint8_t>(i ^ (kBlockBytes - elementBytes));
  }
  const auto pattern = hn::LoadDup128(d, order);
  const auto reversed = [&](const uint8_t* from) HWY_ATTR {
    return hn::ReverseBlocks(d, hn::TableLookupBytes(hn::LoadU(d, from), pattern));
  };
  std::size_t rest = elementBytes * count;
  if (kByLines && stream && reinterpret_cast<uintptr_t>(dst) % elementBytes == 0) {
    const std::size_t head = std::min(-reinterpret_cast<uintptr_t>(dst) % kLineBytes, rest);
    rest -= head;
    mirrorPlain(elementBytes, src + rest, dst, head / elementBytes);
    dst += head;
    for (; rest >= kSteps; rest -= kSteps, dst += kSteps) {
      const uint8_t* from = src + rest - kSteps;
      HWY_UNROLL(4)
      for (std::size_t i = 0; i < kSteps; i += kStep) {
        hn::Stream(reversed(from + kSteps - kStep - i), d, dst + i);
      }
    }
    hwy::FlushStream();
  }
  for (; rest >= kSteps; rest -= kSteps, dst += kSteps) {
    const uint8_t* from = src + rest - kSteps;
    const auto first = reversed(from + 3 * kStep), second = reversed(from + 2 * kStep);
    const auto third = reversed(from + kStep), fourth = reversed(from);
    storePair(first, second, dst);
    storePair(third, fourth, dst + 2 * kStep);
  }
  for (; rest >= kStep; rest -= kStep, dst += kStep) {
    hn::StoreU(reversed(src + rest - kStep), d, dst);
  }
  mirrorPlain(elementBytes, src, dst, rest / elementBytes);
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void transpose(std::size_t elementBytes, Rows<const uint8_t> src, Rows<uint8_t> dst, int columns,
               int rows, bool stream) {
  ALG_DISPATCH(transposeVector)(elementBytes, src, dst, columns, rows, stream);
}

void mirror(std::size_t elementBytes, const uint8_t* src, uint8_t* dst, std::size_t count,
            bool stream) {
  ALG_DISPATCH(mirrorVector)(elementBytes, src, dst, count, stream);
}

}  // namespace alg
#endif
