// Vector twins of transpose and mirror, compiled once per vector target.
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
constexpr int kRunBytes = 1024;      // written to a destination row at a time
constexpr int kPrefetchBytes = 128;  // how far ahead in each source row
// Destinations from this size on don't stay in a cache for their reader anyway. Their lines are
// written past the caches, which spares reading them first.
constexpr int64_t kStreamedBytes = 4 << 20;
constexpr bool kCanStream = ALG_IS_AVX2();

/// Visits begin, begin + step, ...; the last step is moved back to end at `end`, so that steps
/// cover the range whole. It isn't shorter than a step.
template <class Visit>
HWY_INLINE void cover(int begin, int end, int step, Visit visit) {
  for (int i = begin; i < end; i += step) {
    visit(std::min(i, end - step));
  }
}

/// Writes a run of a destination row: whole cache lines past the caches, the rest as usual.
HWY_INLINE void copyRun(const uint8_t* from, uint8_t* to, int bytes, bool stream) {
  const Bytes d;
  if (kCanStream && stream) {
    const int head =
        std::min(static_cast<int>(-reinterpret_cast<uintptr_t>(to) % kLineBytes), bytes);
    std::memcpy(to, from, static_cast<std::size_t>(head));
    const int lines = head + (bytes - head) / kLineBytes * kLineBytes;
    for (int i = head; i < lines; i += kVectorBytes) {
      hn::Stream(hn::LoadU(d, from + i), d, to + i);
    }
    std::memcpy(to + lines, from + lines, static_cast<std::size_t>(bytes - lines));
  } else {
    std::memcpy(to, from, static_cast<std::size_t>(bytes));
  }
}

// Transposes by way of a tile that stays in the cache: one cache line of each of many source rows
// becomes long runs of as many destination rows. So every line of the source is read once, every
// line of the destination written at once, and neither pages nor rows a power of two apart collide.
//
//   source rows  . . [line] . .      tile  a0 b0 c0 ...  --> destination row 0  . . a0 b0 c0 . .
//     a:             a0 a1 a2              a1 b1 c1 ...  --> destination row 1  . . a1 b1 c1 . .
//     b:             b0 b1 b2              a2 b2 c2 ...
//     c:             c0 c1 c2
template <class Element>
struct Turn {
  using Vector = hn::ScalableTag<Element>;
  using Block = hn::Full128<Element>;
  static constexpr int kSize = sizeof(Element);
  static constexpr int kColumns = kBlockBytes / kSize;  // of source columns a block
  static constexpr int kRows = kVectorBytes / kSize;    // of source rows
  static constexpr int kLine = kLineBytes / kSize;
  static constexpr int kRun = kRunBytes / kSize;
  static constexpr int kTilePitch = kRunBytes + kLineBytes;  // not a power of two

