// Rows a block at a time; included by kernel files, once per vector target.
#if defined(ALG_ROW_BLOCKS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ALG_ROW_BLOCKS_INL_H_
#undef ALG_ROW_BLOCKS_INL_H_
#else
#define ALG_ROW_BLOCKS_INL_H_
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "hwy/highway.h"
#include "kernels/vector_frame.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {

#if ALG_HAS_VECTORS()

/// A row that a kernel reads, of elements of kBytes bytes.
template <std::size_t kBytes>
struct Reads {
  const uint8_t* row;

  const uint8_t* at(std::size_t x) const { return row + kBytes * x; }

  /// A block of which the row has only the first elements, from x on. The others are 0.
  template <std::size_t kBlock>
  struct Tail {
    Tail(const Reads& from, std::size_t x, std::size_t count) {
      std::memcpy(bytes, from.at(x), kBytes * count);
    }
    void finish() const {}

    uint8_t bytes[kBytes * kBlock] = {};
  };
};

/// A row that a kernel writes.
template <std::size_t kBytes>
struct Writes {
  uint8_t* row;

  uint8_t* at(std::size_t x) const { return row + kBytes * x; }

  template <std::size_t kBlock>
  struct Tail {
    Tail(const Writes& into, std::size_t x, std::size_t count)
        : to(into.at(x)), size(kBytes * count) {}
    void finish() const { std::memcpy(to, bytes, size); }

    uint8_t* to;
    std::size_t size;
    uint8_t bytes[kBytes * kBlock];
  };
};

#if ALG_IS_NEON()
/// v as it is, of which compilers know nothing: they rewrite some well-chosen instructions.
template <class Raw>
HWY_INLINE Raw opaque(Raw v) {
  asm("" : "+w"(v));
  return v;
}
#endif

/// Stores two vectors of bytes one behind the other. Cortex-A7x take half the cycles for one
/// instruction of this kind that they take for a pair of ordinary stores.
template <class V>
HWY_INLINE void storePair(V first, V second, uint8_t* to) {
#if ALG_IS_NEON()
  const uint8x16x2_t both{first.raw, second.raw};
  vst1q_u8_x2(to, both);
#else
  const hwy::HWY_NAMESPACE::ScalableTag<uint8_t> d;
  hwy::HWY_NAMESPACE::StoreU(first, d, to);
  hwy::HWY_NAMESPACE::StoreU(second, d, to + hwy::HWY_NAMESPACE::MaxLanes(d));
#endif
}

/// Fetches the kBytes that begin a page after `at`: the hardware's own prefetchers stop at the end
/// of each page, which costs large images a third of their time. Beyond an image's end it is
/// harmless. With kWrites they are fetched to be written.
template <std::size_t kBytes, bool kWrites = false>
HWY_INLINE void fetchPageAhead(const uint8_t* at) {
  constexpr std::size_t kPage = 4096, kLine = 64;
  const auto address = reinterpret_cast<std::uintptr_t>(at) + kPage;  // perhaps of nothing
  for (std::size_t line = 0; line < kBytes; line += kLine) {
    __builtin_prefetch(reinterpret_cast<const void*>(address + line), kWrites ? 1 : 0);
  }
}

/// Calls block for the elements from x on, which are fewer than a block.
template <std::size_t kBlock, class Block, class... Rows>
HWY_INLINE void finishRows(std::size_t x, std::size_t count, Block block, Rows... rows) {
  if (x < count) {
    const auto finish = [&](auto... tails) HWY_ATTR {
      block(x, tails.bytes...);
      (tails.finish(), ...);
    };
    finish(typename Rows::template Tail<kBlock>(rows, x, count - x)...);
  }
}

/// Calls block(x, pointers...) for every kBlock of `count` elements, the pointers being where the
/// block begins in each of `rows` (Reads or Writes). The last elements, when they are fewer, go
/// through copies, so that nothing behind a row is read or written; x is for rows with padding.
/// What is written may overlap what is read as long as it does not feed back: all of a block is
/// read before any of it is written.
template <std::size_t kBlock, class Block, class... Rows>
HWY_INLINE void forEachBlock(std::size_t count, Block block, Rows... rows) {
  const std::size_t whole = count - count % kBlock;
  for (std::size_t x = 0; x != whole; x += kBlock) {
    block(x, rows.at(x)...);
  }
  finishRows<kBlock>(whole, count, block, rows...);
}

#endif

}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // ALG_ROW_BLOCKS_INL_H_
