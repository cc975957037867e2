#include "images/geometry.h"

#include <algorithm>
#include <cstring>

#include "base/block.h"
#include "base/streamed.h"
#include "camerautil/turn_rows.h"
#include "images/plane_rows.h"
#include "platform/large_block.h"
#include "pretty/resize.h"

namespace alg {
namespace {

/// Rows that are staged at a time: enough for transposing them by whole cache lines.
constexpr int kStagedRows = 64;

/// Elements of `bytes` bytes, `width` in each of `height` rows of the source.
struct Grid {
  std::size_t bytes;
  int width, height;
};

/// Whether a grid that is turned at once goes past the caches.
bool streams(const Grid& grid, Turn turn, int count, Rows<uint8_t> dst) {
  const bool onItsSide = turn != Turn::kHalf;
  const auto rowBytes =
      static_cast<std::ptrdiff_t>(grid.bytes) * (onItsSide ? grid.height : grid.width);
  const std::ptrdiff_t size = dst.pitch * ((onItsSide ? grid.width : grid.height) - 1) + rowBytes;
  return count == grid.height && isStreamed(dst.first, static_cast<std::size_t>(size));
}

/// Where some of a grid's rows go.
void place(const Grid& grid, Turn turn, int first, int count, Rows<const uint8_t> src,
           Rows<uint8_t> dst) {
  const auto bytes = static_cast<std::ptrdiff_t>(grid.bytes);
  const auto width = static_cast<std::size_t>(grid.width);
  const Rows<const uint8_t> upwards{src.row(count - 1), -src.pitch};
  const bool stream = turn != Turn::kNone && streams(grid, turn, count, dst);
  switch (turn) {
    case Turn::kNone:
      if (src.pitch == dst.pitch && dst.pitch == bytes * grid.width) {
        std::memcpy(dst.row(first), src.first,
                    grid.bytes * width * static_cast<std::size_t>(count));
        return;
      }
      for (int y = 0; y < count; ++y) {
        std::memcpy(dst.row(first + y), src.row(y), grid.bytes * width);
      }
      return;
    case Turn::kQuarter:
      dst.first += bytes * (grid.height - first - count);
      return transpose(grid.bytes, upwards, dst, grid.width, count, stream);
    case Turn::kHalf:
      for (int y = 0; y < count; ++y) {
        mirror(grid.bytes, src.row(y), dst.row(grid.height - 1 - first - y), width, stream);
      }
      return;
    case Turn::kThreeQuarters:
      dst = {dst.row(grid.width - 1) + bytes * first, -dst.pitch};
      return transpose(grid.bytes, src, dst, grid.width, count, stream);
  }
}

/// Work memory for staging.
Block stagingFor(std::size_t rowBytes) { return allocateBlock(rowBytes * kStagedRows); }

/// The same for all rows, which stage(y, row) writes one by one, to the destination itself or to
/// the block.
template <class Stage>
void placeStaged(const Grid& grid, Turn turn, Rows<uint8_t> dst, const Block& block,
                 const Stage& stage) {
  if (turn == Turn::kNone) {
    for (int y = 0; y < grid.height; ++y) {
      stage(y, dst.row(y));
    }
    return;
  }
  const auto pitch = static_cast<std::ptrdiff_t>(grid.bytes) * grid.width;
  const Rows<uint8_t> staged{block.get(), pitch};
  for (int first = 0; first < grid.height; first += kStagedRows) {
    const int count = std::min(kStagedRows, grid.height - first);
    for (int y = 0; y < count; ++y) {
      stage(first + y, staged.row(y));
    }
    place(grid, turn, first, count, {staged.first, staged.pitch}, dst);
  }
}

void placePlane(const SamplePlane& plane, const Grid& grid, Turn turn, Rows<uint8_t> dst,
                const Block& block) {
  if (plane.pixelStride == 1) {
    return place(grid, turn, 0, grid.height, {plane.samples, plane.rowStride}, dst);
  }
  placeStaged(grid, turn, dst, block, [&](int y, uint8_t* row) {
    gatherRow(plane.samples + y * plane.rowStride, plane.pixelStride, row, 1,
              static_cast<std::size_t>(grid.width));
  });
}

/// Chroma pairs, the first plane's sample before the second's.
void placePairs(const SamplePlane& first, const SamplePlane& second, const Grid& grid, Turn turn,
                Rows<uint8_t> dst, const Block& block) {
  const bool sameRows =
      first.rowStride == second.rowStride && first.pixelStride == 2 && second.pixelStride == 2;
  if (sameRows && first.samples + 1 == second.samples) {
    return place(grid, turn, 0, grid.height, {first.samples, first.rowStride}, dst);
  }
  const auto width = static_cast<std::size_t>(grid.width);
  placeStaged(grid, turn, dst, block, [&](int y, uint8_t* row) {
    const uint8_t* const a = first.samples + y * first.rowStride;
    const uint8_t* const b = second.samples + y * second.rowStride;
    if (sameRows && second.samples + 1 == first.samples) {
      exchangePairs(b, row, width);
    } else if (first.pixelStride == 1 && second.pixelStride == 1) {
      interleaveRows(a, b, row, width);
    } else {
      gatherRow(a, first.pixelStride, row, 2, width);
      gatherRow(b, second.pixelStride, row + 1, 2, width);
    }
  });
}

}  // namespace

bool turnImage(const Image& src, Turn turn, const Image& dst) {
  const Grid grid{4, src.width, src.height};
  const Rows<uint8_t> to{dst.pixels, dst.stride};
  if (src.redFirst == dst.redFirst) {
    place(grid, turn, 0, grid.height, {src.pixels, src.stride}, to);
    return true;
  }
  const Block block = stagingFor(src.rowBytes());
  if (!block) {
    return false;
  }
  placeStaged(grid, turn, to, block, [&](int y, uint8_t* row) {
    colourRow(src.row(y), src.row(y), row, static_cast<std::size_t>(src.width), src.orderTo(dst));
  });
  return true;
}

bool packFrame(const CameraPlanes& planes, Turn turn, const FrameImage& dst) {
  const bool onItsSide = turn == Turn::kQuarter || turn == Turn::kThreeQuarters;
  const int width = onItsSide ? dst.height : dst.width;
  const int height = onItsSide ? dst.width : dst.height;
  const SamplePlane& first = dst.vFirst ? planes.v : planes.u;
  const SamplePlane& second = dst.vFirst ? planes.u : planes.v;
  const Block block = stagingFor(static_cast<std::size_t>(width));
  if (!block) {
    return false;
  }
  placePlane(planes.y, {1, width, height}, turn, {dst.luma, dst.lumaStride}, block);
  placePairs(first, second, {2, width / 2, height / 2}, turn, {dst.chroma, dst.chromaStride},
             block);
  return true;
}

CameraPlanes planesOf(const FrameImage& frame) {
  const uint8_t* const u = frame.chroma + (frame.vFirst ? 1 : 0);
  const uint8_t* const v = frame.chroma + (frame.vFirst ? 0 : 1);
  return {
      {frame.luma, frame.lumaStride, 1}, {u, frame.chromaStride, 2}, {v, frame.chromaStride, 2}};
}

bool resizeImage(const Image& src, const Image& dst) {
  constexpr std::ptrdiff_t kWord = sizeof(uint32_t);
  const bool areWords =
      reinterpret_cast<uintptr_t>(src.pixels) % kWord == 0 && src.stride % kWord == 0;
  const Block block = allocateBlock(dst.rowBytes());
  const Block copy =
      areWords ? nullptr
               : allocateLargeBlock(src.rowBytes() * static_cast<std::size_t>(src.height));
  if (!block || (!areWords && !copy)) {
    return false;
  }
  Image from = src;
  if (!areWords) {
    from.pixels = copy.get();
    from.stride = static_cast<std::ptrdiff_t>(src.rowBytes());
    place({4, src.width, src.height}, Turn::kNone, 0, src.height, {src.pixels, src.stride},
          {from.pixels, from.stride});
  }
  auto* const row = reinterpret_cast<uint32_t*>(block.get());
  const auto width = static_cast<std::size_t>(dst.width);
  Resizer resizer({reinterpret_cast<const uint32_t*>(from.pixels), from.width, from.height,
                   from.stride / kWord},
                  dst.width, dst.height, true);
  constexpr uint32_t kOpaque = 0xFF000000;
  for (int y = 0; y < dst.height; ++y) {
    resizer.nextRow(row);
    std::transform(row, row + width, row, [](uint32_t word) { return word | kOpaque; });
    colourRow(block.get(), block.get(), dst.row(y), width, src.orderTo(dst));
  }
  return true;
}

void pasteArea(const Image& src, const Image& dst, int left, int top, int width, int height) {
  for (int y = top; y < top + height; ++y) {
    const uint8_t* const from = src.row(y) + std::ptrdiff_t{4} * left;
    colourRow(from, from, dst.row(y) + std::ptrdiff_t{4} * left, static_cast<std::size_t>(width),
              src.orderTo(dst));
  }
}

}  // namespace alg
