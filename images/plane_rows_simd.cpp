// Vector twins of the plane row kernels, compiled once per vector target.
#include "images/plane_rows.h"

#include "kernels/vector_frame.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "images/plane_rows_simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"
#include "kernels/row_blocks-inl.h"

HWY_BEFORE_NAMESPACE();
namespace alg::HWY_NAMESPACE {
namespace {

#if !ALG_HAS_VECTORS()

constexpr auto& interleaveRowsVector = interleaveRowsPlain;
constexpr auto& exchangePairsVector = exchangePairsPlain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::Full128<uint8_t>;
using Pairs = hn::Repartition<uint16_t, Bytes>;
constexpr std::size_t kBlock = 16;

void interleaveRowsVector(const uint8_t* first, const uint8_t* second, uint8_t* pairs,
                          std::size_t count) {
  const auto interleave = [](std::size_t /*x*/, const uint8_t* a, const uint8_t* b, uint8_t* to)
                              HWY_ATTR {
                                const Bytes d;
                                const auto va = hn::LoadU(d, a), vb = hn::LoadU(d, b);
                                hn::StoreU(hn::InterleaveLower(d, va, vb), d, to);
                                hn::StoreU(hn::InterleaveUpper(d, va, vb), d, to + kBlock);
                              };
  forEachBlock<kBlock>(count, interleave, Reads<1>{first}, Reads<1>{second}, Writes<2>{pairs});
}

void exchangePairsVector(const uint8_t* from, uint8_t* to, std::size_t count) {
  const auto exchange = [](std::size_t /*x*/, const uint8_t* pairs, uint8_t* out) HWY_ATTR {
    const Bytes d;
    const Pairs p;
    const auto v = hn::BitCast(p, hn::LoadU(d, pairs));
    hn::StoreU(hn::BitCast(d, hn::Or(hn::ShiftLeft<8>(v), hn::ShiftRight<8>(v))), d, out);
  };
  forEachBlock<kBlock / 2>(count, exchange, Reads<2>{from}, Writes<2>{to});
}

#endif  // vectors or not

}  // namespace
}  // namespace alg::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace alg {

void interleaveRows(const uint8_t* first, const uint8_t* second, uint8_t* pairs,
                    std::size_t count) {
  ALG_DISPATCH(interleaveRowsVector)(first, second, pairs, count);
}

void exchangePairs(const uint8_t* from, uint8_t* to, std::size_t count) {
  ALG_DISPATCH(exchangePairsVector)(from, to, count);
}

}  // namespace alg
#endif