  // Loads a block's row r; a vector of 256 bits has row r + kColumns in its upper half, so that no
  // step of the transpose crosses the halves.
  static HWY_INLINE hn::Vec<Vector> load(const uint8_t* src, std::ptrdiff_t pitch, int r) {
    const auto* low = reinterpret_cast<const Element*>(src + pitch * r);
    if constexpr (kRows > kColumns) {
      const auto* high = reinterpret_cast<const Element*>(src + pitch * (r + kColumns));
      return hn::Combine(Vector(), hn::LoadU(Block(), high), hn::LoadU(Block(), low));
    } else {
      return hn::LoadU(Block(), low);
    }
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

  /// Fills a tile with the elements of the columns from k and the rows from x on.
  static HWY_INLINE void fillTile(Rows<const uint8_t> src, int k, int columns, int x, int rows,
                                  uint8_t* tile) {
    cover(0, rows, kRows, [&](int r) HWY_ATTR {
      const uint8_t* from = src.row(x + r) + std::ptrdiff_t{kSize} * k;
      for (int i = 0; i < kRows; ++i) {
        __builtin_prefetch(from + src.pitch * i + kPrefetchBytes);
      }
      cover(0, columns, kColumns, [&](int c) HWY_ATTR {
        transposeBlock(from + kSize * c, src.pitch, tile + kTilePitch * c + kSize * r, kTilePitch);
      });
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

  // Rows that many bytes apart fall on the same places of a first-level cache.
  static bool collides(std::ptrdiff_t pitch) { return pitch % 1024 == 0; }

  static void transpose(Rows<const uint8_t> src, Rows<uint8_t> dst, int columns, int rows) {
    if (columns < kColumns || rows < kRows) {
      return transposePlain(kSize, src, dst, columns, rows);
    }
    if (ALG_IS_NEON() && !collides(src.pitch) && !collides(dst.pitch)) {
      return transposeStraight(src, dst, columns, rows);
    }
    const bool stream = int64_t{columns} * rows * kSize >= kStreamedBytes;
    // Strips of about equal height, so that moving the last one back repeats little.
    const int strips = (rows - 1) / kRun + 1;
    const int even = (rows - 1) / strips + 1;
    const int stripRows = std::min((even + kRows - 1) / kRows * kRows, rows);
    const int tileColumns = std::min(columns, kLine);
    alignas(kLineBytes) uint8_t tile[std::size_t{kLine} * kTilePitch];
    cover(0, rows, stripRows, [&](int x) HWY_ATTR {
      cover(0, columns, tileColumns, [&](int k) HWY_ATTR {
        if (kCanStream && stream) {
          // The lines at both ends of a run are shared with its neighbours and read first.
          for (int c = 0; c < tileColumns; ++c) {
            const uint8_t* run = dst.row(k + c) + std::ptrdiff_t{kSize} * x;
            __builtin_prefetch(run, 1);
            __builtin_prefetch(run + kSize * stripRows - 1, 1);
          }
        }
        fillTile(src, k, tileColumns, x, stripRows, tile);
        for (int c = 0; c < tileColumns; ++c) {
          copyRun(tile + kTilePitch * c, dst.row(k + c) + std::ptrdiff_t{kSize} * x,
                  kSize * stripRows, stream);
        }
      });
    });
    if (kCanStream && stream) {
      hwy::FlushStream();
    }
  }

  // Vectors from the end: reverses the elements of each block, then the blocks. Four at a time, so
  // that in-order cores need not wait for each.
  static void mirror(const uint8_t* src, uint8_t* dst, std::size_t count) {
    const Bytes d;
    constexpr std::size_t kStep = kVectorBytes, kSteps = 4 * kStep;
    HWY_ALIGN uint8_t order[kBlockBytes];
    for (unsigned i = 0; i < kBlockBytes; ++i) {
      order[i] = static_cast<uint8_t>(i ^ (kBlockBytes - kSize));
    }
    const auto pattern = hn::LoadDup128(d, order);
    const auto reversed = [&](const uint8_t* from) HWY_ATTR {
      const auto v = hn::TableLookupBytes(hn::LoadU(d, from), pattern);
      if constexpr (kVectorBytes > kBlockBytes) {
        return hn::ConcatLowerUpper(d, v, v);
      } else {
        return v;
      }
    };
    std::size_t rest = kSize * count;
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
    mirrorPlain(kSize, src, dst, rest / kSize);
  }
};

void transposeVector(std::size_t elementBytes, Rows<const uint8_t> src, Rows<uint8_t> dst,
                     int columns, int rows) {
  switch (elementBytes) {
    case 1:
      return Turn<uint8_t>::transpose(src, dst, columns, rows);
    case 2:
      return Turn<uint16_t>::transpose(src, dst, columns, rows);
    default:
      return Turn<uint32_t>::transpose(src, dst, columns, rows);
  }
}

void mirrorVector(std::size_t elementBytes, const uint8_t* src, uint8_t* dst, std::size_t count) {
  switch (elementBytes) {
    case 1:
      return Turn<uint8_t>::mirror(src, dst, count);
    case 2:
      return Turn<uint16_t>::mirror(src, dst, count);
    default:
      return Turn<uint32_t>::mirror(src, dst, count);
  }
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void transpose(std::size_t elementBytes, Rows<const uint8_t> src, Rows<uint8_t> dst, int columns,
               int rows) {
  ALG_DISPATCH(transposeVector)(elementBytes, src, dst, columns, rows);
}

void mirror(std::size_t elementBytes, const uint8_t* src, uint8_t* dst, std::size_t count) {
  ALG_DISPATCH(mirrorVector)(elementBytes, src, dst, count);
}

}  // namespace alg
#endif
